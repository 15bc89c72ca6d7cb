#include "analysis/life/combination.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "analysis/life/describe.h"
#include "engine/cox/fit.h"
#include "engine/curves/pooled.h"
#include "numerics/elementary.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/lists.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

// A row of the tables: a pair of groups with one of the weights, or with the largest of all.
struct Row {
  const curves::CombinationPair* pair;
  std::size_t weight;
  double z, pValue;
};

auto label(const LifeAnswer& answer, std::uint32_t curves::CombinationPair::*member) {
  return [&answer, member](const Row& row) { return answer.labels()[row.pair->*member]; };
}

report::Table tableOf(const LifeAnswer& answer, const char* id, const char* caption,
                      const std::vector<Row>& items, const char* test, bool adjusted) {
  auto rows = report::rowsOf(id, caption, items);
  rows.column(key::kFirst, text::joined(answer.request.group), Kind::kLabel,
              label(answer, &curves::CombinationPair::first))
      .column(key::kSecond, "and", Kind::kLabel, label(answer, &curves::CombinationPair::second))
      .column(key::kTest, test, Kind::kLabel,
              [](const Row& row) { return testName(row.pair->test.weightings[row.weight]); })
      .column(key::kZ, "z", Kind::kStatistic, &Row::z)
      .column(key::kPValue, "p-value", Kind::kPValue, &Row::pValue);
  if (adjusted) {
    rows.column(key::kAdjustedPValue, "Holm", Kind::kPValue,
                [](const Row& row) { return row.pair->adjusted; });
  }
  return rows.table();
}

// Weights that each speak for another group.
void noteCrossing(const LifeAnswer& answer, const curves::CombinationPair& pair,
                  report::Report& report) {
  const curves::Combination& test = pair.test;
  const auto clear = [&](std::size_t i) { return test.alone[i] <= answer.request.alpha; };
  for (std::size_t i = 0; i < test.z.size(); ++i) {
    for (std::size_t j = 0; j < test.z.size(); ++j) {
      if (!(test.z[i] < 0 && test.z[j] > 0 && clear(i) && clear(j))) continue;
      const std::string& first = answer.labels()[pair.first];
      const std::string& second = answer.labels()[pair.second];
      report.notes.push_back({"crossing",
                              "the curves of " + text::quote(first) + " and " +
                                  text::quote(second) + " cross: " + testName(test.weightings[i]) +
                                  " finds " + text::quote(second) + " failing less, " +
                                  testName(test.weightings[j]) +
                                  " finds it failing more; no single hazard ratio describes that",
                              {first, second}});
      return;
    }
  }
}

// The combination and the first test on different sides of the level.
void noteDisagreement(const LifeAnswer& answer, report::Report& report) {
  if (answer.combination.size() != 1) return;
  const double alpha = answer.request.alpha;
  const curves::Combination& test = answer.combination.front().test;
  const LifeTest& first = answer.comparison.tests.front();
  if (std::isnan(test.pValue) || (test.pValue <= alpha) == (first.test.pValue <= alpha)) return;
  const bool found = test.pValue <= alpha;
  report.notes.push_back(
      {"testsDisagree",
       "the maximum combination (" + report::pValueInWords(test.pValue) + ") " +
           (found ? "finds" : "does not find") + " a difference, the test " +
           text::quote(first.name) + " (" + report::pValueInWords(first.test.pValue) + ") " +
           (found ? "does not: the difference lies where " +
                        testName(test.weightings[test.largest]) + " weighs most"
                  : "does: looking for several kinds of difference has its price") +
           "; the answer is that of the test that was chosen before the data were seen"});
}

}  // namespace

std::vector<curves::CombinationPair> combineLife(const LifeRows& rows, const LifeRequest& request,
                                                 const engine::risk::TimeCodes& codes) {
  if (request.combination.empty()) return {};
  const curves::Pooled pooled(codes, rows.response(), rows.testRows(), rows.groupCodes());
  return curves::combinePairs(pooled, request.combinationWeightings(),
                              curves::Alternative::kTwoSided, curves::Adjustment::kHolm);
}

curves::Contrast coxRatio(const LifeRows& rows, const LifeRequest& request) {
  const std::vector<double> second(rows.groups.codes.begin(), rows.groups.codes.end());
  engine::Design design;
  design.columns = {second};
  design.names = design.termNames = {"group"};
  design.term = {0};
  engine::cox::Options options;
  options.tieTolerance = request.tolerance();
  numerics::Progress progress;
  const engine::cox::Fit fit =
      engine::cox::fit(rows.response(), rows.testRows(), design, options, progress);
  curves::Contrast found;
  if (fit.coefficients.empty() || std::isnan(fit.coefficients[0])) return found;
  if (fit.column[0] == engine::cox::Column::kInfinite) {
    found.estimate = numerics::exp(fit.coefficients[0]);
    return found;
  }
  return curves::ratio(numerics::exp(fit.coefficients[0]), fit.standardError(0),
                       curves::normalQuantile(1 - request.alpha));
}

void addLifeCombination(const LifeAnswer& answer, report::Report& report) {
  if (answer.combination.empty()) return;
  std::vector<Row> parts;
  std::vector<Row> largest;
  for (const curves::CombinationPair& pair : answer.combination) {
    const curves::Combination& test = pair.test;
    for (std::size_t i = 0; i < test.z.size(); ++i) {
      parts.push_back({&pair, i, test.z[i], test.alone[i]});
    }
    largest.push_back({&pair, test.largest, test.statistic, test.pValue});
  }
  const bool several = answer.combination.size() > 1;
  report.tables.push_back(
      tableOf(answer, "combination", "Maximum combination", largest, "largest", several));
  report.tables.back().remarks.push_back(
      "One test of one question: do the curves differ, early, late or throughout? The p-value is "
      "that of the largest |z|, by the joint law of all.");
  report.tables.push_back(
      tableOf(answer, "combinationTests", "The weights alone", parts, "test", false));
  report.tables.back().remarks.push_back(
      "z above 0: the second group fails more. None of these is the combination's answer.");
  report.methods.push_back(
      {"maximum combination: the largest |z| of weighted log-rank tests, two-sided, by their joint "
       "normal law with hypergeometric covariance" +
           std::string(answer.rows.stratified() ? ", summed over strata" : "") +
           "; weights S^p (1 - S)^q answer whether hazards differ throughout (0, 0), early (1, 0), "
           "late (0, 1), in between (1, 1); which test is to answer belongs before the data",
       "Tarone, Biometrics 37 (1981) 79-85; Lee, Biometrics 52 (1996) 721-725"});
  for (const curves::CombinationPair& pair : answer.combination) {
    noteCrossing(answer, pair, report);
  }
  noteDisagreement(answer, report);
}

}  // namespace survmeth::analysis
