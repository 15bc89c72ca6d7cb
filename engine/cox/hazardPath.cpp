// Cumulative hazards at given covariates, and along covariates that change.
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "engine/cox/baseline.h"
#include "numerics/elementary.h"
#include "numerics/hot.h"

namespace survmeth::engine::cox {
namespace {

constexpr std::size_t kBlock = 256;

// What one root of the covariance adds to a variance: the square of what the stays before have
// gathered and of this one's hazard times its covariates, less its means.
struct Turn {
  double before, risk, own, hazardAt, turnedAt;
};
SURVMETH_HOT void addSquares(const double* hazard, const double* turned, const Turn* turn,
                             std::size_t count, double* square) {
  for (std::size_t k = 0; k < count; ++k) {
    const double away = turn->before + turn->risk * ((hazard[k] - turn->hazardAt) * turn->own -
                                                     (turned[k] - turn->turnedAt));
    square[k] += away * away;
  }
}

// value[k] = before + scale (sum[k] - sumAt).
SURVMETH_HOT void addScaled(const double* sum, double sumAt, double scale, double before,
                            std::size_t count, double* value) {
  for (std::size_t k = 0; k < count; ++k) value[k] = before + scale * (sum[k] - sumAt);
}

SURVMETH_HOT void roots(double scale, double* value, std::size_t count) {
  for (std::size_t k = 0; k < count; ++k) value[k] = scale * std::sqrt(value[k]);
}

}  // namespace

// What a subject has gathered, stay after stay.
class BaselineHazard::Path {
 public:
  explicit Path(const BaselineHazard& baseline)
      : baseline_(baseline), sums_(baseline.sums_), gathered_(baseline.estimated_.size(), 0.0) {}

  // The stay in whose time the next hazards are.
  void begin(const Stay& stay) {
    const auto found = std::lower_bound(sums_.stratum.begin(), sums_.stratum.end(), stay.stratum);
    if (found == sums_.stratum.end() || *found != stay.stratum) {
      throw Refusal(Role::kStrata, Refusal::kNone,
                    "stratum " + std::to_string(stay.stratum) + " has no rows in the fit");
    }
    stratum_ = static_cast<std::size_t>(found - sums_.stratum.begin());
    const std::size_t p = sums_.column.size();
    std::vector<double> away(p);
    double predictor = stay.offset - sums_.shift[stratum_];
    for (std::size_t j = 0; j < p; ++j) {
      away[j] = stay.x[j] - sums_.centre[stratum_ * p + j];
      if (sums_.column[j] != Column::kAliased) predictor += away[j] * sums_.coefficients[j];
    }
    predictor_ = predictor;
    own_.assign(gathered_.size(), 0.0);
    for (std::size_t c = 0; c < own_.size(); ++c) {
      for (std::size_t r = c; r < own_.size(); ++r) {
        own_[c] += baseline_.root_[c][r] * away[baseline_.estimated_[r]];
      }
    }
    begin_ = after(stay.entry);
    end_ = after(stay.exit);
  }

  // Its event times: begin .. end - 1.
  std::size_t first() const { return begin_; }
  std::size_t last() const { return end_; }
  double lastTime() const { return sums_.lastTime[stratum_]; }
  // One past the last event time at or before `time`.
  std::size_t after(double time) const {
    const auto from = sums_.time.begin() + static_cast<std::ptrdiff_t>(sums_.firstTime[stratum_]);
    const auto to = sums_.time.begin() + static_cast<std::ptrdiff_t>(sums_.firstTime[stratum_ + 1]);
    return static_cast<std::size_t>(std::upper_bound(from, to, time) - sums_.time.begin());
  }

  // Just after the event times k .. k + count - 1 of the stay.
  void fill(std::size_t k, std::size_t count, double* hazard, double* error) const {
    // Sums that have units of their own are taken one by one.
    const std::size_t each = sums_.scale.empty() ? kBlock : 1;
    for (std::size_t i = 0; i < count; i += each) {
      fillBlock(k + i, std::min(each, count - i), hazard + i, error + i);
    }
  }

  HazardValue at(std::size_t k) const {
    HazardValue value;
    fill(k, 1, &value.hazard, &value.standardError);
    return value;
  }

  // Takes what the stay has gathered along.
  void end() {
    if (end_ == begin_) return;
    const std::size_t k = end_ - 1;
    const Entry entry = entryAt(k);
    whole_ = at(k);
    for (std::size_t c = 0; c < own_.size(); ++c) {
      const Turn turn = turnOf(c, entry);
      gathered_[c] += entry.risk * ((sums_.hazard[k] - turn.hazardAt) * turn.own -
                                    (baseline_.turned_[c][k] - turn.turnedAt));
    }
    variance_ += entry.risk * entry.risk * (sums_.variance[k] - entry.of(sums_.variance, 2));
    first_ = false;
  }

  // After the stays that have ended.
  HazardValue whole() const { return whole_; }

