// Numbers that were printed for public data, to the digits printed. What was printed of data that
// differ in a row from the ones kept here is left out.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/curves/comparison.h"
#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Contrast;
using engine::curves::Curve;
using engine::curves::Options;
using engine::curves::Scale;
using engine::curves::WeightedTest;
using engine::curves::Weighting;
using test::CurveData;
using Kind = Weighting::Kind;

// Half a unit of the last of so many printed decimals.
void expectPrinted(double actual, double printed, int decimals, const std::string& what) {
  EXPECT_NEAR(actual, printed, 0.5 * std::pow(10.0, -decimals) * (1 + 1e-9)) << what;
}

struct Printed {
  double time, survival, error;
};

void expectSurvival(const Curve& curve, std::initializer_list<Printed> table) {
  for (const Printed& row : table) {
    const std::size_t at = indexAt(curve, row.time);
    ASSERT_EQ(curve.time.at(at), row.time);
    const std::string when = "at " + std::to_string(row.time);
    expectPrinted(curve.survival[at], row.survival, 4, when);
    expectPrinted(curve.standardError(at), row.error, 4, when);
  }
}

// Weeks in remission under 6-MP and placebo. Freireich et al., Blood 21 (1963) 699-716.
CurveData leukaemia() {
  CurveData data;
  data.exit = {6, 6, 6, 7, 10, 13, 16, 22, 23, 6, 9, 10, 11, 17, 19, 20, 25, 32, 32, 34, 35,
               1, 1, 2, 2, 3,  4,  4,  5,  5,  8, 8, 8,  8,  11, 11, 12, 12, 15, 17, 22, 23};
  data.groupCount = 2;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.event.push_back(i < 9 || i >= 21 ? 1 : 0);
    data.group.push_back(i < 21 ? 0 : 1);
  }
  return data;
}

// Kleinbaum & Klein, Survival Analysis (2012), chapter 2.
TEST(Published, RemissionsUnder6MpHaveThePrintedCurve) {
  expectSurvival(leukaemia().curves()[0], {{6, 0.8571, 0.0764},
                                           {7, 0.8067, 0.0869},
                                           {10, 0.7529, 0.0963},
                                           {13, 0.6902, 0.1068},
                                           {16, 0.6275, 0.1141},
                                           {22, 0.5378, 0.1282},
                                           {23, 0.4482, 0.1346}});
}

// The same, chapters 1 and 2: 9 relapses in 359 weeks, 21 in 182.
TEST(Published, RemissionsHaveThePrintedRatesAndTests) {
  const CurveData data = leukaemia();
  const auto rates = engine::curves::rates(data.response(), data.rows(), data.groups(), {}, 0.95);
  EXPECT_EQ(rates[0][0].personTime, 359);
  EXPECT_EQ(rates[1][0].personTime, 182);
  expectPrinted(rates[0][0].rate, 0.025, 3, "6-MP");
  expectPrinted(rates[1][0].rate, 0.115, 3, "placebo");
  const std::vector<Weighting> weightings = {
      {}, {Kind::kGehanBreslow}, {Kind::kTaroneWare}, {Kind::kPetoPeto}};
  const auto tests =
      engine::curves::compare(data.response(), data.rows(), data.groups(), weightings).tests;
  expectPrinted(tests[0].chiSquare, 16.79, 2, "log-rank");
  expectPrinted(tests[1].chiSquare, 13.46, 2, "Gehan-Breslow");
  expectPrinted(tests[2].chiSquare, 15.12, 2, "Tarone-Ware");
  expectPrinted(tests[3].chiSquare, 14.08, 2, "Peto-Peto");
}

// Weeks to the discontinuation of an intrauterine device. Collett, Modelling Survival Data in
// Medical Research (2003), tables 1.1, 2.3 and 2.4.
TEST(Published, DiscontinuationsHaveThePrintedCurveAndLimits) {
  const CurveData data =
      test::small({10, 13, 18, 19, 23, 30, 36, 38, 54, 56, 59, 75, 93, 97, 104, 107, 107, 107},
                  {1, 0, 0, 1, 0, 1, 1, 0, 0, 0, 1, 1, 1, 1, 0, 1, 0, 0});
  Options options;
  options.scale = Scale::kPlain;
  const Curve curve = data.curves(options)[0];
  expectSurvival(curve, {{10, 0.9444, 0.0540},
                         {19, 0.8815, 0.0790},
                         {30, 0.8137, 0.0978},
                         {36, 0.7459, 0.1107},
                         {59, 0.6526, 0.1303},
                         {75, 0.5594, 0.1412},
                         {93, 0.4662, 0.1452},
                         {97, 0.3729, 0.1430},
                         {107, 0.2486, 0.1392}});
  const double limits[][3] = {{10, 0.839, 1},     {19, 0.727, 1},     {30, 0.622, 1},
                              {36, 0.529, 0.963}, {59, 0.397, 0.908}, {75, 0.283, 0.836},
                              {93, 0.182, 0.751}, {97, 0.093, 0.653}, {107, 0, 0.522}};
  for (const auto& [time, lower, upper] : limits) {
    const std::size_t at = indexAt(curve, time);
    expectPrinted(curve.lower[at], lower, 3, "lower at " + std::to_string(time));
    expectPrinted(curve.upper[at], upper, 3, "upper at " + std::to_string(time));
  }
}

