#include "engine/incidence/curve.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/incidence/robust.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::incidence {
namespace {

using numerics::RunningSum;

// d (n - d) / ((n - 1) n^2): the hypergeometric correction of ties, none for up to one event.
double tied(double d, double n) {
  const double share = d / n / n;
  return d > 1.0 ? share * ((n - d) / (n - 1.0)) : share;
}

std::vector<double> part(const std::vector<double>& column, const curves::Sample& sample,
                         std::size_t group) {
  return {column.begin() + static_cast<std::ptrdiff_t>(sample.first[group]),
          column.begin() + static_cast<std::ptrdiff_t>(sample.first[group + 1])};
}

// The curve of one group without its causes.
Curve frameOf(const curves::Sample& sample, std::size_t group) {
  Curve curve;
  curve.rows = sample.firstRow[group + 1] - sample.firstRow[group];
  curve.time = part(sample.time, sample, group);
  curve.atRisk = part(sample.atRisk, sample, group);
  curve.censoredAt = part(sample.censored, sample, group);
  curve.survival.resize(curve.time.size());
  RunningSum events;
  RunningSum censored;
  double survival = 1.0;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const std::size_t k = sample.first[group] + i;
    events.add(sample.events[k]);
    censored.add(sample.censored[k]);
    if (sample.events[k] > 0.0) survival *= sample.surviving[k] / sample.atRisk[k];
    curve.survival[i] = survival;
  }
  curve.censored = censored.value();
  curve.n = events.value() + curve.censored;
  return curve;
}

// Incidence and hazard of one cause, the model-based variances with them. The error of the
// incidence F and the relative one of the survival S, -L, go from time to time together:
//
//   dF' = dF + S (own - (d / n) L),   L' = L + any / (1 - e / n),
//
// so that no sum over the past is formed anew and what cancels is of the size of the result.
class CauseSums {
 public:
  CauseSums(const Causes& data, std::size_t group, std::size_t cause, Variance variance)
      : data_(data), cause_(cause), variance_(variance) {
    curve_.eventsAt = part(data.events[cause], data.sample, group);
    for (auto* column :
         {&curve_.incidence, &curve_.variance, &curve_.hazard, &curve_.hazardVariance}) {
      column->resize(curve_.eventsAt.size());
    }
  }

  // Somebody has an event at time i of the group, k of the sample. `stay` is the share of those at
  // risk who have none, `alone` what L gains where none of the events is of the cause.
  void addEvents(std::size_t i, std::size_t k, double survival, double stay, double alone) {
    const double d = curve_.eventsAt[i];
    if (!(d > 0.0)) {
      varL_.add(alone);
      return;
    }
    const double n = data_.sample.atRisk[k];
    const double share = d / n;
    events_.add(d);
    incidence_.add(survival * share);
    hazard_.add(share);
    hazardVariance_.add(share / n);
    if (variance_ == Variance::kRobust) return;
    const Spread spread = spreadAt(data_, cause_, k, variance_);
    const double step = survival * share;
    varF_ = std::max(varF_ + survival * survival * spread.own - 2.0 * step * covFL_ +
                         step * step * varL_.value(),
                     0.0);
    if (!(stay > 0.0)) return;
    covFL_ += survival * (spread.covariance / stay) - step * varL_.value();
    varL_.add(spread.any / stay / stay);
  }

  void keep(std::size_t i) {
    curve_.incidence[i] = incidence_.value();
    curve_.variance[i] = varF_;
    curve_.hazard[i] = hazard_.value();
    curve_.hazardVariance[i] = hazardVariance_.value();
  }

  CauseCurve curve() {
    curve_.events = events_.value();
    return std::move(curve_);
  }

 private:
  const Causes& data_;
  std::size_t cause_;
  Variance variance_;
  CauseCurve curve_;
  RunningSum events_, incidence_, hazard_, hazardVariance_, varL_;
  double varF_ = 0.0;
  double covFL_ = 0.0;
};

// What L gains by e events of other causes.
double aloneAt(double e, double n, double stay, Variance variance) {
  if (variance == Variance::kRobust || !(stay > 0.0)) return 0.0;
  return (variance == Variance::kDelta ? e / n * stay / n : tied(e, n)) / stay / stay;
}

