// survmeth agree: declaration, run and description.
#include "analysis/agree.h"

#include <string>

#include "analysis/agreeReport.h"
#include "analysis/refusal.h"
#include "frame/labels.h"

namespace survmeth::analysis {
namespace {

using engine::Role;

void check(const AgreeRequest& request) {
  if (!request.replicates.empty() && !request.second.empty()) {
    throw BadOption("replicates", "stands beside --second; expected one of the two");
  }
  if (!request.replicates.empty() && request.difference != DifferenceKind::kAbsolute) {
    throw BadOption("replicates", "stands beside --difference; expected one of the two");
  }
  if (request.replicates.empty() && request.second.empty()) {
    throw BadOption("second",
                    "is missing; expected the column of the second method, or --replicates with "
                    "the column of the subject");
  }
}

AgreeResult fit(const frame::Frame& data, const AgreeRequest& request, numerics::Progress&) {
  AgreeResult result;
  if (!request.replicates.empty()) {
    const frame::Labels subjects = frame::labelsOf(*data.labels(request.replicates));
    try {
      result.repeatability = repeatability({.values = data.numbers(request.first)->numbers,
                                            .subject = subjects.codes,
                                            .subjects = subjects.labels.size(),
                                            .alpha = request.alpha});
    } catch (const engine::Refusal& refused) {
      throw expecting(refused, "at least one subject with two values");
    }
    return result;
  }
  result.pairs = pairsOf(data, request.first, request.second);
  try {
    result.agreement = agreement({.first = result.pairs.first,
                                  .second = result.pairs.second,
                                  .kind = request.difference,
                                  .alpha = request.alpha});
  } catch (const engine::Refusal& refused) {
    throw expecting(refused, "at least three pairs with a difference");
  }
  return result;
}

}  // namespace

Declaration agreeDeclaration() {
  return declare<AgreeRequest, AgreeResult>(
             "agree", "Agreement of two methods (Bland-Altman), repeatability of one")
      .column("first", &AgreeRequest::first, Role::kFirst, numbers(),
              "Column of the first method, or of the only one")
      .required()
      .column("second", &AgreeRequest::second, Role::kSecond, numbers(),
              "Column of the second method")
      .choice("difference", &AgreeRequest::difference,
              {{"absolute", DifferenceKind::kAbsolute},
               {"relative", DifferenceKind::kRelative},
               {"ratio", DifferenceKind::kRatio}},
              "What is judged")
      .column("replicates", &AgreeRequest::replicates, Role::kSubject, labels(),
              "Column of the subject: repeatability of the first method alone")
      .number("alpha", &AgreeRequest::alpha, between(0, 1),
              "Significance level; intervals have level 1 - A", "A")
      .without("0.05")
      .details(
          "An absolute difference is second - first, a relative one that over the size of the "
          "pair's mean, a ratio second / first.")
      .example("survmeth agree data/pefr.csv --first wright1 --second mini1")
      .tables({"agreement", "pairs", "repeatability"})
      .figures({"agreement"})
      .leastRows([](const AgreeRequest& request) { return request.replicates.empty() ? 3 : 2; })
      .check(check)
      .fit(fit)
      .describe(describeAgree);
}

}  // namespace survmeth::analysis