// Months of women with tumours that a stain marks or does not. The same, table 1.2, examples 2.12
// and 2.13.
TEST(Published, StainedTumoursHaveThePrintedTests) {
  CurveData data;
  data.exit = {23, 47, 69,  70,  71,  100, 101, 148, 181, 198, 208, 212, 224, 5,   8,
               10, 13, 18,  24,  26,  26,  31,  35,  40,  41,  48,  50,  59,  61,  68,
               71, 76, 105, 107, 109, 113, 116, 118, 143, 154, 162, 188, 212, 217, 225};
  data.event = {1, 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0};
  data.groupCount = 2;
  for (std::size_t i = 0; i < data.exit.size(); ++i) data.group.push_back(i < 13 ? 0 : 1);
  const std::vector<Weighting> weightings = {{}, {Kind::kGehanBreslow}};
  const auto tests =
      engine::curves::compare(data.response(), data.rows(), data.groups(), weightings).tests;
  expectPrinted(tests[0].observed[0] - tests[0].expected[0], -4.565, 3, "log-rank score");
  expectPrinted(tests[0].covariance(0, 0), 5.929, 3, "its variance");
  expectPrinted(tests[0].chiSquare, 3.515, 3, "log-rank");
  expectPrinted(tests[1].observed[0] - tests[1].expected[0], -159, 0, "Gehan-Breslow score");
  expectPrinted(tests[1].chiSquare, 4.180, 3, "Gehan-Breslow");
}

// Days to vaginal cancer in rats of two pretreatments, four censored. Kalbfleisch & Prentice, The
// Statistical Analysis of Failure Time Data (1980), table 1.1; the tests in SAS Institute, SAS/STAT
// User's Guide, The LIFETEST Procedure.
TEST(Published, VaginalCancersOfRatsHaveThePrintedTests) {
  CurveData data;
  data.exit = {143, 164, 188, 188, 190, 192, 206, 209, 213, 216, 220, 227, 230, 234,
               246, 265, 304, 142, 156, 163, 198, 205, 232, 232, 233, 233, 233, 233,
               239, 240, 261, 280, 280, 296, 296, 323, 216, 244, 204, 344};
  data.groupCount = 2;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.event.push_back(i < 36 ? 1 : 0);
    data.group.push_back(i < 17 || i == 36 || i == 37 ? 0 : 1);
  }
  const std::vector<Weighting> weightings = {{}, {Kind::kGehanBreslow}};
  const auto tests =
      engine::curves::compare(data.response(), data.rows(), data.groups(), weightings).tests;
  expectPrinted(tests[0].chiSquare, 3.1227, 4, "log-rank");
  expectPrinted(tests[0].pValue, 0.0772, 4, "log-rank");
  expectPrinted(tests[1].chiSquare, 2.6510, 4, "Gehan-Breslow");
  expectPrinted(tests[1].pValue, 0.1035, 4, "Gehan-Breslow");
}

// Days from a transplant to relapse or death: ALL, AML of low and of high risk. Klein &
// Moeschberger, Survival Analysis, 2nd ed. (2003), examples 4.2, 4.3 and 7.2; the tests with four
// decimals in SAS Institute, SAS/STAT User's Guide, The LIFETEST Procedure.
TEST(Published, BoneMarrowTransplantsHaveThePrintedMediansMeansAndTests) {
  CurveData data = test::curveData("bmt", "", "", "");
  const test::Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/bmt.csv");
  data.groupCount = 3;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    data.group.push_back(file.number("high", i) != 0.0 ? 2 : file.number("low", i) != 0.0 ? 1 : 0);
  }
  Options options;
  const std::vector<Curve> curves = data.curves(options);
  const std::vector<double> half = {0.5};
  const double medians[] = {418, 2204, 183};
  // Limits with log(-log S). The upper ones of the first two do not exist.
  const double lower[] = {192, 641, 113};
  for (std::size_t g = 0; g < 3; ++g) {
    const auto median = engine::curves::quantiles(curves[g], half)[0];
    EXPECT_EQ(median.time, medians[g]);
    EXPECT_EQ(median.lower, lower[g]);
    EXPECT_EQ(std::isnan(median.upper), g < 2);
  }
  const double means[][3] = {{1, 1548.84, 150.62}, {2, 792.31, 158.25}};
  for (const auto& [group, mean, error] : means) {
    const auto g = static_cast<std::size_t>(group);
    const double last = curves[g].time.back();
    const auto restricted =
        engine::curves::restrictedMeans(data.sample(), data.rows(), curves, options, last)[g];
    expectPrinted(restricted.mean, mean, 2, "mean");
    expectPrinted(restricted.standardError, error, 2, "its error");
  }
  const std::vector<Weighting> weightings = {{}, {Kind::kGehanBreslow}};
  const auto tests =
      engine::curves::compare(data.response(), data.rows(), data.groups(), weightings).tests;
  expectPrinted(tests[0].chiSquare, 13.8037, 4, "log-rank");
  expectPrinted(tests[0].pValue, 0.0010, 4, "log-rank");
  expectPrinted(tests[1].chiSquare, 16.2407, 4, "Gehan-Breslow");
  expectPrinted(tests[1].pValue, 0.0003, 4, "Gehan-Breslow");
}

