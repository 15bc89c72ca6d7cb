// Tests of equal survival, events by group and stratum, pairs of groups, hazard ratios.
#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "report/build.h"
#include "report/keys.h"
#include "text/lists.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

// A row for each test, with the reason below where none exists.
report::Table testTable(const LifeAnswer& answer) {
  const LifeComparison& comparison = answer.comparison;
  auto rows = report::rowsOf("tests", "Equal survival?", comparison.tests);
  rows.column(key::kTest, "test", Kind::kLabel, &LifeTest::name).test(&LifeTest::test);
  if (answer.request.wantsTrend()) {
    rows.column(key::kTrend, "trend z", Kind::kStatistic, &LifeTest::trend)
        .column(key::kTrendPValue, "p-value", Kind::kPValue, &LifeTest::trendPValue);
  }
  report::Table table = rows.table();
  if (!comparison.exists()) {
    table.remarks.push_back("No comparison test exists: " + comparison.reason + ".");
  }
  return table;
}

// Observed and expected events of each group.
report::Table eventTable(const LifeAnswer& answer) {
  const LifeComparison& comparison = answer.comparison;
  return report::tableOf(
      "events", "Events by group",
      {lifeGroups(answer),
       report::numberColumn(key::kObserved, "observed", Kind::kCount, comparison.observed),
       report::numberColumn(key::kExpected, "expected", Kind::kEstimate, comparison.expected),
       report::columnOf(key::kIncluded, "in the tests", Kind::kLabel, comparison.included,
                        [](bool included) { return included ? "yes" : "no"; })});
}

// The same by stratum.
report::Table strataTable(const LifeAnswer& answer) {
  using Row = curves::StratumEvents;
  const report::Column groups = lifeGroups(answer);
  return report::rowsOf("strata", "Events by stratum and group", answer.comparison.strata)
      .column(key::kStratum, text::joined(answer.request.strata), Kind::kLabel,
              [&](const Row& row) { return answer.rows.strata.labels[row.stratum]; })
      .column(groups.key, groups.heading, Kind::kLabel,
              [&](const Row& row) { return answer.labels()[row.group]; })
      .column(key::kN, "n", Kind::kCount, &Row::n)
      .column(key::kObserved, "observed", Kind::kCount, &Row::observed)
      .column(key::kExpected, "expected", Kind::kEstimate, &Row::expected)
      .table();
}

const char* adjustmentName(Pairs pairs) {
  switch (pairs) {
    case Pairs::kHolm:
      return "Holm";
    case Pairs::kBonferroni:
      return "Bonferroni";
    case Pairs::kBenjaminiHochberg:
      return "Benjamini-Hochberg";
    case Pairs::kNone:
    case Pairs::kUnadjusted:
      break;
  }
  return "";
}

report::Table pairTable(const LifeAnswer& answer) {
  using Pair = curves::PairTest;
  const std::string group = text::joined(answer.request.group);
  const auto label = [&answer](std::uint32_t Pair::*member) {
    return [&answer, member](const Pair& pair) { return answer.labels()[pair.*member]; };
  };
  auto rows = report::rowsOf("pairs", answer.comparison.tests.front().name + " test of each pair",
                             answer.comparison.pairs);
  rows.column(key::kFirst, group, Kind::kLabel, label(&Pair::first))
      .column(key::kSecond, "and", Kind::kLabel, label(&Pair::second))
      .column(key::kChiSquare, "chi-square", Kind::kStatistic, &Pair::chiSquare)
      .column(key::kPValue, "p-value", Kind::kPValue, &Pair::pValue);
  if (answer.request.pairs != Pairs::kUnadjusted) {
    rows.column(key::kAdjustedPValue, adjustmentName(answer.request.pairs), Kind::kPValue,
                &Pair::adjusted);
  }
  return rows.table();
}

struct Ratio : curves::Contrast {
  const char* name;
};

