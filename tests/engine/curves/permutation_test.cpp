// Permutation tests against another program's (tests/reference/curves/make_permutation.R), against
// all arrangements by the definitions (make_permutation.py), and what holds for all of them.
#include "engine/curves/permutation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>

#include "numerics/threads.h"
#include "tests/engine/curves/data.h"
#include "tests/support/page.h"

namespace survmeth {
namespace {

using engine::Refusal;
using engine::Role;
using engine::curves::Alternative;
using engine::curves::PermutationComparison;
using engine::curves::Permutations;
using engine::curves::Weighting;
using test::Csv;
using test::CurveData;
using Kind = Weighting::Kind;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/curves/";

const std::map<std::string, Weighting> kWeightings = {{"logRank", {}},
                                                      {"gehanBreslow", {Kind::kGehanBreslow}},
                                                      {"taroneWare", {Kind::kTaroneWare}},
                                                      {"petoPeto", {Kind::kPetoPeto}},
                                                      {"fh10", {Kind::kFlemingHarrington, 1, 0}},
                                                      {"fh01", {Kind::kFlemingHarrington, 0, 1}},
                                                      {"fh11", {Kind::kFlemingHarrington, 1, 1}}};

const Permutations kExact = {.exact = true};

PermutationComparison permuted(const CurveData& data, std::span<const Weighting> weightings,
                               const Permutations& permutations,
                               Alternative alternative = Alternative::kTwoSided) {
  return engine::curves::permute(data.response(), data.rows(), data.groups(), weightings,
                                 permutations, alternative);
}

TEST(PermutationReference, IsThatOfTheOtherProgram) {
  const Csv file(kFolder + "permutation.csv");
  const std::vector<double> value = file.numbers("value");
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const auto text = [&](const char* column) { return file.text(column, i); };
    CurveData data = test::curveData(text("data"), text("group"), "", "", text("stratum"));
    const auto rows = static_cast<std::size_t>(file.number("rows", i));
    if (rows > 0) {
      data.exit.resize(rows);
      data.event.resize(rows);
      data.group.resize(rows);
    }
    const Weighting& weighting = kWeightings.at(text("test"));
    const std::string item = text("item");
    const std::string where = text("data") + " " + text("test") + " " + item;
    if (item.substr(0, 5) == "exact") {
      const std::map<std::string, Alternative> sides = {{"exact-two.sided", Alternative::kTwoSided},
                                                        {"exact-greater", Alternative::kGreater},
                                                        {"exact-less", Alternative::kLess}};
      const auto test = permuted(data, std::span(&weighting, 1), kExact, sides.at(item)).tests[0];
      // Sums of some 100,000 probabilities.
      EXPECT_NEAR(test.pValue, value[i], 1e-10) << where;
      continue;
    }
    const auto test = permuted(data, std::span(&weighting, 1), {.count = 1}).tests[0];
    // A chi-square that nearly vanishes is good to 1e-9 of its standard deviation.
    if (item == "chiSquare") {
      EXPECT_NEAR(test.chiSquare, value[i], 1e-9 * std::max(1.0, value[i])) << where;
    } else if (item == "degreesOfFreedom") {
      EXPECT_EQ(static_cast<double>(test.degreesOfFreedom), value[i]) << where;
    } else {
      // The other program takes the small ones from 1.
      EXPECT_NEAR(test.asymptotic, value[i],
                  1e-9 * std::max(1.0, test.chiSquare) * value[i] + 0x1p-52)
          << where;
    }
  }
}

CurveData sampleOf(const std::string& name) {
  const Csv file(kFolder + "arrangements_data.csv");
  CurveData data;
  data.groupCount = data.stratumCount = 0;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    if (file.text("sample", i) != name) continue;
    const auto code = [&](const char* column) {
      return static_cast<std::uint32_t>(file.number(column, i));
    };
    data.entry.push_back(file.number("entry", i));
    data.exit.push_back(file.number("exit", i));
    data.event.push_back(code("event"));
    data.group.push_back(code("group"));
    data.stratum.push_back(code("stratum"));
    data.groupCount = std::max(data.groupCount, code("group") + std::size_t{1});
    data.stratumCount = std::max(data.stratumCount, code("stratum") + std::size_t{1});
  }
  return data;
}

