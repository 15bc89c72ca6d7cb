// Predictions of rows and subjects.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

#include "analysis/cox/predict.h"
#include "analysis/cox/predictCurves.h"
#include "analysis/cox/predictQuantiles.h"
#include "frame/date.h"
#include "frame/labels.h"
#include "model/response.h"
#include "numerics/threads.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
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

constexpr std::size_t kBatch = 256;  // curves between two looks at the progress

// A row, or the rows of a subject, of which there is one curve.
struct Subject {
  std::string name;
  std::size_t firstRow = 0;
  std::vector<cox::Stay> stays;
  double last = 0;  // after that nothing is known
};

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
        curves_(request),
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
    takeCurves(hazard, request_.subject.empty() ? rowsAsSubjects() : subjects());
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
    if (request_.parts) {
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
    switch (request_.centre) {
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

  std::vector<Subject> rowsAsSubjects() const {
    std::vector<Subject> rows;
    for (std::size_t i = 0; i < data_.rows; ++i) {
      rows.push_back({text::exact(made_.line[i]), i, {stayOf(i, false)}, lastTime(i)});
    }
    return rows;
  }

  std::vector<Subject> subjects() const {
    std::vector<Subject> made;
    const frame::Labels subjects = frame::labelsOf(*data_.labels(request_.subject));
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
                            frame::cellText(stays.back().entry, model_.entry.isDate) +
                            " and the row before ends at " +
                            frame::cellText(stays[stays.size() - 2].exit, model_.exit.isDate),
                        Refusal::kNone, "rows of a subject that do not overlap");
        }
        stays.back().exit = std::min(stays.back().exit, lastTime(i));
        stays.back().entry = std::min(stays.back().entry, stays.back().exit);
      }
      const double last = stays.back().exit;
      made.push_back(
          {subjects.labels[subjects.codes[order[from]]], order[from], std::move(stays), last});
    }
    return made;
  }

  // Reads the curves of all subjects.
  void takeCurves(const cox::BaselineHazard& hazard, const std::vector<Subject>& subjects) {
    const std::size_t count = subjects.size();
    const std::size_t drawn = request_.drawn ? std::min(count, kDrawnCurves) : 0;
    const std::size_t kept = request_.curves ? count : drawn;
    for (const Subject& each : subjects) made_.who.push_back(each.name);
    if (!request_.at.empty()) made_.at.resize(count);
    if (!request_.quantiles.empty()) made_.quantiles.resize(count);
    made_.curves.resize(kept);
    const bool read = !request_.at.empty() || !request_.quantiles.empty();
    const std::size_t wanted = read ? count : kept;
    for (std::size_t begin = 0; begin < wanted; begin += kBatch) {
      progress_.at(static_cast<double>(begin) / static_cast<double>(wanted));
      numerics::inParallel(std::min(kBatch, wanted - begin), [&](std::size_t i) {
        takeCurve(hazard, subjects[begin + i], begin + i);
      });
    }
  }

  // The curve of a row or subject: kept as it is, read at times, its quantiles.
  void takeCurve(const cox::BaselineHazard& hazard, const Subject& subject, std::size_t place) {
    const bool kept = place < made_.curves.size();
    if (!kept && request_.quantiles.empty() && request_.subject.empty()) {
      const cox::Stay& always = subject.stays.front();
      made_.at[place] =
          curves_.readings(hazard.at(always.x, always.offset, always.stratum, request_.at));
      return;
    }
    CoxQuantiles quantiles(request_, curves_.z());
    if (!kept && request_.at.empty()) {
      // No further than the quantiles want it.
      hazard.along(subject.stays,
                   [&](const cox::HazardPiece& piece) { return quantiles.add(piece); });
      made_.quantiles[place] = quantiles.quantiles(subject.last);
      return;
    }
    const cox::CumulativeHazard whole = hazard.along(subject.stays);
    if (!request_.at.empty()) made_.at[place] = curves_.readings(whole, subject.last);
    if (!request_.quantiles.empty()) {
      quantiles.add({whole.time, whole.hazard, whole.standardError});
      made_.quantiles[place] = quantiles.quantiles(subject.last);
    }
    if (!kept) return;
    made_.curves[place] = {subject.name,
                           made_.stratum.empty() ? "" : made_.stratum[subject.firstRow],
                           curves_.points(whole)};
  }

  const CoxSaved& fit_;
  const frame::Frame& data_;
  const CoxPredictRequest& request_;
  numerics::Progress& progress_;
  model::ModelData model_;
  std::vector<std::uint32_t> codes_;
  CoxCurves curves_;
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
