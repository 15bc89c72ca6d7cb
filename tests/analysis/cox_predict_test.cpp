// Predictions from Cox fits: against R's, and from a file as from memory.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/predict.h"
#include "tests/analysis/coxFits.h"
#include "tests/support/csv.h"

namespace survmeth::analysis {
namespace {

CoxPredictions predicted(std::shared_ptr<const CoxSaved> fit, const std::string& file,
                         const std::vector<double>& at, engine::curves::Scale limits) {
  const Declaration declaration = coxPredictDeclaration();
  const auto request = declaration.request();
  declaration.follow(request.get(), fit);
  auto& typed = *static_cast<CoxPredictRequest*>(request.get());
  typed.at = at;
  typed.survivalLimits = limits;
  numerics::Progress progress;
  return predictCox(*fit, dataOf(declaration, request.get(), file), typed, progress);
}

// Both estimates are at most 1e-10 standard errors from the maximum; the errors of what follows are
// of the size of the estimates'.
constexpr double kTolerance = 1e-9;

void expectNear(double value, double expected, const std::string& what) {
  EXPECT_LE(std::fabs(value - expected), kTolerance * std::fabs(expected))
      << what << " " << expected;
}

void expectAsInR(const Made& made, const std::string& name, const std::vector<double>& at) {
  const test::Csv risk(reference(name + "_risk.csv")), curve(reference(name + "_survival.csv"));
  const std::vector<double> predictor = risk.numbers("predictor"), error = risk.numbers("error");
  const std::vector<std::pair<std::string, engine::curves::Scale>> kinds = {
      {"log-log", engine::curves::Scale::kLogLog},
      {"log", engine::curves::Scale::kLog},
      {"plain", engine::curves::Scale::kPlain}};
  std::size_t compared = 0;
  for (const auto& [kind, limits] : kinds) {
    const CoxPredictions ours = predicted(made.lasting, reference(name + "_new.csv"), at, limits);
    ASSERT_EQ(ours.predictor.size(), predictor.size());
    for (std::size_t i = 0; i < predictor.size(); ++i) {
      expectNear(ours.predictor[i], predictor[i], "predictor");
      expectNear(ours.standardError[i], error[i], "its error");
    }
    const auto rows = curve.numbers("row"), times = curve.numbers("time");
    const auto types = curve.texts("limits");
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (types[i] != kind) continue;
      std::size_t k = 0;
      while (k < at.size() && at[k] != times[i]) ++k;
      ASSERT_LT(k, at.size());
      const CoxSurvival& point = ours.at[static_cast<std::size_t>(rows[i]) - 1][k];
      expectNear(point.survival, curve.numbers("survival")[i], "survival");
      expectNear(point.error, curve.numbers("error")[i], "its error");
      expectNear(point.lower, curve.numbers("lower")[i], kind + " lower");
      expectNear(point.upper, curve.numbers("upper")[i], kind + " upper");
      ++compared;
    }
  }
  EXPECT_EQ(compared, curve.numbers("row").size());
}

TEST(CoxPredict, EfronsFitPredictsAsR) { expectAsInR(lung(), "lung", {90, 180, 365, 700}); }

TEST(CoxPredict, ASplineAnInteractionAndStrataPredictAsR) {
  expectAsInR(veteran(), "veteran", {30, 90, 150});
}

// All numbers of the survivals at the wanted times.
std::vector<double> survivals(const CoxPredictions& made) {
  std::vector<double> all;
  for (const auto& times : made.at) {
    for (const CoxSurvival& each : times) {
      all.insert(all.end(), {each.survival, each.error, each.lower, each.upper, each.hazard,
                             each.hazardError, each.hazardLower, each.hazardUpper});
    }
  }
  return all;
}

TEST(CoxPredict, ASavedFitPredictsBitForBitAsTheOneInMemory) {
  const std::vector<double> at = {0, 1, 30, 90, 150, 5000};
  for (const auto& [made, name] : {std::pair(lung(), "lung"), std::pair(veteran(), "veteran")}) {
    const SavedFit saved = readSavedFit(made.text);
    const auto read = std::static_pointer_cast<const CoxSaved>(saved.lasting);
    const std::string file = reference(std::string(name) + "_new.csv");
    const CoxPredictions once = predicted(made.lasting, file, at, engine::curves::Scale::kLog);
    const CoxPredictions again = predicted(read, file, at, engine::curves::Scale::kLog);
    EXPECT_TRUE(sameBits(once.predictor, again.predictor));
    EXPECT_TRUE(sameBits(once.standardError, again.standardError));
    EXPECT_TRUE(sameBits(survivals(once), survivals(again)));
    EXPECT_EQ(savedFit(*saved.declaration, made.fitted.report, read.get(), "test"), made.text);
  }
}

TEST(CoxPredict, ASelectionSavesAndPredictsByTheModelThatIsLeft) {
  const Made selected =
      fitted("lung.csv", {{"formula", std::string("Surv(time, status) ~ sex + ph.ecog + age")},
                          {"select", std::string("backward")},
                          {"remove", 0.05}});
  const Made left =
      fitted("lung.csv", {{"formula", std::string("Surv(time, status) ~ sex + ph.ecog")}});
  EXPECT_EQ(selected.lasting->coding.formula().text, left.lasting->coding.formula().text);
  EXPECT_EQ(selected.lasting->names, left.lasting->names);
  ASSERT_EQ(selected.lasting->columns.size(), 2u);  // new data need no age
  const auto read = std::static_pointer_cast<const CoxSaved>(readSavedFit(selected.text).lasting);
  const std::string file = reference("lung_new.csv");
  const CoxPredictions after = predicted(read, file, {90, 365}, engine::curves::Scale::kLog);
  const CoxPredictions alone =
      predicted(left.lasting, file, {90, 365}, engine::curves::Scale::kLog);
  ASSERT_EQ(after.at.size(), alone.at.size());
  for (std::size_t i = 0; i < after.at.size(); ++i) {
    ASSERT_EQ(after.at[i].size(), 2u);
    for (std::size_t t = 0; t < 2; ++t) {
      expectNear(after.at[i][t].survival, alone.at[i][t].survival, "survival");
      expectNear(after.at[i][t].upper, alone.at[i][t].upper, "upper limit");
    }
  }
}

TEST(CoxPredict, UnitsOfHazardsAreSaved) {
  const Made made = lung();
  EXPECT_EQ(made.text.find("\"scale\""), std::string::npos);
  CoxSaved far = *made.lasting;
  for (std::size_t k = 0; k < far.hazard->time.size(); ++k) {
    far.hazard->scale.push_back(-static_cast<double>(k));
  }
  static const Declaration kCox = coxDeclaration();
  const SavedFit saved = readSavedFit(savedFit(kCox, made.fitted.report, &far, "test"));
  const auto read = std::static_pointer_cast<const CoxSaved>(saved.lasting);
  EXPECT_TRUE(sameBits(read->hazard->scale, far.hazard->scale));
}

// Curves are formed in arrays for their quantiles, and no further than these need.
TEST(CoxPredict, QuantilesAreThoseOfTheWholeCurves) {
  const Made made = lung();
  const Declaration declaration = coxPredictDeclaration();
  std::size_t compared = 0;
  for (const engine::curves::Scale scale :
       {engine::curves::Scale::kLogLog, engine::curves::Scale::kLog,
        engine::curves::Scale::kPlain}) {
    CoxPredictRequest request;
    request.fit = made.lasting;
    request.survivalLimits = scale;
    request.quantiles = {0.2, 0.5, 0.8};
    request.curves = true;
    numerics::Progress progress;
    const CoxPredictions all = predictCox(
        *made.lasting, dataOf(declaration, &request, std::string(SURVMETH_DATA) + "/lung.csv"),
        request, progress);
    ASSERT_GT(all.quantiles.size(), 200u);
    for (std::size_t i = 0; i < all.quantiles.size(); ++i) {
      engine::curves::Curve curve;
      for (const CoxSurvival& point : all.curves[i].points) {
        curve.time.push_back(point.time);
        curve.survival.push_back(point.survival);
        curve.lower.push_back(point.lower);
        curve.upper.push_back(point.upper);
      }
      // The last time, 1022, is that of a row that is censored.
      curve.time.push_back(1022);
      for (auto* values : {&curve.survival, &curve.lower, &curve.upper}) {
        values->push_back(values->back());
      }
      const auto expected = engine::curves::quantiles(curve, request.quantiles);
      std::vector<double> one, other;
      for (std::size_t q = 0; q < 3; ++q) {
        const auto &a = all.quantiles[i][q], &b = expected[q];
        one.insert(one.end(), {a.time, a.lower, a.upper});
        other.insert(other.end(), {b.time, b.lower, b.upper});
        ++compared;
      }
      EXPECT_TRUE(sameBits(one, other)) << i;
    }
  }
  EXPECT_GT(compared, 1800u);
}

// Where nothing else is wanted, hazards are looked up at the times alone.
TEST(CoxPredict, SurvivalsOfManyRowsAreThoseOnTheirCurves) {
  const Made made = lung();
  const Declaration declaration = coxPredictDeclaration();
  std::vector<CoxPredictions> both;
  for (const bool curves : {true, false}) {
    CoxPredictRequest request;
    request.fit = made.lasting;
    request.at = {0, 5, 180, 1022, 1023};
    request.curves = curves;
    numerics::Progress progress;
    both.push_back(predictCox(
        *made.lasting, dataOf(declaration, &request, std::string(SURVMETH_DATA) + "/lung.csv"),
        request, progress));
  }
  ASSERT_GT(both[0].at.size(), 200u);
  EXPECT_TRUE(sameBits(survivals(both[0]), survivals(both[1])));
}

TEST(CoxPredict, SurvivalIsOneBeforeTheFirstEventAndUnknownAfterTheLastTime) {
  const CoxPredictions made = predicted(lung().lasting, reference("lung_new.csv"), {1, 1022, 1023},
                                        engine::curves::Scale::kLogLog);
  EXPECT_EQ(made.at[0][0].survival, 1);
  EXPECT_EQ(made.at[0][0].error, 0);
  EXPECT_TRUE(std::isnan(made.at[0][0].lower));  // 1 has no log-log limits
  EXPECT_FALSE(std::isnan(made.at[0][1].survival));
  EXPECT_TRUE(std::isnan(made.at[0][2].survival));
  EXPECT_TRUE(std::isnan(made.at[0][2].upper));
}

}  // namespace
}  // namespace survmeth::analysis
