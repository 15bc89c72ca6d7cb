// What survmeth finegray says of proportional subdistribution hazards.
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/describe.h"
#include "analysis/finegray/finegray.h"
#include "report/build.h"

namespace survmeth::analysis {

namespace cox = engine::cox;
namespace key = report::key;
using report::Kind;

std::string fineGrayTime(cox::TimeTransform transform) {
  return transform == cox::TimeTransform::kKaplanMeier ? "incidence before the time"
                                                       : transformedTime(transform);
}

report::Table fineGrayProportionality(const FineGrayAnswer& answer) {
  struct Row {
    std::string event, name;
    cox::ChiSquareTest robust, model;
  };
  std::vector<Row> rows;
  for (const FineGrayOfType& type : answer.types) {
    const auto& test = type.zph->test;
    for (std::size_t i = 0; i < test.terms.size(); ++i) {
      rows.push_back({type.label, answer.terms[test.terms[i].term], test.terms[i].test,
                      test.modelBased.terms[i].test});
    }
    rows.push_back({type.label, "all terms", test.global, test.modelBased.global});
  }
  return report::rowsOf("proportionality", "Proportional subdistribution hazards?", rows)
      .column(key::kEvent, answer.status, Kind::kLabel, &Row::event)
      .column(key::kName, "term", Kind::kLabel, &Row::name)
      .test(&Row::robust)
      .column(key::kModelChiSquare, "by the information", Kind::kStatistic,
              [](const Row& row) { return row.model.chiSquare; })
      .column(key::kModelPValue, "its p-value", Kind::kPValue,
              [](const Row& row) { return row.model.pValue; })
      .table();
}

std::optional<report::Figure> fineGraySchoenfeld(const FineGrayAnswer& answer,
                                                 const FineGrayRequest& request) {
  if (!request.zph || answer.types.empty()) return std::nullopt;
  report::Figure figure;
  figure.id = "schoenfeld";
  figure.title = "Does a coefficient change with time?";
  figure.caption =
      "Scaled residuals of the events of a type, a natural spline of 4 degrees of freedom with its "
      "pointwise " +
      report::confidence(request.alpha) + " band, and the coefficient";
  for (const FineGrayOfType& type : answer.types) {
    const auto& test = type.zph->test;
    const std::size_t step = schoenfeldStep(test.transformed.size());
    if (step > 1) {
      figure.caption +=
          "; of " + type.label + " one residual of " + std::to_string(step) + " is drawn";
    }
    for (std::size_t t = 0; t < test.scaledTerms.size(); ++t) {
      std::string title = answer.terms[test.scaledTerms[t].term];
      if (answer.types.size() > 1) title = type.label + ": " + title;
      figure.panels.push_back(schoenfeldPanel(std::move(title), fineGrayTime(*request.zph),
                                              test.scaledTerms[t], test.transformed,
                                              type.zph->smooth[t]));
    }
  }
  return figure;
}

}  // namespace survmeth::analysis
