#include "analysis/cox/predictQuantiles.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/risk/arrangement.h"
#include "numerics/elementary.h"
#include "numerics/hot.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Exponents of a log-log limit: those of the survival times the factor, and over it.
SURVMETH_HOT void ratios(const double* error, const double* hazard, double z, std::size_t count,
                         double* out) {
  for (std::size_t k = 0; k < count; ++k) out[k] = z * error[k] / hazard[k];
}
SURVMETH_HOT void logLogExponents(const double* hazard, const double* factor, std::size_t count,
                                  double* lower, double* upper) {
  for (std::size_t k = 0; k < count; ++k) {
    lower[k] = -hazard[k] * factor[k];
    upper[k] = -hazard[k] / factor[k];
  }
}

// The least of some numbers, eight at once; what is no number does not count.
SURVMETH_HOT void leastOf(const double* value, std::size_t count, double* least) {
  constexpr std::size_t kLanes = 8;
  double low[kLanes];
  std::fill(low, low + kLanes, kInfinity);
  const std::size_t whole = count / kLanes * kLanes;
  for (std::size_t i = 0; i < whole; i += kLanes) {
    for (std::size_t m = 0; m < kLanes; ++m) low[m] = value[i + m] < low[m] ? value[i + m] : low[m];
  }
  for (std::size_t i = whole; i < count; ++i) low[0] = value[i] < low[0] ? value[i] : low[0];
  *least = *std::min_element(low, low + kLanes);
}

}  // namespace

CoxQuantiles::CoxQuantiles(const CoxPredictRequest& request, double z) : request_(request), z_(z) {
  for (const double share : request.quantiles) {
    const double level = 1.0 - share;
    const Search search{boundOf(level + engine::risk::kTieTolerance),
                        boundOf(level - engine::risk::kTieTolerance)};
    searches_.insert(searches_.end(), kCurves, search);
  }
}

bool CoxQuantiles::exponents() const { return request_.survivalLimits != curves::Scale::kPlain; }

CoxQuantiles::Bound CoxQuantiles::boundOf(double level) const {
  if (!exponents()) return {level, level, level};
  // Far above the rounding of a logarithm and an exponential.
  constexpr double kMargin = 1e-9;
  const double exponent = level > 0.0 ? numerics::log(level) : -kInfinity;
  return {level, exponent + kMargin, exponent - kMargin};
}

double CoxQuantiles::valueOf(double value) const {
  return exponents() ? numerics::exp(value) : value;
}

// The next values of the three curves, or their exponents.
void CoxQuantiles::form(const double* hazard, const double* error, std::size_t count) {
  auto& [survival, lower, upper] = values_;
  for (std::size_t k = 0; k < count; ++k) survival[k] = -hazard[k];
  switch (request_.survivalLimits) {
    case curves::Scale::kPlain:
      numerics::expArray({survival, count}, {survival, count});
      for (std::size_t k = 0; k < count; ++k) {
        lower[k] = std::max(0.0, survival[k] * (1 - z_ * error[k]));
        upper[k] = std::min(1.0, survival[k] * (1 + z_ * error[k]));
      }
      break;
    case curves::Scale::kLog:
      for (std::size_t k = 0; k < count; ++k) {
        lower[k] = -(hazard[k] + z_ * error[k]);
        upper[k] = std::min(0.0, z_ * error[k] - hazard[k]);
      }
      break;
    default: {
      double factor[kTimes];
      ratios(error, hazard, z_, count, factor);
      numerics::expArray({factor, count}, {factor, count});
      logLogExponents(hazard, factor, count, lower, upper);
    }
  }
  // A survival of 0 has no limits. Hazards do not fall.
  constexpr double kNearlyNone = 700.0;
  for (std::size_t k = count; k-- > 0 && !(hazard[k] < kNearlyNone);) {
    if (valueOf(survival[k]) == 0.0) lower[k] = upper[k] = curves::kAbsent;
  }
}

void CoxQuantiles::follow(const double* value, const double* time, std::size_t count,
                          Search& search) const {
  const auto reaches = [&](double v) {
    const Bound& b = search.from;
    return !(v > b.never) && (v < b.surely || valueOf(v) <= b.level);
  };
  const auto passes = [&](double v) {
    const Bound& b = search.until;
    return !(v > b.never) && (v < b.surely || valueOf(v) < b.level);
  };
  std::size_t k = 0;
  if (!search.at) {
    while (k < count && !reaches(value[k])) ++k;
    if (k == count) return;
    search.at = true;
    search.time = search.last = time[k];
    if (passes(value[k])) {
      search.done = true;
      return;
    }
  }
  for (; k < count; ++k) {
    if (passes(value[k])) {
      search.time = 0.5 * (search.time + time[k]);
      search.done = true;
      return;
    }
    if (!std::isnan(value[k])) search.last = time[k];
  }
}

void CoxQuantiles::addSome(const double* time, const double* hazard, const double* error,
                           std::size_t count) {
  form(hazard, error, count);
  for (std::size_t c = 0; c < kCurves; ++c) {
    double least = 0.0;
    leastOf(values_[c], count, &least);
    for (std::size_t i = c; i < searches_.size(); i += kCurves) {
      Search& search = searches_[i];
      // A curve that stays above the level is not looked through.
      if (search.done || (!search.at && least > search.from.never)) continue;
      follow(values_[c], time, count, search);
    }
    lastValue_[c] = values_[c][count - 1];
  }
  lastTime_ = time[count - 1];
}

bool CoxQuantiles::add(const engine::cox::HazardPiece& piece) {
  const auto wanted = [&] {
    return std::any_of(searches_.begin(), searches_.end(),
                       [](const Search& search) { return !search.done; });
  };
  for (std::size_t k = 0; k < piece.time.size() && wanted(); k += kTimes) {
    addSome(piece.time.data() + k, piece.hazard.data() + k, piece.standardError.data() + k,
            std::min(kTimes, piece.time.size() - k));
  }
  return wanted();
}

std::vector<curves::Quantile> CoxQuantiles::quantiles(double last) {
  std::vector<curves::Quantile> result;
  for (std::size_t q = 0; q < request_.quantiles.size(); ++q) {
    double crossing[kCurves];
    for (std::size_t c = 0; c < kCurves; ++c) {
      Search& search = searches_[q * kCurves + c];
      // A curve that runs at the level ends there.
      if (search.at && !search.done) {
        if (last > lastTime_ && !std::isnan(lastValue_[c])) search.last = last;
        search.time = 0.5 * (search.time + search.last);
      }
      crossing[c] = search.at ? search.time : curves::kAbsent;
    }
    result.push_back({request_.quantiles[q], crossing[0], crossing[1], crossing[2]});
  }
  return result;
}

}  // namespace survmeth::analysis
