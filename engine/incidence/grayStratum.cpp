#include "engine/incidence/grayStratum.h"

#include <algorithm>

#include "numerics/doubleDouble.h"
#include "numerics/elementary.h"

namespace survmeth::engine::incidence {
namespace {

// One group, at the current time.
struct Group {
  numerics::DoubleDouble remaining;  // weight at risk, where rows have weights
  std::size_t rows = 0;              // at risk
  double atRisk = 0.0;
  double survival = 1.0;   // just before
  double incidence = 0.0;  // of the cause, just before
  double own = 0.0;        // weight of the events of the cause, now
  double competing = 0.0;
  std::size_t failing = 0;  // rows
  double share = 0.0;       // atRisk / survival, 0 with nobody at risk
  double nextSurvival = 1.0;
};

// Gray's estimate of the covariance, carried from time to time: V of the scores themselves, Q of
// score k with the incidence of group q, P of that incidence.
class Covariance {
 public:
  explicit Covariance(std::size_t groups)
      : groups_(groups),
        V_(groups * (groups + 1) / 2),
        Q_(groups * groups),
        P_(groups),
        A_(groups),
        D_(groups),
        part_(groups),
        mixed_(groups) {}

  // Events of the cause: d of them, `total` the sum of the shares, F the pooled incidence before
  // and nextF after them, w the weight of the time.
  void addOwn(const std::vector<Group>& groups, double d, double total, double F, double nextF,
              double w) {
    // With one group left at risk, or no weight, no score can move, and what 1 - F divides by must
    // not make a not-a-number of that nothing.
    std::size_t active = 0;
    for (const Group& group : groups) active += group.atRisk > 0.0 ? 1 : 0;
    const bool moves = active > 1 && w != 0.0;
    const double g = moves ? w * d / (total * (1.0 - F)) : 0.0;

    // A(k, q) is w share(q) ([k = q] - p(k)) with p(k) = share(k) / total, so that the sums over q
    // need one pass. A_ and D_ hold what group q gives V and Q before the factors of k and l.
    double sum = 0.0;
    for (std::size_t q = 0; q < groups_; ++q) {
      const Group& group = groups[q];
      part_[q] = group.share / total;
      A_[q] = D_[q] = 0.0;
      if (!(group.atRisk > 0.0)) continue;
      // How the incidence of the group answers to its events, and their variance.
      const double b = group.nextSurvival == 0.0 ? 1.0 : 1.0 - (1.0 - nextF) / group.nextSurvival;
      const double ties = d > 1.0 ? 1.0 - (d - 1.0) / (group.survival * total - 1.0) : 1.0;
      const double spread = ties * d / (total * group.share);
      const double gh = g * group.share;
      const double wh = w * group.share;
      A_[q] = gh * gh * P_[q] + wh * wh * spread;
      D_[q] = gh * P_[q] + wh * b * spread;
      sum += A_[q];
      P_[q] += b * b * spread;
    }
    if (moves) addToScores(groups, g, sum);
  }

  void addCompeting(const std::vector<Group>& groups, double nextF) {
    for (std::size_t q = 0; q < groups_; ++q) {
      const Group& group = groups[q];
      if (!(group.competing > 0.0 && group.nextSurvival > 0.0)) continue;
      const double b = (1.0 - nextF) / group.nextSurvival;
      const double ties =
          group.competing > 1.0 ? 1.0 - (group.competing - 1.0) / (group.atRisk - 1.0) : 1.0;
      P_[q] += b * b * ties * group.survival * group.survival * group.competing /
               (group.atRisk * group.atRisk);
    }
  }

  void addTo(numerics::SquareMatrix& covariance, const std::vector<std::uint32_t>& groups) const {
    std::size_t entry = 0;
    for (std::size_t k = 0; k < groups_; ++k) {
      for (std::size_t l = 0; l <= k; ++l) covariance(groups[k], groups[l]) += V_[entry++];
    }
  }

 private:
  void addToScores(const std::vector<Group>& groups, double g, double sum) {
    for (std::size_t k = 0; k < groups_; ++k) {
      mixed_[k] = 0.0;
      for (std::size_t q = 0; q < groups_; ++q) mixed_[k] += groups[q].share * Q_[k * groups_ + q];
    }
    const auto answer = [&](std::size_t k, std::size_t l) {
      return g * (groups[k].share * Q_[l * groups_ + k] - part_[k] * mixed_[l]);
    };
    std::size_t entry = 0;
    for (std::size_t k = 0; k < groups_; ++k) {
      const double pk = part_[k];
      for (std::size_t l = 0; l < k; ++l, ++entry) {
        const double pl = part_[l];
        V_[entry] +=
            answer(k, l) + answer(l, k) +
            (pk * pl * (sum - A_[k] - A_[l]) - pl * (1.0 - pk) * A_[k] - pk * (1.0 - pl) * A_[l]);
      }
      V_[entry++] += 2.0 * answer(k, k) + (1.0 - pk) * (1.0 - pk) * A_[k] + pk * pk * (sum - A_[k]);
    }
    for (std::size_t k = 0; k < groups_; ++k) {
      for (std::size_t q = 0; q < groups_; ++q) {
        Q_[k * groups_ + q] += ((k == q ? 1.0 : 0.0) - part_[k]) * D_[q];
      }
    }
  }

