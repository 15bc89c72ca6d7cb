// Predictions from Cox fits: against R's, and from a file as from memory.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/cox/predict.h"
#include "analysis/savedFit.h"
#include "frame/reader.h"
#include "report/json.h"
#include "tests/support/csv.h"

namespace survmeth::analysis {
namespace {

using Options = std::vector<std::pair<std::string, Setting>>;

// What perform() of the command line does, without files.
struct Made {
  Fitted fitted;
  std::shared_ptr<const CoxSaved> lasting;
  std::string text;
};

frame::Frame dataOf(const Declaration& declaration, const void* request, const std::string& file) {
  return frame::readFrame(file, [&](const std::vector<std::string>& header) {
    return wantedColumns(declaration, request, header);
  });
}

Made fitted(const std::string& data, const Options& options) {
  static const Declaration kCox = coxDeclaration();
  const auto request = kCox.request();
  for (const auto& [name, setting] : options) kCox.find(name)->set(request.get(), setting);
  const frame::Frame frame = dataOf(kCox, request.get(), SURVMETH_DATA "/" + data);
  numerics::Progress progress;
  Made made;
  made.fitted = analyse(kCox, frame, request.get(), progress);
  made.lasting = std::static_pointer_cast<const CoxSaved>(
      kCox.lasting->of(frame, made.fitted.result.get(), request.get()));
  made.text = savedFit(kCox, made.fitted.report, made.lasting.get(), "test");
  return made;
}

CoxPredictions predicted(std::shared_ptr<const CoxSaved> fit, const std::string& file,
                         const std::vector<double>& at, engine::curves::Scale limits) {
  const Declaration declaration = coxPredictDeclaration();
  const auto request = declaration.request();
  declaration.follow(request.get(), fit);
  auto& typed = *static_cast<CoxPredictRequest*>(request.get());
  typed.at = at;
  typed.limits = limits;
  numerics::Progress progress;
  return predictCox(*fit, dataOf(declaration, request.get(), file), typed, progress);
}

std::string reference(const std::string& file) {
  return std::string(SURVMETH_REFERENCE) + "/predict/" + file;
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

Made lung() {
  return fitted("lung.csv", {{"formula", std::string("Surv(time, status) ~ age + sex + ph.ecog")}});
}
Made veteran() {
  return fitted("veteran.csv", {{"formula", std::string("Surv(time, status) ~ karno * trt + "
                                                        "ns(age, 3) + strata(celltype)")},
                                {"ties", std::string("breslow")}});
}

TEST(CoxPredict, EfronsFitPredictsAsR) { expectAsInR(lung(), "lung", {90, 180, 365, 700}); }

TEST(CoxPredict, ASplineAnInteractionAndStrataPredictAsR) {
  expectAsInR(veteran(), "veteran", {30, 90, 150});
}

bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i])) return false;
  }
  return true;
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

// Curves of which nothing but quantiles is wanted are formed in arrays.
TEST(CoxPredict, QuantilesOfManyRowsAreThoseOfTheirCurves) {
  const Made made = lung();
  const Declaration declaration = coxPredictDeclaration();
  for (const engine::curves::Scale scale :
       {engine::curves::Scale::kLogLog, engine::curves::Scale::kLog,
        engine::curves::Scale::kPlain}) {
    std::vector<CoxPredictions> both;
    for (const bool curves : {true, false}) {
      CoxPredictRequest request;
      request.fit = made.lasting;
      request.limits = scale;
      request.quantiles = {0.2, 0.5, 0.8};
      request.curves = curves;
      numerics::Progress progress;
      both.push_back(predictCox(
          *made.lasting, dataOf(declaration, &request, std::string(SURVMETH_DATA) + "/lung.csv"),
          request, progress));
    }
    ASSERT_GT(both[0].quantiles.size(), 200u);
    ASSERT_EQ(both[0].quantiles.size(), both[1].quantiles.size());
    for (std::size_t i = 0; i < both[0].quantiles.size(); ++i) {
      std::vector<double> one, other;
      for (std::size_t q = 0; q < 3; ++q) {
        const auto &a = both[0].quantiles[i][q], &b = both[1].quantiles[i][q];
        one.insert(one.end(), {a.time, a.lower, a.upper});
        other.insert(other.end(), {b.time, b.lower, b.upper});
      }
      EXPECT_TRUE(sameBits(one, other)) << i;
    }
  }
}

