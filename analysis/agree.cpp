// survmeth agree: declaration, run and description.
#include <optional>
#include <string>
#include <utility>

#include "analysis/agreement.h"
#include "analysis/all.h"
#include "analysis/estimateTable.h"
#include "analysis/refusal.h"
#include "analysis/twoMethods.h"
#include "frame/labels.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace key = report::key;
using engine::Role;
using enum DifferenceKind;
using report::brief;
using report::Kind;
using text::counted;

constexpr const char* kSource = "Bland & Altman, Stat Methods Med Res 8 (1999) 135-160";

struct Request {
  std::string first, second, replicates;
  DifferenceKind difference = kAbsolute;
  double alpha = 0.05;

  std::string name() const { return differenceName(difference, first, second); }
};

// Of two methods the agreement, of one the repeatability.
struct Result {
  Pairs pairs;
  std::optional<AgreementResult> agreement;
  std::optional<RepeatabilityResult> repeatability;
};

void check(const Request& request) {
  const bool replicates = !request.replicates.empty();
  requireAlone(replicates && !request.second.empty(), "replicates", "second");
  requireAlone(replicates && request.difference != kAbsolute, "replicates", "difference");
  if (replicates || !request.second.empty()) return;
  throw BadOption("second",
                  "is missing; expected the column of the second method, or --replicates with the "
                  "column of the subject");
}

Result fit(const frame::Frame& data, const Request& request, numerics::Progress&) {
  Result result;
  if (!request.replicates.empty()) {
    const frame::Labels subjects = frame::labelsOf(*data.labels(request.replicates));
    result.repeatability = expecting("at least one subject with two values", [&] {
      return repeatability({data.numbers(request.first)->numbers, subjects.codes,
                            subjects.labels.size(), request.alpha});
    });
    return result;
  }
  result.pairs = pairsOf(data, request.first, request.second);
  result.agreement = expecting("at least three pairs with a difference", [&] {
    return agreement({result.pairs.first.numbers, result.pairs.second.numbers, request.difference,
                      request.alpha});
  });
  return result;
}

report::Report describeRepeatability(const RepeatabilityResult& found, const Request& request) {
  report::Report report;
  report.title = "Repeatability of " + request.first + " within " + request.replicates;
  if (found.withinSd.value > 0) {
    report.summary = "Two values of one subject are estimated to differ by less than " +
                     brief(found.repeatability, 5) + " in " + report::confidence(request.alpha) +
                     " of cases, if errors are normal and of the same spread in every subject.";
  } else {
    report.summary = "All values of each subject are the same.";
    report.notes = {
        {"identicalReplicates",
         "all replicates are the same: the standard deviation is 0 and has no interval"}};
  }
  report.facts = {
      report::levelFact(request.alpha),
      report::countFact(key::kSubjects, "Subjects", found.subjects),
      report::countFact(key::kMeasurements, "Values", found.values),
      {key::kDegreesOfFreedom, "Degrees of freedom", Kind::kCount, found.degreesOfFreedom}};
  report.tables = {
      estimateTable("repeatability", "Spread within subjects", key::kStatistic, request.alpha,
                    {{"within-subject standard deviation", found.withinSd},
                     {"repeatability coefficient", {found.repeatability, kNone, kNone}}})};
  report.methods = {{"within-subject standard deviation: root of the residual mean square of a "
                     "one-way analysis of variance, interval by the chi-square law",
                     kSource},
                    {"repeatability coefficient: sqrt(2) times " + brief(found.z, 4) +
                         " within-subject standard deviations",
                     kSource}};
  return report;
}