  std::size_t groups_;
  std::vector<double> V_;  // row by row of its lower triangle
  std::vector<double> Q_, P_, A_, D_;
  std::vector<double> part_;   // p
  std::vector<double> mixed_;  // sum over q of share(q) Q(k, q)
};

// Local numbers of the groups that have part.
std::vector<std::uint32_t> placesOf(const GrayPart& part, std::size_t groups) {
  std::vector<std::uint32_t> place(groups, static_cast<std::uint32_t>(part.groups.size()));
  for (std::uint32_t k = 0; k < part.groups.size(); ++k) place[part.groups[k]] = k;
  return place;
}

}  // namespace

GrayPart grayPart(const curves::Pooled& pooled, std::span<const std::uint32_t> rows,
                  std::span<const std::uint32_t> cause, std::uint32_t tested) {
  GrayPart part;
  std::uint32_t first = 0;
  for (const std::uint32_t row : rows) {
    if (cause[row] != tested) continue;
    if (!part.anyEvent) first = pooled.exit[row];
    part.last = pooled.exit[row];
    part.anyEvent = true;
  }
  if (!part.anyEvent) return part;
  const std::size_t groups = pooled.groupCount;
  std::vector<std::uint32_t> end(groups, 0);
  std::vector<bool> competing(groups, false);
  bool ofAll = true;
  for (const std::uint32_t row : rows) {
    const std::uint32_t group = pooled.group[row];
    if (pooled.exit[row] < first) {
      competing[group] = competing[group] || cause[row] != 0;
      continue;
    }
    if (end[group] == 0) part.groups.push_back(group);
    end[group] = pooled.exit[row] + 1;
    ofAll = ofAll && pooled.exit[row] == first && cause[row] == tested;
  }
  std::sort(part.groups.begin(), part.groups.end());
  if (part.groups.size() < 2) return part;
  std::size_t moved = 1;
  for (const std::uint32_t group : part.groups) moved += competing[group] ? 1 : 0;
  part.singular = ofAll && moved < part.groups.size();
  std::nth_element(end.begin(), end.begin() + 1, end.end(), std::greater<>());
  part.last = std::min(part.last, end[1] - 1);
  return part;
}

void addGrayStratum(const curves::Pooled& pooled, std::span<const std::uint32_t> rows,
                    std::span<const std::uint32_t> cause, const GrayOptions& options,
                    const GrayPart& part, GraySums& sums) {
  const std::vector<std::uint32_t> place = placesOf(part, pooled.groupCount);
  std::vector<Group> groups(part.groups.size());
  const auto groupOf = [&](std::uint32_t row) -> Group* {
    const std::uint32_t at = place[pooled.group[row]];
    return at < groups.size() ? &groups[at] : nullptr;
  };
  const bool weighted = !pooled.weight.empty();
  for (const std::uint32_t row : rows) {
    if (Group* group = groupOf(row)) {
      if (weighted) group->remaining = group->remaining + pooled.weightOf(row);
      ++group->rows;
    }
  }

  Covariance covariance(groups.size());
  double F = 0.0;
  // After the last time that counts an incidence of 1 would make a negative rho multiply nothing by
  // infinity.
  for (std::size_t begin = 0, end = 0; begin < rows.size(); begin = end) {
    const std::uint32_t code = pooled.exit[rows[begin]];
    if (code > part.last) break;
    bool any = false;
    for (; end < rows.size() && pooled.exit[rows[end]] == code; ++end) {
      any = any || cause[rows[end]] != 0;
    }
    if (any) {
      for (Group& each : groups) {
        each.own = each.competing = 0.0;
        each.failing = 0;
        each.atRisk = !weighted       ? static_cast<double>(each.rows)
                      : each.rows > 0 ? each.remaining.hi
                                      : 0.0;
      }
      double d = 0.0;
      for (std::size_t i = begin; i < end; ++i) {
        Group* group = groupOf(rows[i]);
        if (group == nullptr || cause[rows[i]] == 0) continue;
        const double weight = pooled.weightOf(rows[i]);
        const bool own = cause[rows[i]] == options.cause;
        (own ? group->own : group->competing) += weight;
        d += own ? weight : 0.0;
        ++group->failing;
      }
      double total = 0.0;
      double freeOfCause = 0.0;  // the total of those to whom the cause has not happened
      for (Group& each : groups) {
        each.share = 0.0;
        if (!(each.atRisk > 0.0)) continue;
        each.nextSurvival = each.failing == each.rows ? 0.0
                                                      : (each.atRisk - each.own - each.competing) *
                                                            each.survival / each.atRisk;
        each.share = each.atRisk / each.survival;
        total += each.share;
        freeOfCause += (1.0 - each.incidence) * each.share;
      }
      const double nextF = F + d / total;
      if (d > 0.0) {
        const double w = options.rho == 0.0 ? 1.0 : numerics::pow(1.0 - F, options.rho);
        for (std::size_t k = 0; k < groups.size(); ++k) {
          const Group& each = groups[k];
          if (!(each.atRisk > 0.0)) continue;
          sums.scores[part.groups[k]] +=
              w * (each.own - d * each.share * (1.0 - each.incidence) / freeOfCause);
        }
        covariance.addOwn(groups, d, total, F, nextF, w);
      }
      covariance.addCompeting(groups, nextF);
      for (Group& each : groups) {
        if (!(each.atRisk > 0.0)) continue;
        each.incidence += each.own * each.survival / each.atRisk;
        each.survival = each.nextSurvival;
      }
      F = nextF;
    }
    for (std::size_t i = begin; i < end; ++i) {
      if (Group* group = groupOf(rows[i])) {
        if (weighted) group->remaining = group->remaining - pooled.weightOf(rows[i]);
        --group->rows;
      }
    }
  }
  covariance.addTo(sums.covariance, part.groups);
}

}  // namespace survmeth::engine::incidence
