// Selection and bootstrap of Cox models: against step() of R, and against fits of the rows drawn.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/all.h"
#include "analysis/cox/answer.h"
#include "engine/cox/fit.h"
#include "frame/reader.h"
#include "numerics/threads.h"
#include "tests/support/csv.h"

namespace survmeth::analysis {
namespace {

const std::string kReference = SURVMETH_REFERENCE;

std::shared_ptr<const CoxAnswer> fitted(const std::string& data,
                                        const std::map<std::string, Setting>& options) {
  const Declaration cox = coxDeclaration();
  const auto request = cox.request();
  for (const auto& [name, setting] : options) cox.find(name)->set(request.get(), setting);
  const frame::Frame frame = frame::readFrame(kReference + "/cox/data/" + data + ".csv",
                                              [&](const std::vector<std::string>& header) {
                                                return wantedColumns(cox, request.get(), header);
                                              });
  numerics::Progress progress;
  return std::static_pointer_cast<const CoxAnswer>(
      analyse(cox, frame, request.get(), progress).result);
}

// A line of step.txt and terms.txt.
struct Line {
  std::string data, direction, criterion, change, formula, weights;
  double value = 0;
};

std::vector<Line> lines(const std::string& name) {
  std::ifstream file(kReference + "/procedures/" + name);
  std::vector<Line> made;
  std::string text, step, value;
  std::getline(file, text);
  while (std::getline(file, text)) {
    std::stringstream cells(text);
    Line& line = made.emplace_back();
    for (std::string* cell : {&line.data, &line.direction, &line.criterion, &step, &line.change,
                              &value, &line.formula, &line.weights}) {
      std::getline(cells, *cell, '\t');
    }
    line.value = std::stod(value);
  }
  return made;
}

// Of all runs of a file; how many steps there are.
std::size_t compareSteps(const std::string& name) {
  const std::vector<Line> all = lines(name);
  std::size_t compared = 0;
  for (std::size_t from = 0, to = 0; from < all.size(); from = to) {
    const Line& first = all[from];
    std::map<std::string, Setting> options = {
        {"formula", first.formula}, {"select", first.direction}, {"criterion", first.criterion}};
    if (!first.weights.empty()) options.emplace("weights", first.weights);
    const auto answer = fitted(first.data, options);
    const std::string what =
        first.data + " " + first.formula + " " + first.direction + " " + first.criterion;
    std::vector<Line> steps;
    for (to = from + 1; to < all.size() && !all[to].change.empty(); ++to) steps.push_back(all[to]);
    EXPECT_EQ(answer->steps.size(), steps.size()) << what;
    for (std::size_t i = 0; i < std::min(steps.size(), answer->steps.size()); ++i) {
      const CoxStep& step = answer->steps[i];
      std::string change = (step.added ? "+" : "-") + step.term;
      std::erase(change, ' ');
      EXPECT_EQ(change, steps[i].change) << what;
      // Criteria are twice a log-likelihood of size 1e3, of two fits within 1e-10 of the maximum. A
      // p-value moves by half of what its chi-square does, which is up to 150 and twice as far off.
      const double value = first.criterion == "aic"   ? step.aic
                           : first.criterion == "bic" ? step.bic
                                                      : step.test.pValue;
      EXPECT_NEAR(value, steps[i].value,
                  (first.criterion == "p" ? 5e-8 : 1e-9) * std::fabs(steps[i].value))
          << what;
      ++compared;
    }
  }
  return compared;
}

TEST(CoxSelection, StepsByACriterionAreRs) { EXPECT_GT(compareSteps("step.txt"), 60u); }

// Strata, offsets, weights, factors, splines, interactions, late entry; the last term can go.
TEST(CoxSelection, StepsOfTermsOfEveryKindAreRs) { EXPECT_GT(compareSteps("terms.txt"), 190u); }

std::map<std::string, Setting> lung(const char* limits) {
  return {{"formula", std::string("Surv(time, event) ~ age + male + strata(ecog)")},
          {"bootstrap", 40.0},
          {"seed", 7.0},
          {"bootstrap-limits", std::string(limits)}};
}

TEST(CoxBootstrap, AReplicateIsTheFitOfItsRows) {
  const auto answer = fitted("lung", lung("percentile"));
  const test::Csv file(kReference + "/cox/data/lung.csv");
  const std::vector<double> time = file.numbers("time"), event = file.numbers("event"),
                            age = file.numbers("age"), male = file.numbers("male"),
                            ecog = file.numbers("ecog");
  ASSERT_EQ(answer->bootstrap->replicates.size(), 40u);
  for (std::size_t r = 0; r < 40; r += 13) {
    std::vector<double> exit, x, y;
    std::vector<std::uint32_t> status, stratum;
    for (const std::uint32_t i : procedures::drawnUnits(file.rows(), 7, r)) {
      exit.push_back(time[i]);
      status.push_back(event[i] != 0 ? 1 : 0);
      x.push_back(age[i]);
      y.push_back(male[i]);
      stratum.push_back(static_cast<std::uint32_t>(ecog[i]));
    }
    engine::Rows rows;
    rows.stratum = stratum;
    rows.strata = 4;
    engine::Design design{{x, y}, {"age", "male"}, {0, 1}, {"age", "male"}};
    numerics::Progress progress;
    const engine::cox::Fit fit =
        engine::cox::fit({{}, exit, status, 1}, rows, design, {}, progress);
    EXPECT_EQ(answer->bootstrap->replicates[r], fit.coefficients);
  }
}

TEST(CoxBootstrap, IsTheSameForEveryNumberOfThreads) {
  numerics::setThreads(1);
  const auto one = fitted("lung", lung("bca"));
  numerics::setThreads(3);
  const auto three = fitted("lung", lung("bca"));
  numerics::setThreads(0);
  EXPECT_EQ(one->bootstrap->replicates, three->bootstrap->replicates);
  EXPECT_EQ(one->bootstrap->acceleration, three->bootstrap->acceleration);
}

TEST(CoxBootstrap, ClustersAreDrawnWhole) {
  const auto answer = fitted(
      "cgd", {{"formula", std::string("Surv(start, time, event) ~ gamma + age + cluster(id)")},
              {"bootstrap", 3.0}});
  const test::Csv file(kReference + "/cox/data/cgd.csv");
  const std::vector<double> id = file.numbers("id"), entry = file.numbers("start"),
                            time = file.numbers("time"), event = file.numbers("event"),
                            gamma = file.numbers("gamma"), age = file.numbers("age");
  std::map<double, std::vector<std::size_t>> clusters;
  for (std::size_t i = 0; i < id.size(); ++i) clusters[id[i]].push_back(i);
  std::vector<std::vector<std::size_t>> units;
  for (const auto& [label, rows] : clusters) units.push_back(rows);
  std::vector<double> from, exit, x, y;
  std::vector<std::uint32_t> status;
  for (const std::uint32_t unit : procedures::drawnUnits(units.size(), 1, 0)) {
    for (const std::size_t i : units[unit]) {
      from.push_back(entry[i]);
      exit.push_back(time[i]);
      status.push_back(event[i] != 0 ? 1 : 0);
      x.push_back(gamma[i]);
      y.push_back(age[i]);
    }
  }
  numerics::Progress progress;
  const engine::cox::Fit fit =
      engine::cox::fit({from, exit, status, 1}, {},
                       {{x, y}, {"gamma", "age"}, {0, 1}, {"gamma", "age"}}, {}, progress);
  EXPECT_EQ(answer->bootstrap->replicates[0], fit.coefficients);
}

}  // namespace
}  // namespace survmeth::analysis
