// Predictions of rows and subjects.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

#include "Dist/Dist"
#include "analysis/cox/predict.h"
#include "frame/labels.h"
#include "model/response.h"
#include "numerics/elementary.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
namespace curves = engine::curves;
using engine::Refusal;
using engine::Role;
using text::quote;

// The code that the fit has for each of the new data's strata.
std::vector<std::uint32_t> strataOf(const CoxSaved& fit, const model::ModelData& data) {
  std::vector<std::uint32_t> codes;
  for (std::size_t s = 0; s < data.strataNames.size(); ++s) {
    const auto found = std::find(fit.strata.begin(), fit.strata.end(), data.strataNames[s]);
    if (found == fit.strata.end()) {
      const auto row = std::find(data.stratum.begin(), data.stratum.end(), s);
      throw Refusal(Role::kStrata, static_cast<std::size_t>(row - data.stratum.begin()),
                    "the fit has no stratum " + quote(data.strataNames[s]), Refusal::kNone,
                    "one of " + text::nearestFirst(data.strataNames[s], fit.strata));
    }
    codes.push_back(static_cast<std::uint32_t>(found - fit.strata.begin()));
  }
  return codes;
}

// b'd and sqrt(d' V d) over the columns of `term`, or over all; columns without a coefficient are
// left out.
cox::HazardValue combination(const CoxSaved& fit, std::span<const double> away,
                             std::span<const std::size_t> columns) {
  double value = 0, variance = 0;
  for (const std::size_t j : columns) {
    if (std::isnan(fit.coefficients[j])) continue;
    value += away[j] * fit.coefficients[j];
    for (const std::size_t m : columns) {
      if (!std::isnan(fit.coefficients[m])) variance += away[j] * away[m] * fit.covariance(j, m);
    }
  }
  return {value, std::sqrt(variance)};
}