TEST(PermutationReference, EveryArrangementIsThatOfTheDefinition) {
  const Csv file(kFolder + "arrangements.csv");
  const std::map<std::string, Alternative> sides = {{"twoSided", Alternative::kTwoSided},
                                                    {"greater", Alternative::kGreater},
                                                    {"less", Alternative::kLess}};
  const std::vector<Weighting> four = {kWeightings.at("logRank"), kWeightings.at("fh10"),
                                       kWeightings.at("fh01"), kWeightings.at("fh11")};
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const CurveData data = sampleOf(file.text("sample", i));
    const std::string test = file.text("test", i);
    const Alternative side = sides.at(file.text("side", i));
    const std::string where = file.text("sample", i) + " " + test + " " + file.text("side", i);
    const double extreme = file.number("extreme", i);
    const double arrangements = file.number("arrangements", i);
    PermutationComparison found;
    const bool combined = test == "combination";
    if (combined) {
      found = permuted(data, four, kExact, side);
    } else {
      found = permuted(data, std::span(&kWeightings.at(test), 1), kExact, side);
    }
    const auto& one = combined ? found.combination : found.tests[0];
    EXPECT_EQ(found.arrangements, arrangements) << where;
    EXPECT_EQ(static_cast<double>(one.extreme), extreme) << where;
    EXPECT_DOUBLE_EQ(one.pValue, extreme / arrangements) << where;
    EXPECT_TRUE(std::isnan(one.lower)) << where;
  }
}