report::Report describe(const Result& result, const Request& request) {
  if (result.repeatability) return describeRepeatability(*result.repeatability, request);
  const AgreementResult& found = *result.agreement;
  const std::string level = report::confidence(request.alpha), name = request.name();
  const bool ratio = request.difference == kRatio;
  report::Report report;
  report.title = "Agreement of " + request.first + " and " + request.second + " (Bland-Altman)";
  report.summary = "Of " + counted(found.pairs, "pair", "pairs") + " the " +
                   (ratio ? "ratios " : "differences ") + name + " average " +
                   report::withLimits(found.bias, level + " interval", 5) +
                   ". The limits of agreement, " + brief(found.lowerLimit.value, 5) + " and " +
                   brief(found.upperLimit.value, 5) + ", are estimated to hold " + level +
                   " of them, if they are normal and alike over the range measured.";
  report.facts = {
      report::levelFact(request.alpha), report::countFact(key::kPairs, "Pairs", found.pairs),
      report::countFact(key::kExcluded, found.excluded > 0 ? "Pairs without a difference" : "",
                        found.excluded)};
  report.tables = {estimateTable("agreement", (ratio ? "Ratios " : "Differences ") + name,
                                 key::kStatistic, request.alpha,
                                 {{"bias", found.bias},
                                  {"standard deviation", {found.sd, kNone, kNone}},
                                  {"lower limit of agreement", found.lowerLimit},
                                  {"upper limit of agreement", found.upperLimit}})};
  report.methods = {
      {"bias: mean of the differences, interval by Student's t",
       "Bland & Altman, Lancet 1 (1986) 307-310"},
      {"limits of agreement: bias -+ " + brief(found.z, 4) +
           " standard deviations, the normal quantile however few the pairs; intervals by "
           "Student's t from the variance sd^2 (1 / n + z^2 / (2 (n - 1)))",
       kSource}};
  noteConstants({&result.pairs.first, &result.pairs.second},
                "agreement is judged at that value only", report);
  if (found.excluded == 0) return report;
  report.notes.push_back(
      {"pairsExcluded", counted(found.excluded, "pair has", "pairs have") +
                            " no such difference (denominator 0) and no part in the analysis"});
  return report;
}

std::optional<report::Table> pairsTable(const Result& result, const Request& request) {
  if (!result.agreement) return {};
  return pairTable(
      "pairs", "Pairs", result.pairs,
      {report::borrowedColumn(key::kMean, "mean", Kind::kTime, result.agreement->means),
       report::borrowedColumn(key::kDifference, request.name(), Kind::kEstimate,
                              result.agreement->differences)});
}

// Differences against means, with bias and limits over the range of the means.
std::optional<report::Figure> figureOf(const Result& result, const Request& request) {
  if (!result.agreement) return {};
  const AgreementResult& found = *result.agreement;
  report::Panel panel =
      report::panelOf("mean of " + request.first + " and " + request.second, request.name());
  report::Series pairs = pointsAt(found.means, found.differences);
  const std::pair<double, double> ends = widthOf(pairs.x);
  addLevel("bias", found.bias, ends, panel);
  addLevel("limits of agreement", found.upperLimit, ends, panel);
  addLevel("limits of agreement", found.lowerLimit, ends, panel);
  panel.series.push_back(std::move(pairs));
  const double same = request.difference == kRatio ? 1 : 0;
  panel.references = {{false, same, "no difference"}};
  return report::figureOf(
      "agreement", "Agreement of " + request.first + " and " + request.second,
      "Bias and limits of agreement with " + report::confidence(request.alpha) + " intervals",
      std::move(panel));
}

}  // namespace

Declaration agreeDeclaration() {
  return declare<Request, Result>("agree",
                                  "Agreement of two methods (Bland-Altman), repeatability of one")
      .column("first", &Request::first, Role::kFirst, numbers(),
              "Column of the first method, or of the only one")
      .required()
      .column("second", &Request::second, Role::kSecond, numbers(), "Column of the second method")
      .choice("difference", &Request::difference,
              {{"absolute", kAbsolute}, {"relative", kRelative}, {"ratio", kRatio}},
              "What is judged")
      .column("replicates", &Request::replicates, Role::kSubject, labels(),
              "Column of the subject: repeatability of the first method alone")
      .alpha(&Request::alpha)
      .details(
          "An absolute difference is second - first, a relative one that over the size of the "
          "pair's mean, a ratio second / first.")
      .example("survmeth agree data/pefr.csv --first wright1 --second mini1")
      .tables({"agreement"})
      .longTable("pairs", pairsTable)
      .tables({"repeatability"})
      .figure("agreement", figureOf)
      .leastRows([](const Request& request) { return request.replicates.empty() ? 3 : 2; })
      .check(check)
      .fit(fit)
      .describe(describe);
}

}  // namespace survmeth::analysis
