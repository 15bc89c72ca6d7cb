// Sums over rows instead of a table of groups by times.
#include "analysis/manyGroups.h"

#include <algorithm>
#include <cmath>

namespace survmeth {
namespace {

constexpr std::size_t kLargestMatrix = std::size_t{1} << 27;  // 1 GB of doubles

// Sums of all the terms before each place, and of all of them.
template <typename Term>
std::vector<double> sumsBefore(std::size_t count, Term term) {
  std::vector<double> sums(count + 1, 0.0);
  for (std::size_t i = 0; i < count; ++i) sums[i + 1] = sums[i] + term(i);
  return sums;
}

// The rows below the diagonal one after the other: row j has j cells.
std::size_t rowAt(std::size_t j) { return j * (j - 1) / 2; }

// score' V^-1 score over all groups but one, where -links are V's cells off the diagonal. Groups
// are eliminated one by one; those that remain take over the links between them that led through
// the one that goes.
double quadraticForm(std::vector<double> links, std::vector<double> score) {
  double form = 0;
  for (std::size_t k = score.size() - 1; k > 0; --k) {
    const double* gone = &links[rowAt(k)];
    double variance = 0;
    for (std::size_t j = 0; j < k; ++j) variance += gone[j];
    if (!(variance > 0)) return kNone;
    form += score[k] * (score[k] / variance);
    for (std::size_t j = 0; j < k; ++j) {
      const double share = gone[j] / variance;
      score[j] += share * score[k];
      double* kept = j > 0 ? &links[rowAt(j)] : nullptr;
      for (std::size_t l = 0; l < j; ++l) kept[l] += share * gone[l];
    }
  }
  return std::isfinite(form) ? form : kNone;
}

}  // namespace

ManyGroups::ManyGroups(const std::vector<const SurvivalCurve*>& curves,
                       const std::vector<double>& times)
    : starts_{0}, atRisk_(times.size(), 0.0), events_(times.size(), 0.0) {
  // Everybody is at risk together at an event time or not at all any more: who is there last.
  std::size_t shortest = times.size();
  for (const SurvivalCurve* curve : curves) {
    for (std::size_t r = 0; r < curve->time.size(); ++r) {
      const auto after = std::upper_bound(times.begin(), times.end(), curve->time[r]);
      const Row row{curve->eventsAt[r] + curve->censoredAt[r], curve->eventsAt[r],
                    static_cast<std::size_t>(after - times.begin())};
      rows_.push_back(row);
      if (row.until == 0) continue;
      atRisk_[row.until - 1] += row.leaving;
      events_[row.until - 1] += row.events;
    }
    starts_.push_back(rows_.size());
    shortest = std::min(shortest, rows_.back().until);
    observed_.push_back(curve->events);
  }
  for (std::size_t i = times.size(); i-- > 1;) atRisk_[i - 1] += atRisk_[i];
  bool survived = false;
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (!(events_[i] < atRisk_[i])) continue;
    if (atRisk_[i] <= 1) {
      fractionalRisk_ = true;
    } else if (!survived) {
      survived = true;
      linked_ = shortest > i;
    }
  }
  const std::vector<double> hazard =
      sumsBefore(times.size(), [this](std::size_t i) { return events_[i] / atRisk_[i]; });
  for (std::size_t j = 0; j < groups(); ++j) {
    double sum = 0;
    for (std::size_t r = starts_[j]; r < starts_[j + 1]; ++r) {
      sum += rows_[r].leaving * hazard[rows_[r].until];
    }
    expected_.push_back(sum);
  }
}

bool ManyGroups::fits() const { return groups() * (groups() - 1) / 2 <= kLargestMatrix; }

std::size_t ManyGroups::elements() const {
  return 3 * rows_.size() + starts_.size() + atRisk_.size() + events_.size() + observed_.size() +
         expected_.size();
}

double ManyGroups::weightAt(CurveTest test, std::size_t i) const {
  if (test == CurveTest::kLogRank) return 1;
  return test == CurveTest::kGehanBreslow ? atRisk_[i] : std::sqrt(atRisk_[i]);
}

std::vector<double> ManyGroups::scores(CurveTest test) const {
  const std::vector<double> hazard = sumsBefore(atRisk_.size(), [this, test](std::size_t i) {
    return weightAt(test, i) * events_[i] / atRisk_[i];
  });
  std::vector<double> result(groups(), 0.0);
  for (std::size_t j = 0; j < groups(); ++j) {
    for (std::size_t r = starts_[j]; r < starts_[j + 1]; ++r) {
      const Row& row = rows_[r];
      if (row.until == 0) continue;
      result[j] += weightAt(test, row.until - 1) * row.events - row.leaving * hazard[row.until];
    }
  }
  return result;
}

std::vector<double> ManyGroups::covariances(CurveTest test) const {
  const std::size_t times = atRisk_.size();
  std::vector<double> common(times, 0.0);
  for (std::size_t i = 0; i < times; ++i) {
    const double n = atRisk_[i], d = events_[i];
    if (!(d < n) || n <= 1) continue;
    const double relative = weightAt(test, i) / n;
    common[i] = relative * relative * d * (n - d) / (n - 1);
  }
  std::vector<double> result(groups() * (groups() - 1) / 2, 0.0);
  for (std::size_t l = 1; l < groups(); ++l) {
    double atRisk = 0;
    for (std::size_t r = starts_[l]; r < starts_[l + 1]; ++r) atRisk += rows_[r].leaving;
    std::size_t row = starts_[l];
    const std::vector<double> sums = sumsBefore(times, [&](std::size_t i) {
      while (row < starts_[l + 1] && rows_[row].until <= i) atRisk -= rows_[row++].leaving;
      return common[i] * atRisk;
    });
    for (std::size_t j = 0; j < l; ++j) {
      double sum = 0;
      for (std::size_t r = starts_[j]; r < starts_[j + 1]; ++r) {
        sum += rows_[r].leaving * sums[rows_[r].until];
      }
      result[rowAt(l) + j] = sum;
    }
  }
  return result;
}

double ManyGroups::chiSquare(CurveTest test) const {
  return quadraticForm(covariances(test), scores(test));
}

}  // namespace survmeth