// Cancer of the larynx in four stages, the same, example 7.6.
TEST(Published, StagesOfCancerOfTheLarynxHaveThePrintedTrend) {
  CurveData data = test::curveData("larynx", "", "", "");
  const test::Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/larynx.csv");
  data.groupCount = 4;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    data.group.push_back(static_cast<std::uint32_t>(
        file.number("stage2", i) + 2 * file.number("stage3", i) + 3 * file.number("stage4", i)));
  }
  const std::vector<Weighting> logRank(1);
  const std::vector<double> scores = {1, 2, 3, 4};
  const WeightedTest test =
      engine::curves::compare(data.response(), data.rows(), data.groups(), logRank, scores)
          .tests[0];
  expectPrinted(test.chiSquare, 22.76, 2, "log-rank");
  expectPrinted(test.trend, 3.72, 2, "trend");
}

// Allogeneic and autologous transplants in Hodgkin's disease, the same, example 7.7: the stratum's
// score and variance.
TEST(Published, TransplantsInHodgkinsDiseaseHaveThePrintedScore) {
  const test::Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/hodgkin.csv");
  CurveData data;
  data.groupCount = 2;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    if (file.number("hodgkin", i) == 0.0) continue;
    data.exit.push_back(file.number("time", i));
    data.event.push_back(file.number("event", i) != 0.0 ? 1 : 0);
    data.group.push_back(file.number("allo", i) != 0.0 ? 0 : 1);
  }
  const std::vector<Weighting> logRank(1);
  const WeightedTest test =
      engine::curves::compare(data.response(), data.rows(), data.groups(), logRank).tests[0];
  expectPrinted(test.observed[0] - test.expected[0], 3.1062, 4, "score");
  expectPrinted(test.covariance(0, 0), 1.5177, 4, "variance");
}

// Primary biliary cirrhosis: ten years under D-penicillamine (second) and placebo, the example of
// Uno et al., survRM2: Comparing Restricted Mean Survival Time (R package, its vignette).
TEST(Published, BiliaryCirrhosisHasThePrintedRestrictedMeans) {
  CurveData data = test::curveData("pbc", "trt", "", "");
  for (double& time : data.exit) time /= 365.25;
  for (std::uint32_t& group : data.group) group = 1 - group;
  const Options options;
  const auto means = engine::curves::restrictedMeans(data.sample(), data.rows(),
                                                     data.curves(options), options, 10);
  const double printed[][7] = {{7.283, 0.295, 6.704, 7.863, 2.717, 2.137, 3.296},
                               {7.146, 0.283, 6.592, 7.701, 2.854, 2.299, 3.408}};
  for (std::size_t g = 0; g < 2; ++g) {
    const auto& m = means[g];
    const double actual[] = {m.mean, m.standardError, m.lower,    m.upper,
                             m.lost, m.lostLower,     m.lostUpper};
    for (std::size_t i = 0; i < 7; ++i) {
      expectPrinted(actual[i], printed[g][i], 3, std::to_string(g) + " " + std::to_string(i));
    }
  }
  const auto contrasts = engine::curves::compareMeans(means[0], means[1], 0.95);
  const auto expectContrast = [](const Contrast& c, double estimate, double lower, double upper) {
    expectPrinted(c.estimate, estimate, 3, "estimate");
    expectPrinted(c.lower, lower, 3, "lower");
    expectPrinted(c.upper, upper, 3, "upper");
    expectPrinted(c.pValue, 0.738, 3, "p");
  };
  expectContrast(contrasts.difference, -0.137, -0.939, 0.665);
  expectContrast(contrasts.ratio, 0.981, 0.878, 1.096);
  expectContrast(contrasts.lostRatio, 1.050, 0.787, 1.402);
}

}  // namespace
}  // namespace survmeth