report::Table ratioTable(const LifeAnswer& answer) {
  const curves::HazardRatios& found = *answer.comparison.ratios;
  const std::array<Ratio, 3> ratios = {{{found.peto, "Peto"},
                                        {found.mantelHaenszel, "Mantel-Haenszel"},
                                        {answer.comparison.coxRatio, "Cox"}}};
  const std::string level = report::confidence(answer.request.alpha);
  report::Table table =
      report::rowsOf("hazardRatios",
                     "Hazard of " + answer.labels()[1] + " over that of " + answer.labels()[0],
                     ratios)
          .column(key::kStatistic, "estimate", Kind::kLabel, &Ratio::name)
          .column(key::kHazardRatio, "hazard ratio", Kind::kEstimate, &Ratio::estimate)
          .column(key::kStandardError, "std error", Kind::kEstimate, &Ratio::standardError)
          .column(key::kLower, level + " lower", Kind::kEstimate, &Ratio::lower)
          .column(key::kUpper, level + " upper", Kind::kEstimate, &Ratio::upper)
          .column(key::kZ, "z", Kind::kStatistic, &Ratio::z)
          .column(key::kPValue, "p-value", Kind::kPValue, &Ratio::pValue)
          .table();
  table.remarks.push_back("The standard error of a ratio is that of its logarithm.");
  return table;
}

std::string weightsInWords(const LifeRequest& request) {
  using Weight = curves::Weighting::Kind;
  std::string words;
  for (const curves::Weighting& each : request.weightings()) {
    words += words.empty() ? "" : ", ";
    switch (each.kind) {
      case Weight::kLogRank:
        words += "weight 1 (log-rank)";
        break;
      case Weight::kGehanBreslow:
        words += "number at risk (Gehan-Breslow)";
        break;
      case Weight::kTaroneWare:
        words += words.find("number at risk") == std::string::npos
                     ? "square root of the number at risk (Tarone-Ware)"
                     : "its square root (Tarone-Ware)";
        break;
      case Weight::kPetoPeto:
        words += "Peto's survival T (Peto-Peto)";
        break;
      case Weight::kModifiedPetoPeto:
        words += "T n / (n + 1) (modified Peto-Peto)";
        break;
      case Weight::kFlemingHarrington:
        words += "S^p (1 - S)^q just before the time (" + testName(each) + ")";
        break;
    }
  }
  return words;
}

void addMethods(const LifeAnswer& answer, report::Report& report) {
  const LifeRequest& request = answer.request;
  const auto add = [&report](std::string text, std::string reference) {
    report.methods.push_back({std::move(text), std::move(reference)});
  };
  add("tests: weighted log-rank family with hypergeometric variance" +
          std::string(answer.rows.stratified() ? ", summed over strata" : "") + "; " +
          weightsInWords(request),
      request.tests.empty() ? "Tarone & Ware, Biometrika 64 (1977) 156-160"
                            : "Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 7.3 to 7.5");
  if (request.wantsTrend()) {
    add("trend: score test against " + std::string(request.scores.empty()
                                                       ? "the order of the groups (1, 2, ...)"
                                                       : "the groups' scores"),
        "Klein & Moeschberger, Survival Analysis, 2nd ed. (2003) 7.4");
  }
  if (request.pairs != Pairs::kNone) {
    add(std::string("pairs: the rows of two groups alone; p-values ") +
            (request.pairs == Pairs::kUnadjusted
                 ? "not adjusted"
                 : std::string("adjusted by ") + adjustmentName(request.pairs)),
        "");
  }
  if (request.hazardRatios) {
    add("hazard ratios: exp((O - E) / V) of the log-rank test (Peto), which is drawn towards 1 "
        "where the ratio is far from it; Mantel-Haenszel's ratio of sums; proportional hazards "
        "with "
        "Efron's ties (Cox)",
        "Yusuf et al., Prog Cardiovasc Dis 27 (1985) 335-371; Bernstein, Anderson & Pike, "
        "Biometrics 37 (1981) 513-519; Cox, JRSS B 34 (1972) 187-220");
  }
}

}  // namespace

void addLifeComparison(const LifeAnswer& answer, report::Report& report) {
  if (!answer.rows.several()) return;
  const LifeComparison& comparison = answer.comparison;
  report.tables.push_back(testTable(answer));
  report.tables.push_back(eventTable(answer));
  if (!comparison.strata.empty()) report.tables.push_back(strataTable(answer));
  if (!comparison.pairs.empty()) report.tables.push_back(pairTable(answer));
  if (comparison.ratios) report.tables.push_back(ratioTable(answer));
  addMethods(answer, report);
  addLifeCombination(answer, report);
  addLifePermutation(answer, report);
}

}  // namespace survmeth::analysis
