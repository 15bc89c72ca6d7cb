// A Cox regression of the lung cancer data, from a formula: coefficients, tests, concordance, the
// test of proportional hazards and the survival that the fit predicts.
//
//     hazards data/lung.csv
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "engine/cox/baseline.h"
#include "engine/cox/concordance.h"
#include "engine/cox/fit.h"
#include "engine/cox/proportionality.h"
#include "engine/input.h"
#include "frame/reader.h"
#include "frame/select.h"
#include "model/design.h"
#include "model/formula.h"
#include "model/response.h"
#include "numerics/progress.h"

namespace {

namespace cox = survmeth::engine::cox;
namespace frame = survmeth::frame;
namespace model = survmeth::model;

void printTest(const char* name, const cox::ChiSquareTest& test) {
  std::printf("%-18s%12.4f%6zu%14.6f\n", name, test.chiSquare, test.degreesOfFreedom, test.pValue);
}

void printCoefficients(const cox::Fit& fit, const std::vector<std::string>& names) {
  std::printf("%-18s%14s%14s%14s\n", "covariate", "coefficient", "std error", "hazard ratio");
  for (std::size_t j = 0; j < names.size(); ++j) {
    std::printf("%-18s%14.6f%14.6f%14.6f\n", names[j].c_str(), fit.coefficients[j],
                fit.standardError(j), std::exp(fit.coefficients[j]));
  }
}

// The survival of a 60-year-old woman without symptoms, at the last event time up to each of three.
void printSurvival(const cox::Fit& fit) {
  const cox::BaselineHazard baseline(fit);
  const std::vector<double> woman = {60, 0, 0};
  const cox::CumulativeHazard hazard = baseline.at(woman, 0, 0);
  for (const double day : {180.0, 360.0, 720.0}) {
    std::size_t k = 0;
    while (k < hazard.time.size() && hazard.time[k] <= day) ++k;
    const double cumulative = k == 0 ? 0.0 : hazard.hazard[k - 1];
    std::printf("survival after %.0f days %.6f\n", day, std::exp(-cumulative));
  }
}

void analyse(const std::string& file) {
  const frame::Frame all =
      frame::readFrame(file, {{.name = "time", .cells = frame::Cells::kNumbers},
                              {.name = "status", .cells = frame::Cells::kText},
                              {.name = "age", .cells = frame::Cells::kNumbers},
                              {.name = "sex", .cells = frame::Cells::kText},
                              {.name = "ph.ecog"}});
  const model::Formula formula = model::parseFormula("Surv(time, status) ~ age + sex + ph.ecog");
  const frame::Frame data = frame::selectRows(all, model::completeRows(formula, all));
  const model::ModelData parts = model::modelData(model::Coding::learn(formula, data), data);
  survmeth::numerics::Progress progress;
  const cox::Fit fit =
      cox::fit(parts.response(), parts.rows(), parts.design.design, cox::Options(), progress);
  for (const survmeth::engine::Outcome& outcome : fit.outcomes) {
    std::printf("%s\n", outcome.text.c_str());
  }

  std::printf("%zu patients, %zu deaths\n", fit.rows, fit.events);
  printCoefficients(fit, parts.design.design.names);
  printTest("likelihood ratio", fit.likelihoodRatio);
  printTest("score", fit.score);
  printTest("Wald", fit.wald);
  const cox::Concordance agreement = cox::concordance(fit);
  std::printf("concordance %.6f, std error %.6f\n", agreement.estimate, agreement.standardError);

  std::printf("proportional hazards?\n");
  const cox::Proportionality check =
      cox::testProportionality(fit, cox::TimeTransform::kKaplanMeier);
  for (const cox::TermTest& term : check.terms) {
    printTest(parts.design.design.termNames[term.term].c_str(), term.test);
  }
  printTest("all", check.global);
  printSurvival(fit);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: hazards data/lung.csv\n");
    return 2;
  }
  try {
    analyse(arguments[1]);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return 1;
  }
  return 0;
}
