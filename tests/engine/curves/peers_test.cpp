// Tests of data sets that no other test here takes, against the programs that are used for them
// most (tests/reference/curves/make_peers.R).
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "engine/curves/comparison.h"
#include "engine/curves/permutation.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Adjustment;
using engine::curves::Weighting;
using test::Csv;
using test::CurveData;
using Kind = Weighting::Kind;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/curves/";

std::map<std::string, CurveData> allSets() {
  const Csv file(kFolder + "peers_data.csv");
  std::map<std::string, CurveData> sets;
  std::map<std::string, std::vector<double>> groups, strata;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const std::string name = file.text("set", i);
    CurveData& data = sets[name];
    data.exit.push_back(file.number("time", i));
    data.event.push_back(file.number("event", i) != 0.0 ? 1 : 0);
    groups[name].push_back(file.number("group", i));
    strata[name].push_back(file.number("stratum", i));
  }
  for (auto& [name, data] : sets) {
    data.group = test::codesOf(groups[name], data.groupCount);
    data.stratum = test::codesOf(strata[name], data.stratumCount);
  }
  return sets;
}

TEST(Peers, TestsAndPairsAreTheirs) {
  const std::map<std::string, Weighting> weightings = {
      {"logRank", {}},
      {"gehanBreslow", {Kind::kGehanBreslow}},
      {"taroneWare", {Kind::kTaroneWare}},
      {"petoPeto", {Kind::kPetoPeto}},
      {"modifiedPetoPeto", {Kind::kModifiedPetoPeto}},
      {"fh10", {Kind::kFlemingHarrington, 1, 0}},
      {"fhHalf", {Kind::kFlemingHarrington, 0.5, 0}},
      {"fh11", {Kind::kFlemingHarrington, 1, 1}}};
  const std::map<std::string, Adjustment> adjustments = {
      {"pairs-none", Adjustment::kNone},
      {"pairs-holm", Adjustment::kHolm},
      {"pairs-BH", Adjustment::kBenjaminiHochberg},
      {"pairs-bonferroni", Adjustment::kBonferroni}};
  const std::map<std::string, CurveData> sets = allSets();
  const Csv file(kFolder + "peers.csv");
  std::map<std::string, std::size_t> compared;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const std::string item = file.text("item", i);
    const std::string where = file.text("set", i) + " " + file.text("test", i) + " " + item;
    CurveData data = sets.at(file.text("set", i));
    if (item != "survdiff") data.stratum.clear();
    const Weighting& weighting = weightings.at(file.text("test", i));
    const auto index = static_cast<std::size_t>(file.number("index", i));
    double actual = 0.0;
    if (item == "permuted") {
      actual = engine::curves::permute(data.response(), data.rows(), data.groups(),
                                       std::span(&weighting, 1), {.count = 1})
                   .tests[0]
                   .chiSquare;
    } else if (item == "chiSquare" || item == "survdiff") {
      actual = engine::curves::compare(data.response(), data.rows(), data.groups(),
                                       std::span(&weighting, 1))
                   .tests[0]
                   .chiSquare;
    } else {
      actual = engine::curves::comparePairs(data.response(), data.rows(), data.groups(), weighting,
                                            adjustments.at(item))
                   .at(index)
                   .adjusted;
    }
    // Both sides sum up to 400 terms in doubles; a p-value multiplies the error of its statistic by
    // up to 20.
    const double expected = file.number("value", i);
    EXPECT_NEAR(actual, expected, 1e-10 * std::fabs(expected)) << where;
    ++compared[item.substr(0, 5)];
  }
  EXPECT_GE(compared["permu"], 45U);
  EXPECT_GE(compared["chiSq"], 30U);
  EXPECT_GE(compared["pairs"], 60U);
  EXPECT_GE(compared["survd"], 18U);
}

}  // namespace
}  // namespace survmeth