TEST(Permutation, RandomOnesAreNearAllOfThem) {
  for (const std::string name : {"pair", "strata", "three", "threeStrata", "late"}) {
    const CurveData data = sampleOf(name);
    const auto exact = permuted(data, engine::curves::usualCombination(), kExact);
    const Permutations random = {.count = 20'000, .seed = 7};
    const auto drawn = permuted(data, engine::curves::usualCombination(), random);
    EXPECT_EQ(drawn.looked, 20'000U);
    for (std::size_t w = 0; w < 4; ++w) {
      const double p = exact.tests[w].pValue;
      // Four standard deviations of the share, and the 1 that is added.
      EXPECT_NEAR(drawn.tests[w].pValue, p, 4 * std::sqrt(p * (1 - p) / 20'000) + 1e-4)
          << name << w;
      EXPECT_EQ(drawn.tests[w].chiSquare, exact.tests[w].chiSquare);
    }
  }
}

TEST(Permutation, TheNumberOfThreadsChangesNothing) {
  const CurveData data = test::curveData("lung", "ecog", "", "", "male");
  std::vector<std::uint64_t> extreme;
  for (const unsigned count : {1U, 2U, 7U}) {
    numerics::setThreads(count);
    const Permutations random = {.count = 5'000, .seed = 42};
    const auto found = permuted(data, engine::curves::usualCombination(), random);
    for (const auto& test : found.tests) extreme.push_back(test.extreme);
  }
  numerics::setThreads(0);
  for (std::size_t i = 4; i < extreme.size(); ++i) EXPECT_EQ(extreme[i], extreme[i % 4]);
}

TEST(Permutation, AnotherSeedDrawsOthers) {
  const CurveData data = test::curveData("veteran", "test", "", "");
  const std::vector<Weighting> one(1);
  const auto extreme = [&](std::uint64_t seed) {
    return permuted(data, one, {.count = 5'000, .seed = seed}).tests[0].extreme;
  };
  EXPECT_EQ(extreme(1), extreme(1));
  EXPECT_NE(extreme(1), extreme(2));
}

TEST(Permutation, ARandomPValueCountsTheObservedArrangementToo) {
  // Groups that are apart: no other arrangement than its mirror is as extreme.
  CurveData data;
  data.groupCount = 2;
  for (int i = 0; i < 40; ++i) {
    data.exit.push_back(1.0 + i);
    data.event.push_back(1);
    data.group.push_back(i < 20 ? 0 : 1);
  }
  const auto test = permuted(data, std::vector<Weighting>(1), {.count = 999}).tests[0];
  EXPECT_EQ(test.extreme, 0U);
  EXPECT_DOUBLE_EQ(test.pValue, 1.0 / 1000);
  EXPECT_EQ(test.lower, 0.0);
  // Clopper and Pearson: 1 - 0.025^(1 / 999).
  EXPECT_NEAR(test.upper, 1.0 - std::pow(0.025, 1.0 / 999), 1e-14);
}

TEST(Permutation, FourRowsByHand) {
  // Times 1, 2, 3, 4, all events: scores 1 - 1/4, 1 - 1/4 - 1/3, -1/12 - 1/2, -1/12 - 1/2 - 1.
  CurveData data;
  data.exit = {1, 2, 3, 4};
  data.event = {1, 1, 1, 1};
  data.group = {1, 1, 0, 0};
  data.groupCount = 2;
  const auto found = permuted(data, std::vector<Weighting>(1), kExact);
  EXPECT_EQ(found.arrangements, 6.0);
  EXPECT_EQ(found.tests[0].extreme, 2U);
  const double squares = (81 + 25 + 1 + 169) / 144.0;
  EXPECT_NEAR(found.tests[0].z, (14.0 / 12) / std::sqrt(squares / 3), 1e-14);
  EXPECT_EQ(
      permuted(data, std::vector<Weighting>(1), kExact, Alternative::kGreater).tests[0].extreme,
      1U);
}

TEST(Permutation, WithoutAnEventThereIsNoTest) {
  CurveData data = sampleOf("pair");
  data.event.assign(data.exit.size(), 0);
  const auto found = permuted(data, engine::curves::usualCombination(), {.count = 10});
  EXPECT_EQ(found.tests[0].degreesOfFreedom, 0U);
  EXPECT_TRUE(std::isnan(found.tests[0].pValue));
  EXPECT_TRUE(std::isnan(found.combination.pValue));
}

TEST(Permutation, StopsWhereNobodyWantsMore) {
  class Stopping : public numerics::Progress {
   private:
    bool stop() override { return true; }
  };
  const CurveData data = sampleOf("pair");
  Stopping stopping;
  EXPECT_THROW(engine::curves::permute(data.response(), data.rows(), data.groups(),
                                       std::vector<Weighting>(1), {.count = 10},
                                       Alternative::kTwoSided, &stopping),
               numerics::Cancelled);
}

// The table of docs/statistics/curves.md: one data set, two variances.
TEST(PermutationPage, HoldsTheNumbersOfBothVariances) {
  const Csv file(SURVMETH_DATA "/leukemia.csv");
  CurveData data;
  data.exit = file.numbers("weeks");
  data.groupCount = 2;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    data.event.push_back(file.number("relapse", i) == 1 ? 1 : 0);
    data.group.push_back(file.text("treatment", i) == "placebo" ? 1 : 0);
  }
  const std::vector<std::pair<const char*, Weighting>> rows = {
      {"log-rank", {}},
      {"Gehan-Breslow", {Kind::kGehanBreslow}},
      {"Tarone-Ware", {Kind::kTaroneWare}},
      {"Peto-Peto, 1 - d / (n + 1)", {Kind::kPetoPeto}},
      {"modified Peto-Peto", {Kind::kModifiedPetoPeto}},
      {"Fleming-Harrington (1, 0), S(t-)", {Kind::kFlemingHarrington, 1, 0}}};
  const test::Page page("curves");
  for (const auto& [name, weighting] : rows) {
    const std::span<const Weighting> one(&weighting, 1);
    page.says("| %s | %.3f | %.3f |", name,
              engine::curves::compare(data.response(), data.rows(), data.groups(), one)
                  .tests[0]
                  .chiSquare,
              permuted(data, one, {.count = 1}).tests[0].chiSquare);
  }
}

void expectRefusal(const std::function<void()>& call, Role role, const std::string& text) {
  try {
    call();
    ADD_FAILURE() << "not refused: " << text;
  } catch (const Refusal& refusal) {
    EXPECT_EQ(refusal.what(), text);
    EXPECT_EQ(refusal.role(), role);
  }
}

TEST(PermutationRefusals, NameWhatIsWrong) {
  const std::vector<Weighting> one(1);
  const CurveData large = test::curveData("veteran", "test", "", "");
  EXPECT_GT(engine::curves::arrangementsOf(large.response(), large.rows(), large.groups()), 1e39);
  expectRefusal([&] { permuted(large, one, kExact); }, Role::kValue,
                "there are more than 10,000,000 arrangements of the groups to enumerate");
  expectRefusal([&] { permuted(large, one, {.count = 0}); }, Role::kValue,
                "no permutation is asked for");
  expectRefusal([&] { permuted(sampleOf("three"), one, {.count = 1}, Alternative::kLess); },
                Role::kGroup, "a one-sided test is of two groups");
  CurveData weighted = sampleOf("pair");
  weighted.weight.assign(weighted.exit.size(), 1.0);
  weighted.weight[3] = 2.0;
  expectRefusal([&] { permuted(weighted, one, {.count = 1}); }, Role::kWeight,
                "permutations exchange rows: they take no weights but 0 and 1");
}

}  // namespace
}  // namespace survmeth
