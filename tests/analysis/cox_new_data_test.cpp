// New data of survmeth cox: what survmeth predict says of them, and the bootstrap of their survival
// against fits of the rows drawn.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/predict.h"
#include "analysis/cox/refit.h"
#include "frame/select.h"
#include "numerics/threads.h"
#include "report/csv.h"
#include "tests/analysis/coxFits.h"

namespace survmeth::analysis {
namespace {

const Declaration& cox() {
  static const Declaration kCox = coxDeclaration();
  return kCox;
}

std::shared_ptr<void> requestOf(const Declaration& declaration, const Options& options) {
  auto request = declaration.request();
  for (const auto& [name, setting] : options) declaration.find(name)->set(request.get(), setting);
  return request;
}

// As perform() of the command line reads new data.
void withFile(const std::string& name, const Declaration& followUp, const void* request,
              const std::function<void(const frame::Frame&)>& use) {
  use(dataOf(followUp, request, name));
}

std::map<std::string, std::string> tablesOf(const report::Report& report) {
  std::map<std::string, std::string> tables;
  for (const report::Table& table : report.tables) tables[table.id] = report::toCsv(table);
  return tables;
}

report::Report withNewDataOf(const std::string& data, const Options& options) {
  const auto request = requestOf(cox(), options);
  const frame::Frame frame = dataOf(cox(), request.get(), SURVMETH_DATA "/" + data);
  numerics::Progress progress;
  return analyse(cox(), frame, request.get(), progress, {}, withFile).report;
}

TEST(CoxNewData, AreToldWhatPredictTellsOfTheSavedFit) {
  const std::vector<double> at = {90, 180};
  for (const auto& [name, model] :
       {std::pair<std::string, Options>(
            "lung", {{"formula", std::string("Surv(time, status) ~ age + sex + ph.ecog")}}),
        std::pair<std::string, Options>(
            "veteran", {{"formula", std::string("Surv(time, status) ~ karno * trt + ns(age, 3) + "
                                                "strata(celltype)")},
                        {"ties", std::string("breslow")}})}) {
    const std::string file = reference(name + "_new.csv");
    const Options wishes = {{"at", at},
                            {"quantiles", std::vector<double>{0.25, 0.5}},
                            {"conf", std::string("log")},
                            {"terms", true},
                            {"curves", true}};
    Options all = model;
    all.insert(all.end(), wishes.begin(), wishes.end());
    all.emplace_back("newdata", file);
    all.emplace_back("newdata-reference", std::string("zero"));
    const auto ours = tablesOf(withNewDataOf(name + ".csv", all));

    const Declaration predict = coxPredictDeclaration();
    const auto request = requestOf(predict, wishes);
    predict.find("reference")->set(request.get(), std::string("zero"));
    predict.follow(request.get(), fitted(name + ".csv", model).lasting);
    numerics::Progress progress;
    const auto told = tablesOf(
        analyse(predict, dataOf(predict, request.get(), file), request.get(), progress).report);
    EXPECT_EQ(told.size(), 5u);
    for (const auto& [id, csv] : told) {
      EXPECT_EQ(ours.at(id == "terms" ? "predictedTerms" : id), csv) << name << " " << id;
    }
  }
}

TEST(CoxNewData, WishesWithoutThemAreRefused) {
  for (const auto& [name, setting] :
       std::map<std::string, Setting>{{"at", std::vector<double>{1}},
                                      {"quantiles", std::vector<double>{0.5}},
                                      {"conf", std::string("plain")},
                                      {"newdata-reference", std::string("zero")},
                                      {"terms", true},
                                      {"expected", true},
                                      {"curves", true},
                                      {"newdata-id", std::string("who")}}) {
    const auto request =
        requestOf(cox(), {{"formula", std::string("Surv(time, status) ~ age")}, {name, setting}});
    try {
      cox().check(request.get());
      ADD_FAILURE() << name;
    } catch (const BadOption& bad) {
      EXPECT_EQ(bad.option(), name);
      EXPECT_STREQ(bad.what(), "stands without --newdata; expected both or none");
    }
  }
}

TEST(CoxNewData, AFaceWithoutOtherDataRefusesThem) {
  const auto request = requestOf(cox(), {{"formula", std::string("Surv(time, status) ~ age")},
                                         {"newdata", std::string("new.csv")}});
  const frame::Frame frame = dataOf(cox(), request.get(), SURVMETH_DATA "/lung.csv");
  numerics::Progress progress;
  try {
    analyse(cox(), frame, request.get(), progress);
    FAIL();
  } catch (const BadOption& bad) {
    EXPECT_EQ(bad.option(), "newdata");
    EXPECT_STREQ(bad.what(), "names other data, which cannot be had here; expected none");
  }
}

// A fit, its complete rows, and new data for it.
struct Bootstrapped {
  frame::Frame rows, newData;
  std::shared_ptr<void> request;
  Fitted fitted;
  CoxWishes wishes;