class Predicting {
 public:
  Predicting(const CoxSaved& fit, const frame::Frame& data, const CoxPredictRequest& request,
             numerics::Progress& progress)
      : fit_(fit),
        data_(data),
        request_(request),
        progress_(progress),
        model_(model::modelData(coxPredictCoding(fit, request), data)),
        codes_(strataOf(fit, model_)),
        z_(InvCDFNormalStd(1 - request.alpha / 2)),
        x_(data.rows * fit.names.size()) {
    const std::size_t p = fit.names.size();
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t i = 0; i < data.rows; ++i) {
        x_[i * p + j] = model_.design.design.columns[j][i];
      }
    }
  }

  CoxPredictions made() {
    takePredictors();
    if (!fit_.hazard) return std::move(made_);
    const cox::BaselineHazard hazard(*fit_.hazard);
    if (request_.expected) takeExpected(hazard);
    if (request_.id.empty()) {
      for (std::size_t i = 0; i < data_.rows; ++i) {
        takeCurve(hazard, {stayOf(i, false)}, i, text::exact(made_.line[i]));
        if (i % 16 == 0) progress_.at(static_cast<double>(i) / static_cast<double>(data_.rows));
      }
    } else {
      takeSubjects(hazard);
    }
    return std::move(made_);
  }

 private:
  std::span<const double> row(std::size_t i) const {
    const std::size_t p = fit_.names.size();
    return {x_.data() + i * p, p};
  }
  std::uint32_t stratum(std::size_t i) const {
    return codes_.empty() ? 0 : codes_[model_.stratum[i]];
  }
  // Of its own time, or always.
  cox::Stay stayOf(std::size_t i, bool inItsTime) const {
    cox::Stay stay{row(i), model_.offset.empty() ? 0 : model_.offset[i], stratum(i)};
    if (!inItsTime) return stay;
    stay.exit = model_.exit.numbers[i];
    if (!model_.entry.numbers.empty()) stay.entry = model_.entry.numbers[i];
    return stay;
  }
  // The last time of which the fit knows anything, in the stratum of a row.
  double lastTime(std::size_t i) const {
    const auto& strata = fit_.hazard->stratum;
    const auto found = std::lower_bound(strata.begin(), strata.end(), stratum(i));
    return found == strata.end()
               ? 0
               : fit_.hazard->lastTime[static_cast<std::size_t>(found - strata.begin())];
  }

  void takePredictors() {
    const engine::Design& design = model_.design.design;
    const std::size_t p = design.size();
    std::vector<std::size_t> all(p);
    std::iota(all.begin(), all.end(), std::size_t{0});
    std::vector<std::vector<std::size_t>> ofTerm(design.termNames.size());
    for (std::size_t j = 0; j < p; ++j) ofTerm[design.term[j]].push_back(j);
    if (request_.terms) {
      for (const std::string& name : design.termNames) made_.terms.push_back({name, {}, {}});
    }
    std::vector<double> away(p);
    for (std::size_t i = 0; i < data_.rows; ++i) {
      for (std::size_t j = 0; j < p; ++j) away[j] = row(i)[j] - reference(i, j);
      const cox::HazardValue whole = combination(fit_, away, all);
      made_.line.push_back(static_cast<double>(data_.lines.line(i)));
      if (!codes_.empty()) made_.stratum.push_back(model_.strataNames[model_.stratum[i]]);
      made_.predictor.push_back((model_.offset.empty() ? 0 : model_.offset[i]) + whole.hazard);
      made_.standardError.push_back(whole.standardError);
      for (std::size_t term = 0; term < made_.terms.size(); ++term) {
        const cox::HazardValue part = combination(fit_, away, ofTerm[term]);
        made_.terms[term].value.push_back(part.hazard);
        made_.terms[term].standardError.push_back(part.standardError);
      }
    }
  }

  double reference(std::size_t i, std::size_t j) const {
    switch (request_.reference) {
      case CoxReference::kMeans:
        return fit_.mean[j];
      case CoxReference::kStrata:
        return fit_.stratumMean[stratum(i)][j];
      case CoxReference::kZero:
        break;
    }
    return 0;
  }

  void takeExpected(const cox::BaselineHazard& hazard) {
    for (std::size_t i = 0; i < data_.rows; ++i) {
      const cox::Stay stay = stayOf(i, true);
      made_.expected.push_back(stay.exit > lastTime(i)
                                   ? cox::HazardValue{kNone, kNone}
                                   : hazard.over(std::span<const cox::Stay>(&stay, 1)));
    }
  }

  void takeSubjects(const cox::BaselineHazard& hazard) {
    const frame::Labels subjects = frame::labelsOf(*data_.labels(request_.id));
    std::vector<std::uint32_t> order(data_.rows);
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
      return std::pair(subjects.codes[a], model_.entry.numbers[a]) <
             std::pair(subjects.codes[b], model_.entry.numbers[b]);
    });
    for (std::size_t from = 0, to = 0; from < order.size(); from = to) {
      std::vector<cox::Stay> stays;
      for (; to < order.size() && subjects.codes[order[to]] == subjects.codes[order[from]]; ++to) {
        const std::size_t i = order[to];
        stays.push_back(stayOf(i, true));
        if (to > from && stays.back().entry < stays[stays.size() - 2].exit) {
          throw Refusal(Role::kSubject, i,
                        "the subject " + quote(subjects.labels[subjects.codes[i]]) +
                            " has two rows at one time: it enters at " +
                            text::exact(stays.back().entry) + " and the row before ends at " +
                            text::exact(stays[stays.size() - 2].exit),
                        Refusal::kNone, "rows of a subject that do not overlap");
        }
        stays.back().exit = std::min(stays.back().exit, lastTime(i));
        stays.back().entry = std::min(stays.back().entry, stays.back().exit);
      }
      takeCurve(hazard, stays, order[from], subjects.labels[subjects.codes[order[from]]]);
      progress_.at(static_cast<double>(to) / static_cast<double>(order.size()));
    }
  }

  // The curve of a row or subject: kept as it is, read at times, its quantiles.
  void takeCurve(const cox::BaselineHazard& hazard, const std::vector<cox::Stay>& stays,
                 std::size_t i, const std::string& name) {
    made_.who.push_back(name);
    const bool kept = request_.curves || made_.curves.size() < kDrawnCurves;
    if (!kept && request_.at.empty() && request_.quantiles.empty()) return;
    const cox::CumulativeHazard whole = hazard.along(stays);
    const double last = request_.id.empty() ? lastTime(i) : stays.back().exit;
    if (!request_.at.empty()) made_.at.push_back(readings(whole, last));
    if (!kept) {
      if (!request_.quantiles.empty()) made_.quantiles.push_back(quantiles(curveOf(whole), last));
      return;
    }
    std::vector<CoxSurvival> points;
    points.reserve(whole.time.size());
    for (std::size_t k = 0; k < whole.time.size(); ++k) {
      points.push_back(survival(whole.time[k], whole.hazard[k], whole.standardError[k]));
    }
    if (!request_.quantiles.empty()) made_.quantiles.push_back(quantiles(curveOf(points), last));
    made_.curves.push_back(
        {name, made_.stratum.empty() ? "" : made_.stratum[i], std::move(points)});
  }

  CoxSurvival survival(double time, double hazard, double error) const {
    CoxSurvival point{time, hazard, error};
    point.survival = numerics::exp(-hazard);
    point.error = point.survival * error;
    const curves::Interval limits =
        curves::survivalLimits(point.survival, z_ * error, request_.limits);
    point.lower = limits.lower;
    point.upper = limits.upper;
    point.hazardLower = 0 - numerics::log(limits.upper);
    point.hazardUpper = 0 - numerics::log(limits.lower);
    return point;
  }

  std::vector<CoxSurvival> readings(const cox::CumulativeHazard& curve, double last) const {
    std::vector<CoxSurvival> values;
    for (const double time : request_.at) {
      if (time > last) {
        values.push_back({.time = time});
        continue;
      }
      const auto next = std::upper_bound(curve.time.begin(), curve.time.end(), time);
      const auto k = static_cast<std::size_t>(next - curve.time.begin());
      values.push_back(k == 0 ? survival(time, 0, 0)
                              : survival(time, curve.hazard[k - 1], curve.standardError[k - 1]));
    }
    return values;
  }

  static curves::Curve curveOf(const std::vector<CoxSurvival>& points) {
    curves::Curve curve;
    for (const CoxSurvival& point : points) {
      curve.time.push_back(point.time);
      curve.survival.push_back(point.survival);
      curve.lower.push_back(point.lower);
      curve.upper.push_back(point.upper);
    }
    return curve;
  }

  // The same of a curve of which nothing else is wanted, in arrays: curves of many rows at very many
  // times. Limits are those of curves::survivalLimits but for their last digits.
  curves::Curve curveOf(const cox::CumulativeHazard& whole) const {
    const std::size_t n = whole.time.size();
    curves::Curve curve;
    curve.time = whole.time;
    std::vector<double> exponent(n);
    const auto exponential = [&](const auto& of, std::vector<double>& to) {
      for (std::size_t k = 0; k < n; ++k) exponent[k] = of(k);
      to.resize(n);
      numerics::expArray(exponent, to);
    };
    const auto hazard = [&whole](std::size_t k) { return whole.hazard[k]; };
    const auto spread = [&](std::size_t k) { return z_ * whole.standardError[k]; };
    exponential([&](std::size_t k) { return -hazard(k); }, curve.survival);
    switch (request_.limits) {
      case curves::Scale::kPlain:
        for (std::size_t k = 0; k < n; ++k) {
          curve.lower.push_back(std::max(0.0, curve.survival[k] * (1 - spread(k))));
          curve.upper.push_back(std::min(1.0, curve.survival[k] * (1 + spread(k))));
        }
        break;
      case curves::Scale::kLog:
        exponential([&](std::size_t k) { return -(hazard(k) + spread(k)); }, curve.lower);
        exponential([&](std::size_t k) { return std::min(0.0, spread(k) - hazard(k)); },
                    curve.upper);
        break;
      default: {
        std::vector<double> factor;
        exponential([&](std::size_t k) { return spread(k) / hazard(k); }, factor);
        exponential([&](std::size_t k) { return -hazard(k) * factor[k]; }, curve.lower);
        exponential([&](std::size_t k) { return -hazard(k) / factor[k]; }, curve.upper);
      }
    }
    for (std::size_t k = 0; k < n; ++k) {
      if (curve.survival[k] == 0) curve.lower[k] = curve.upper[k] = kNone;
    }
    return curve;
  }

  // A curve that runs at the wanted level ends at its last time, event or not.
  std::vector<curves::Quantile> quantiles(curves::Curve curve, double last) const {
    if (!curve.time.empty() && last > curve.time.back()) {
      curve.time.push_back(last);
      for (std::vector<double>* values : {&curve.survival, &curve.lower, &curve.upper}) {
        values->push_back(values->back());
      }
    }
    return curves::quantiles(curve, request_.quantiles);
  }

  const CoxSaved& fit_;
  const frame::Frame& data_;
  const CoxPredictRequest& request_;
  numerics::Progress& progress_;
  model::ModelData model_;
  std::vector<std::uint32_t> codes_;
  double z_;
  std::vector<double> x_;  // rows x p
  CoxPredictions made_;
};

}  // namespace

model::Coding coxPredictCoding(const CoxSaved& fit, const CoxPredictRequest& request) {
  model::Formula formula = fit.coding.formula();
  if (request.needsTimes()) {
    formula.entry = fit.entry;
    formula.exit = fit.exit;
  }
  return {std::move(formula), fit.coding.variables()};
}

CoxPredictions predictCox(const CoxSaved& fit, const frame::Frame& data,
                          const CoxPredictRequest& request, numerics::Progress& progress) {
  return Predicting(fit, data, request, progress).made();
}

}  // namespace survmeth::analysis