std::vector<CauseCurve> causesOf(const Causes& data, std::size_t group, const Curve& frame,
                                 Variance variance) {
  const curves::Sample& sample = data.sample;
  std::vector<CauseSums> sums;
  sums.reserve(data.causes());
  for (std::size_t c = 0; c < data.causes(); ++c) sums.emplace_back(data, group, c, variance);
  double survival = 1.0;
  for (std::size_t i = 0; i < frame.time.size(); ++i) {
    const std::size_t k = sample.first[group] + i;
    const double e = sample.events[k];
    if (e > 0.0) {
      const double n = sample.atRisk[k];
      const double stay = sample.surviving[k] / n;
      const double alone = aloneAt(e, n, stay, variance);
      for (CauseSums& each : sums) each.addEvents(i, k, survival, stay, alone);
      survival = frame.survival[i];
    }
    for (CauseSums& each : sums) each.keep(i);
  }
  std::vector<CauseCurve> causes;
  for (CauseSums& each : sums) causes.push_back(each.curve());
  return causes;
}

}  // namespace

double CauseCurve::standardError(std::size_t i) const { return std::sqrt(variance[i]); }

Variance varianceFor(const Rows& rows, Variance asked) {
  const bool sampling = !rows.weight.empty() && rows.weightKind == WeightKind::kSampling;
  return sampling || !rows.cluster.empty() ? Variance::kRobust : asked;
}

Spread spreadAt(const Causes& data, std::size_t cause, std::size_t time, Variance variance) {
  const double n = data.sample.atRisk[time];
  const double e = data.sample.events[time];
  const double stay = data.sample.surviving[time];
  const double d = data.events[cause][time];
  if (!(e > 0.0)) return {};
  if (variance == Variance::kDelta) {
    return {d / n * ((n - d) / n) / n, d / n * (stay / n) / n, e / n * (stay / n) / n};
  }
  const double own = d > 0.0 ? tied(d, n) : 0.0;
  const double others = e - d;
  return {own, own, others > 0.0 ? own + tied(others, n) : own};
}

std::vector<Curve> estimate(const Causes& data, const Rows& rows, Variance asked) {
  const Variance variance = varianceFor(rows, asked);
  std::vector<Curve> result;
  Robust robust(data, rows);
  for (std::size_t g = 0; g < data.sample.groups(); ++g) {
    Curve curve = frameOf(data.sample, g);
    curve.causes = causesOf(data, g, curve, variance);
    for (std::size_t c = 0; variance == Variance::kRobust && c < data.causes(); ++c) {
      robust.addVariances(g, c, curve);
    }
    result.push_back(std::move(curve));
  }
  return result;
}

curves::Interval limits(double incidence, double standardError, double z, curves::Scale scale) {
  return curves::survivalLimits(incidence, z * standardError / incidence, scale);
}

std::vector<double> kaplanMeierComplement(const Curve& curve, std::size_t cause) {
  const CauseCurve& of = curve.causes[cause];
  std::vector<double> result;
  double survival = 1.0;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    if (of.eventsAt[i] > 0.0) survival *= (curve.atRisk[i] - of.eventsAt[i]) / curve.atRisk[i];
    result.push_back(1.0 - survival);
  }
  return result;
}

std::size_t timesUntil(const Curve& curve, double time) {
  return static_cast<std::size_t>(std::upper_bound(curve.time.begin(), curve.time.end(), time) -
                                  curve.time.begin());
}

std::vector<Reading> readings(const Curve& curve, std::size_t cause, std::span<const double> time,
                              double z, curves::Scale scale) {
  const CauseCurve& of = curve.causes[cause];
  std::vector<Reading> result;
  for (const double t : time) {
    Reading& reading = result.emplace_back();
    reading.time = t;
    if (curve.time.empty()) continue;
    const std::size_t after = timesUntil(curve, t);
    if (after == 0) {
      reading.incidence = reading.standardError = 0.0;
      continue;
    }
    const std::size_t at = after - 1;
    if (t > curve.time[at] && after == curve.time.size() && curve.survival[at] > 0.0) continue;
    reading.incidence = of.incidence[at];
    reading.standardError = of.standardError(at);
    const curves::Interval interval = limits(reading.incidence, reading.standardError, z, scale);
    reading.lower = interval.lower;
    reading.upper = interval.upper;
  }
  return result;
}

curves::Contrast difference(const Reading& first, const Reading& second, double z) {
  return curves::difference(second.incidence - first.incidence,
                            std::sqrt(first.standardError * first.standardError +
                                      second.standardError * second.standardError),
                            z);
}

}  // namespace survmeth::engine::incidence