  const CoxRequest& typed() const { return *static_cast<const CoxRequest*>(request.get()); }
  const CoxAnswer& answer() const { return *static_cast<const CoxAnswer*>(fitted.result.get()); }
  procedures::Bootstrap bootstrap() const {
    numerics::Progress progress;
    return bootstrapSurvival(rows, typed(), answer(), newData, wishes, progress);
  }
};

Bootstrapped bootstrapped(const std::string& formula, const std::string& limits = "percentile") {
  Bootstrapped made;
  made.request = requestOf(
      cox(),
      {{"formula", formula}, {"bootstrap", 12.0}, {"seed", 5.0}, {"bootstrap-limits", limits}});
  const frame::Frame all = dataOf(cox(), made.request.get(), SURVMETH_DATA "/veteran.csv");
  made.rows = frame::selectRows(all, coxRows(all, made.typed()));
  numerics::Progress progress;
  made.fitted = analyse(cox(), made.rows, made.request.get(), progress);
  const auto lasting = std::static_pointer_cast<const CoxSaved>(
      cox().lasting->of(made.rows, made.fitted.result.get(), made.request.get(), progress));
  const Declaration predict = coxPredictDeclaration();
  const auto request = predict.request();
  predict.follow(request.get(), lasting);
  made.newData = dataOf(predict, request.get(), reference("veteran_new.csv"));
  made.wishes.at = {30, 90, 400};
  return made;
}

// The survivals that the fit of some rows predicts, as anybody would ask for them.
std::vector<double> predictedBy(const Bootstrapped& of, const std::string& formula,
                                const std::vector<std::uint32_t>& rows) {
  const auto request = requestOf(cox(), {{"formula", formula}});
  const frame::Frame drawn = frame::selectRows(of.rows, rows);
  numerics::Progress progress;
  const Fitted fitted = analyse(cox(), drawn, request.get(), progress);
  CoxPredictRequest asked;
  asked.at = of.wishes.at;
  asked.fit = std::static_pointer_cast<const CoxSaved>(
      cox().lasting->of(drawn, fitted.result.get(), request.get(), progress));
  const CoxPredictions made = predictCox(*asked.fit, of.newData, asked, progress);
  std::vector<double> values;
  for (const auto& times : made.at) {
    for (const CoxSurvival& each : times) values.push_back(each.survival);
  }
  return values;
}

// Values of replicates that exist, and NaN where both have none.
void expectSame(const std::vector<double>& value, const std::vector<double>& expected) {
  ASSERT_EQ(value.size(), expected.size());
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(value[i])) << i;
    } else {
      EXPECT_EQ(value[i], expected[i]) << i;
    }
  }
}

TEST(CoxSurvivalBootstrap, AReplicatePredictsAsTheFitOfItsRowsKnotsLearntAnew) {
  const std::string formula = "Surv(time, status) ~ karno + ns(age, 3) + strata(trt)";
  const Bootstrapped of = bootstrapped(formula);
  const procedures::Bootstrap made = of.bootstrap();
  ASSERT_EQ(made.replicates.size(), 12u);
  for (std::size_t r = 0; r < 12; ++r) {
    expectSame(made.replicates[r],
               predictedBy(of, formula, procedures::drawnUnits(of.rows.rows, 5, r)));
  }
}

TEST(CoxSurvivalBootstrap, ClustersAreDrawnWhole) {
  const std::string model = "Surv(time, status) ~ karno + age";
  const Bootstrapped of = bootstrapped(model + " + cluster(diagtime)");
  const procedures::Bootstrap made = of.bootstrap();
  const auto& units = of.answer().units;
  EXPECT_LT(units.size(), of.rows.rows);
  ASSERT_EQ(made.replicates.size(), 12u);
  std::vector<std::uint32_t> rows;
  for (const std::uint32_t unit : procedures::drawnUnits(units.size(), 5, 3)) {
    rows.insert(rows.end(), units[unit].begin(), units[unit].end());
  }
  expectSame(made.replicates[3], predictedBy(of, model, rows));
}

TEST(CoxSurvivalBootstrap, IsTheSameForEveryNumberOfThreads) {
  const Bootstrapped of = bootstrapped("Surv(time, status) ~ karno + ns(age, 3)", "bca");
  numerics::setThreads(1);
  const procedures::Bootstrap one = of.bootstrap();
  numerics::setThreads(3);
  const procedures::Bootstrap three = of.bootstrap();
  numerics::setThreads(0);
  ASSERT_EQ(one.replicates.size(), three.replicates.size());
  for (std::size_t r = 0; r < one.replicates.size(); ++r) {
    expectSame(one.replicates[r], three.replicates[r]);
  }
  expectSame(one.acceleration, three.acceleration);
}

}  // namespace
}  // namespace survmeth::analysis