TEST(CoxPredict, SurvivalIsOneBeforeTheFirstEventAndUnknownAfterTheLastTime) {
  const CoxPredictions made = predicted(lung().lasting, reference("lung_new.csv"), {1, 1022, 1023},
                                        engine::curves::Scale::kLogLog);
  EXPECT_EQ(made.at[0][0].survival, 1);
  EXPECT_EQ(made.at[0][0].error, 0);
  EXPECT_FALSE(std::isnan(made.at[0][1].survival));
  EXPECT_TRUE(std::isnan(made.at[0][2].survival));
  EXPECT_TRUE(std::isnan(made.at[0][2].upper));
}

std::string refusalOf(const std::string& text) {
  try {
    readSavedFit(text);
  } catch (const NoSavedFit& none) {
    return none.what();
  }
  return "none";
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

TEST(SavedFit, EveryChangedDigitIsFound) {
  const std::string text = lung().text;
  EXPECT_EQ(refusalOf(text), "none");
  const std::size_t from = text.find("\"fit\": ");
  std::size_t changed = 0;
  for (std::size_t i = from; i < text.size(); i += 41) {
    // The last digits of two numbers may name one double.
    if (!isDigit(text[i]) || !isDigit(text[i + 1])) continue;
    std::string other = text;
    other[i] = text[i] == '7' ? '8' : '7';
    EXPECT_NE(refusalOf(other), "none") << i;
    ++changed;
  }
  EXPECT_GT(changed, 100u);
}

TEST(SavedFit, EveryShorterTextIsRefused) {
  const std::string text = lung().text;
  for (std::size_t size = 0; size + 2 < text.size(); size += 97) {
    EXPECT_EQ(
        refusalOf(text.substr(0, size)).rfind("the file is cut off or no saved fit: line ", 0), 0u)
        << size;
  }
}

TEST(SavedFit, SpacesBetweenValuesAreNoDamage) {
  std::string text = lung().text;
  for (std::size_t at = 0; (at = text.find(",\n", at)) != std::string::npos; at += 2) {
    text.replace(at, 2, ", ");
  }
  EXPECT_EQ(refusalOf(text), "none");
}

TEST(SavedFit, OtherLayoutsAndOtherAnalysesAreNamed) {
  std::string text = lung().text;
  text.replace(text.find("survmeth-fit/1"), 14, "survmeth-fit/2");
  EXPECT_EQ(refusalOf(text),
            "the fit has the layout \"survmeth-fit/2\"; this program reads \"survmeth-fit/1\"");
  EXPECT_EQ(refusalOf("{\"schema\": \"survmeth-report/1\"}"),
            "the file is no saved fit; expected one that --save wrote");
  EXPECT_EQ(refusalOf("[1]"), "the file is no saved fit; expected one that --save wrote");
  EXPECT_EQ(refusalOf(sealed("{\"analysis\": \"life\", \"model\": {}}")),
            "the fit is of the analysis \"life\", of which this program keeps none");
}

TEST(SavedFit, AContentThatDoesNotFitTogetherIsRefused) {
  const JsonNode root = parseJson(lung().text);
  const std::string text = lung().text;
  const std::size_t from = text.find("\"fit\": ") + 7;
  const std::string fit = text.substr(from, text.rfind('}') - from);
  const auto spoilt = [&](const std::string& what, const std::string& by) {
    std::string other = fit;
    const std::size_t at = other.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return refusalOf(sealed(other.replace(at, what.size(), by)));
  };
  EXPECT_NE(
      spoilt("\"names\": [\"age\",", "\"names\": [\"rage\",").find("the model contradicts itself"),
      std::string::npos);
  EXPECT_NE(spoilt("\"variables\": [2]", "\"variables\": [3]")
                .find("a variable's number is out of range"),
            std::string::npos);
  EXPECT_NE(
      spoilt("\"firstTime\": [0,", "\"firstTime\": [5000,").find("a time's number is out of range"),
      std::string::npos);
  EXPECT_NE(spoilt("\"shift\": [", "\"shift\": [0,").find("the shifts has 2 elements; expected 1"),
            std::string::npos);
}

}  // namespace
}  // namespace survmeth::analysis
