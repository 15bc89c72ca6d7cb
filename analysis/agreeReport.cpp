// The descriptions of agreement and repeatability.
#include "analysis/agreeReport.h"

#include <cmath>
#include <utility>
#include <vector>

#include "Dist/Dist"
#include "analysis/estimate.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using report::brief;
using report::Kind;
using text::counted;
using text::lowered;

constexpr const char* kSource = "Bland & Altman, Stat Methods Med Res 8 (1999) 135-160";

struct Row {
  const char* statistic;
  Estimate value;
};

// What a difference is, in the names of the columns.
std::string differenceName(const AgreeRequest& request) {
  if (request.difference == DifferenceKind::kRatio) return request.second + " / " + request.first;
  const std::string difference = request.second + " - " + request.first;
  return request.difference == DifferenceKind::kRelative ? "(" + difference + ") / |mean|"
                                                         : difference;
}

report::Table estimateTable(const char* id, std::string caption, const AgreeRequest& request,
                            const std::vector<Row>& rows) {
  const std::string level = confidence(request.alpha) + " ";
  return report::tableOf(
      id, std::move(caption),
      {report::columnOf(key::kStatistic, "", Kind::kLabel, rows,
                        [](const Row& row) { return std::string(row.statistic); }),
       report::columnOf(key::kEstimate, "estimate", Kind::kEstimate, rows,
                        [](const Row& row) { return row.value.value; }),
       report::columnOf(key::kLower, level + "lower", Kind::kEstimate, rows,
                        [](const Row& row) { return row.value.lower; }),
       report::columnOf(key::kUpper, level + "upper", Kind::kEstimate, rows,
                        [](const Row& row) { return row.value.upper; })});
}

// Differences against means: bias and limits with their intervals over the range of the means, and
// the difference of methods that agree.
report::Figure agreementFigure(const AgreementResult& found, const AgreeRequest& request) {
  report::Panel panel;
  panel.x.label = "mean of " + request.first + " and " + request.second;
  panel.y.label = differenceName(request);
  report::Series pairs = pointsAt(found.means, found.differences);
  auto [left, right] = extentOf(pairs.x);
  if (left == right) {  // as wide a line as the mean itself is from 0
    left -= left == 0 ? 1 : std::fabs(left) / 2;
    right += right == 0 ? 1 : std::fabs(right) / 2;
  }
  const auto level = [&panel, left = left, right = right](const char* name, const Estimate& value) {
    report::Series band = lineFrom(name, left, 0, right, 0);
    band.kind = report::SeriesKind::kBand;
    band.y.clear();
    band.lower.assign(2, value.lower);
    band.upper.assign(2, value.upper);
    panel.series.push_back(std::move(band));
    panel.series.push_back(lineFrom(name, left, value.value, right, value.value));
  };
  level("bias", found.bias);
  level("limits of agreement", found.upperLimit);
  level("limits of agreement", found.lowerLimit);
  panel.series.push_back(std::move(pairs));
  panel.references.push_back(
      {false, request.difference == DifferenceKind::kRatio ? 1.0 : 0.0, "no difference"});
  report::Figure figure;
  figure.id = "agreement";
  figure.title = "Agreement of " + request.first + " and " + request.second;
  figure.caption = "Bias and limits of agreement with " + confidence(request.alpha) + " intervals";
  figure.panels.push_back(std::move(panel));
  return figure;
}

void addAgreementNotes(const AgreeResult& result, const AgreeRequest& request,
                       report::Report& report) {
  const char* const consequence = "agreement is judged at that value only";
  const Pairs& pairs = result.pairs;
  if (isConstant(pairs.first)) {
    report.notes.push_back(constantNote(request.first, pairs.first.front(), consequence));
  }
  if (isConstant(pairs.second)) {
    report.notes.push_back(constantNote(request.second, pairs.second.front(), consequence));
  }
  if (result.agreement->excluded > 0) {
    report.notes.push_back({"pairsExcluded",
                            counted(result.agreement->excluded, "pair has", "pairs have") +
                                " no such difference (denominator 0) and no part in the analysis",
                            {}});
  }
}

