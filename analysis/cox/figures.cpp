// The forest plot and the residuals against time.
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/describe.h"
#include "report/build.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using report::SeriesKind;

// More points in a panel hide each other and make a picture that no page shows any more.
constexpr std::size_t kMostPoints = 5000;

std::string counts(const CoxCount& count) {
  return " (n " + report::brief(count.rows) + ", " + report::brief(count.events) +
         (count.events == 1 ? " event)" : " events)");
}

// "1.47 (0.766 to 2.82)"; narrow limits with the decimals that tell them apart.
std::string ratioInWords(double ratio, double lower, double upper) {
  if (std::isinf(ratio)) return "infinite";
  const double width = upper - lower;
  int decimals = width < 10.0 ? 1 : 0;  // that show two digits of the width
  for (double unit = 1.0; width < unit && decimals < 17; unit /= 10.0) ++decimals;
  const auto text = [&](double value) {
    return width > 0 && width < ratio / 10 && decimals > 0 ? report::fixed(value, decimals)
                                                           : report::brief(value, 3);
  };
  return lower == lower ? text(ratio) + " (" + text(lower) + " to " + text(upper) + ")"
                        : text(ratio);
}

// The rows of a forest plot, factors headed by their name and begun with their reference.
class Forest {
 public:
  Forest() { points_.kind = SeriesKind::kPoints; }

  void add(const CoxColumn& column, const CoxEstimate& estimate) {
    if (column.factor.empty()) {
      group_.clear();
      row(column.name, estimate);
      return;
    }
    if (group_ != column.factor) {
      group_ = column.factor;
      CoxEstimate reference;
      reference.ratio = 1;
      row(column.reference + ", reference" + counts(column.referenceCount), reference);
    }
    row(column.level + counts(column.count), estimate);
  }

  bool empty() const { return points_.x.empty(); }
  report::Panel panel(const char* ratio) {
    panel_.x.label = std::string(ratio) + " (log scale)";
    panel_.x.scale = report::Scale::kLog;
    panel_.y.scale = report::Scale::kCategory;
    panel_.series.push_back(std::move(points_));
    panel_.references.push_back({true, 1, ""});
    return std::move(panel_);
  }

 private:
  void row(const std::string& category, const CoxEstimate& estimate) {
    const auto [coef, z, pValue, ratio, lower, upper] = estimate;
    points_.x.push_back(ratio);
    points_.y.push_back(static_cast<double>(panel_.y.categories.size()));
    points_.left.push_back(lower);
    points_.right.push_back(upper);
    points_.labels.push_back(ratioInWords(ratio, lower, upper));
    panel_.y.categories.push_back(category);
    panel_.y.categoryGroups.push_back(group_);
  }

  report::Series points_;
  report::Panel panel_;
  std::string group_;
};

// The column's name where the term has one estimated column, else the term's.
std::string titleOf(const CoxAnswer& answer, std::size_t term, bool& several) {
  std::string title;
  std::size_t columns = 0;
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    if (answer.columns[j].term != term) continue;
    if (answer.fit.column[j] != engine::cox::Column::kEstimated) continue;
    title = answer.columns[j].name;
    ++columns;
  }
  if (columns == 1) return title;
  several = true;
  return answer.terms[term];
}

}  // namespace

report::Figure coxForest(const CoxAnswer& answer, const CoxRequest& request) {
  const std::vector<CoxEstimate> estimates = coxEstimates(answer, request);
  Forest forest;
  for (std::size_t j = 0; j < answer.columns.size(); ++j) {
    // An infinite one is an arrow at the axis's end.
    if (answer.fit.column[j] == engine::cox::Column::kAliased) continue;
    forest.add(answer.columns[j], estimates[j]);
  }
  report::Figure figure;
  figure.id = request.cases ? "oddsRatios" : "hazardRatios";
  figure.title = std::string(request.cases ? "Odds" : "Hazard") + " ratios with " +
                 report::confidence(request.alpha) + " limits";
  if (!forest.empty()) figure.panels.push_back(forest.panel(coxRatio(request)));
  return figure;
}

std::string transformedTime(engine::cox::TimeTransform transform) {
  switch (transform) {
    case engine::cox::TimeTransform::kKaplanMeier:
      return "1 - Kaplan-Meier";
    case engine::cox::TimeTransform::kRank:
      return "rank of the time";
    case engine::cox::TimeTransform::kIdentity:
      return "time";
    case engine::cox::TimeTransform::kLog:
      break;
  }
  return "log of the time";
}

std::size_t schoenfeldStep(std::size_t residuals) { return 1 + residuals / kMostPoints; }

report::Panel schoenfeldPanel(std::string title, const std::string& time,
                              const engine::cox::TermResiduals& residuals,
                              std::span<const double> transformed, const Smooth& smooth) {
  report::Panel panel;
  panel.title = std::move(title);
  panel.x.label = time;
  panel.y.label = "coefficient at the time";
  if (!smooth.x.empty()) {
    report::Series band;
    band.kind = SeriesKind::kBand;
    band.x = smooth.x;
    band.lower = smooth.lower;
    band.upper = smooth.upper;
    panel.series.push_back(std::move(band));
    report::Series line;
    line.kind = SeriesKind::kLine;
    line.x = smooth.x;
    line.y = smooth.fit;
    panel.series.push_back(std::move(line));
  }
  report::Series points;
  points.kind = SeriesKind::kPoints;
  for (std::size_t k = 0; k < transformed.size(); k += schoenfeldStep(transformed.size())) {
    points.x.push_back(transformed[k]);
    points.y.push_back(residuals.value[k]);
  }
  panel.series.push_back(std::move(points));
  panel.references.push_back({false, residuals.coefficient, ""});
  return panel;
}

report::Figure coxSchoenfeld(const CoxAnswer& answer, const CoxRequest& request) {
  const CoxProportionality& zph = *answer.zph;
  report::Figure figure;
  figure.id = "schoenfeld";
  figure.title = "Does a coefficient change with time?";
  figure.caption =
      "Scaled Schoenfeld residuals, a natural spline of 4 degrees of freedom with its "
      "pointwise " +
      report::confidence(request.alpha) + " band, and the coefficient";
  const std::size_t step = schoenfeldStep(zph.test.transformed.size());
  if (step > 1) figure.caption += "; one residual of " + std::to_string(step) + " is drawn";
  bool several = false;
  for (std::size_t t = 0; t < zph.test.scaledTerms.size(); ++t) {
    const engine::cox::TermResiduals& residuals = zph.test.scaledTerms[t];
    const std::string title = titleOf(answer, residuals.term, several);
    figure.panels.push_back(schoenfeldPanel(title, transformedTime(*request.zph), residuals,
                                            zph.test.transformed, zph.smooth[t]));
  }
  if (several) {
    figure.caption +=
        "; a term of several coefficients is the one covariate that they make of its columns";
  }
  return figure;
}

}  // namespace survmeth::analysis