 private:
  // The risk in the units of the sums at one time, and the sums at entry in those units.
  struct Entry {
    double risk = 0, unit = 1;
    std::size_t time = 0;  // one past the entry's
    bool any = false;      // whether the stratum had events before the stay
    double of(const std::vector<double>& sum, int power = 1) const {
      if (!any) return 0.0;
      return power == 1 ? unit * sum[time - 1] : unit * unit * sum[time - 1];
    }
  };
  Entry entryAt(std::size_t k) const {
    Entry entry{numerics::exp(predictor_), 1.0, begin_, begin_ > sums_.firstTime[stratum_]};
    if (sums_.scale.empty()) return entry;
    entry.risk = numerics::exp(predictor_ - risk::kScaleStep * sums_.scale[k]);
    if (entry.any) {
      entry.unit = numerics::exp(risk::kScaleStep * (sums_.scale[k] - sums_.scale[begin_ - 1]));
    }
    return entry;
  }
  // Without stays before, the risk multiplies the root: its square may be no number.
  Turn turnOf(std::size_t c, const Entry& entry) const {
    return {gathered_[c], first_ ? 1.0 : entry.risk, own_[c], entry.of(sums_.hazard),
            entry.of(baseline_.turned_[c])};
  }
  void fillBlock(std::size_t k, std::size_t count, double* hazard, double* error) const {
    const Entry entry = entryAt(k);
    addScaled(&sums_.hazard[k], entry.of(sums_.hazard), entry.risk, whole_.hazard, count, hazard);
    if (baseline_.infinite_) {
      std::fill_n(error, count, kAbsent);
      return;
    }
    addScaled(&sums_.variance[k], entry.of(sums_.variance, 2),
              first_ ? 1.0 : entry.risk * entry.risk, variance_, count, error);
    for (std::size_t c = 0; c < own_.size(); ++c) {
      const Turn turn = turnOf(c, entry);
      addSquares(&sums_.hazard[k], &baseline_.turned_[c][k], &turn, count, error);
    }
    roots(first_ ? entry.risk : 1.0, error, count);
  }

  const BaselineHazard& baseline_;
  const HazardSums& sums_;
  std::vector<double> own_;  // L' times the covariates less the stratum's centre
  std::size_t stratum_ = 0, begin_ = 0, end_ = 0;
  double predictor_ = 0;
  // Of the stays before.
  bool first_ = true;
  HazardValue whole_;
  double variance_ = 0;
  std::vector<double> gathered_;
};

void BaselineHazard::along(std::span<const Stay> stays,
                           const std::function<bool(const HazardPiece&)>& take) const {
  constexpr std::size_t kMost = 8 * kBlock;
  Path path(*this);
  std::vector<double> hazard(kMost);
  std::vector<double> error(kMost);
  for (std::size_t i = 0; i < stays.size(); ++i) {
    if (i > 0 && stays[i].entry < stays[i - 1].exit) {
      throw Refusal(Role::kSubject, i, "the rows of a subject overlap or are not in order");
    }
    path.begin(stays[i]);
    for (std::size_t k = path.first(); k < path.last(); k += kMost) {
      const std::size_t count = std::min(kMost, path.last() - k);
      path.fill(k, count, hazard.data(), error.data());
      if (!take({{sums_.time.data() + k, count}, {hazard.data(), count}, {error.data(), count}})) {
        return;
      }
    }
    path.end();
  }
}

CumulativeHazard BaselineHazard::along(std::span<const Stay> stays) const {
  CumulativeHazard result;
  const auto add = [](std::span<const double> from, std::vector<double>& to) {
    to.insert(to.end(), from.begin(), from.end());
  };
  along(stays, [&](const HazardPiece& piece) {
    add(piece.time, result.time);
    add(piece.hazard, result.hazard);
    add(piece.standardError, result.standardError);
    return true;
  });
  return result;
}

HazardValue BaselineHazard::over(std::span<const Stay> stays) const {
  Path path(*this);
  for (const Stay& stay : stays) {
    path.begin(stay);
    path.end();
  }
  return path.whole();
}

CumulativeHazard BaselineHazard::at(std::span<const double> x, double offset,
                                    std::uint32_t stratum) const {
  const Stay always{x, offset, stratum};
  return along({&always, 1});
}

std::vector<HazardValue> BaselineHazard::at(std::span<const double> x, double offset,
                                            std::uint32_t stratum,
                                            std::span<const double> times) const {
  Path path(*this);
  path.begin({x, offset, stratum});
  std::vector<HazardValue> values;
  for (const double time : times) {
    if (time > path.lastTime()) {
      values.push_back({kAbsent, kAbsent});
      continue;
    }
    const std::size_t next = path.after(time);
    values.push_back(next == path.first() ? HazardValue{} : path.at(next - 1));
  }
  return values;
}

}  // namespace survmeth::engine::cox