void describeAgreement(const AgreeResult& result, const AgreeRequest& request,
                       report::Report& report) {
  const AgreementResult& found = *result.agreement;
  const std::string level = confidence(request.alpha), name = differenceName(request);
  const std::string what = request.difference == DifferenceKind::kRatio ? "Ratios" : "Differences";
  report.title = "Agreement of " + request.first + " and " + request.second + " (Bland-Altman)";
  report.summary = "Of " + counted(found.pairs, "pair", "pairs") + " the " + lowered(what) + " " +
                   name + " average " + brief(found.bias.value, 5) + " (" + level + " interval " +
                   brief(found.bias.lower, 5) + " to " + brief(found.bias.upper, 5) +
                   "). The limits of agreement, " + brief(found.lowerLimit.value, 5) + " and " +
                   brief(found.upperLimit.value, 5) + ", are estimated to hold " + level +
                   " of them, if they are normal and alike over the range measured.";
  report.facts.push_back({key::kPairs, "Pairs", Kind::kCount, static_cast<double>(found.pairs)});
  report.facts.push_back({key::kExcluded, found.excluded > 0 ? "Pairs without a difference" : "",
                          Kind::kCount, static_cast<double>(found.excluded)});
  report.tables = {estimateTable("agreement", what + " " + name, request,
                                 {{"bias", found.bias},
                                  {"standard deviation", {found.sd, kNone, kNone}},
                                  {"lower limit of agreement", found.lowerLimit},
                                  {"upper limit of agreement", found.upperLimit}}),
                   pairTable("pairs", "Pairs", result.pairs, request.first, request.second,
                             {report::numberColumn(key::kMean, "mean", Kind::kTime, found.means),
                              report::numberColumn(key::kDifference, name, Kind::kEstimate,
                                                   found.differences)})};
  const std::string z = brief(InvCDFNormalStd(1 - request.alpha / 2), 4);
  report.methods = {
      {"bias: mean of the differences, interval by Student's t",
       "Bland & Altman, Lancet 1 (1986) 307-310"},
      {"limits of agreement: bias -+ " + z +
           " standard deviations, the normal quantile however few the pairs; intervals by "
           "Student's t from the variance sd^2 (1 / n + z^2 / (2 (n - 1)))",
       kSource}};
  report.figures.push_back(agreementFigure(found, request));
  addAgreementNotes(result, request, report);
}

void describeRepeatability(const RepeatabilityResult& found, const AgreeRequest& request,
                           report::Report& report) {
  const std::string level = confidence(request.alpha);
  report.title = "Repeatability of " + request.first + " within " + request.replicates;
  report.summary = found.withinSd.value > 0
                       ? "Two values of one subject are estimated to differ by less than " +
                             brief(found.repeatability, 5) + " in " + level +
                             " of cases, if errors are normal and of the same spread in every "
                             "subject."
                       : "All values of each subject are the same.";
  report.facts.push_back(
      {key::kSubjects, "Subjects", Kind::kCount, static_cast<double>(found.subjects)});
  report.facts.push_back(
      {key::kMeasurements, "Values", Kind::kCount, static_cast<double>(found.values)});
  report.facts.push_back(
      {key::kDegreesOfFreedom, "Degrees of freedom", Kind::kCount, found.degreesOfFreedom});
  report.tables = {
      estimateTable("repeatability", "Spread within subjects", request,
                    {{"within-subject standard deviation", found.withinSd},
                     {"repeatability coefficient", {found.repeatability, kNone, kNone}}})};
  report.methods = {
      {"within-subject standard deviation: root of the residual mean square of a "
       "one-way analysis of variance, interval by the chi-square law",
       kSource},
      {"repeatability coefficient: sqrt(2) times " +
           brief(InvCDFNormalStd(1 - request.alpha / 2), 4) + " within-subject standard deviations",
       kSource}};
  if (found.withinSd.value > 0) return;
  report.notes.push_back(
      {"identicalReplicates",
       "all replicates are the same: the standard deviation is 0 and has no interval",
       {}});
}

}  // namespace

report::Report describeAgree(const AgreeResult& result, const AgreeRequest& request) {
  report::Report report;
  report.facts = {{key::kLevel, "", Kind::kProbability, 1 - request.alpha}};
  if (result.agreement) {
    describeAgreement(result, request, report);
  } else {
    describeRepeatability(*result.repeatability, request, report);
  }
  return report;
}

}  // namespace survmeth::analysis
