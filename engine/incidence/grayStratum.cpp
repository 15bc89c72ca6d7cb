#include "engine/incidence/grayStratum.h"

#include <algorithm>
#include <functional>

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
  std::size_t failing = 0;  // rows, now
  double share = 0.0;       // atRisk / survival, 0 with nobody at risk
  double nextSurvival = 1.0;

  void setAtRisk(double weight) {
    atRisk = weight;
    share = weight > 0.0 ? weight / survival : 0.0;
  }
  void leave(const GrayStratum& stratum, std::size_t row) {
    --rows;
    if (stratum.weight.empty()) return setAtRisk(static_cast<double>(rows));
    remaining = remaining - stratum.weight[row];
    setAtRisk(rows > 0 ? remaining.hi : 0.0);
  }
  // What is left of it behind the events of this time.
  void fail() {
    nextSurvival = failing == rows ? 0.0 : (atRisk - own - competing) * survival / atRisk;
  }
  void move() {
    incidence += own * survival / atRisk;
    survival = nextSurvival;
    own = competing = 0.0;
    failing = 0;
  }
};

// Gray's estimate of the covariance, carried from time to time: V of the scores themselves, Q of
// score k with the incidence of group q, P of that incidence. Scores sum to 0, so that those of the
// last group follow from the others'.
class Covariance {
 public:
  explicit Covariance(std::size_t groups)
      : groups_(groups),
        scores_(groups - 1),
        V_(scores_ * (scores_ + 1) / 2),
        Q_(scores_ * groups),
        P_(groups),
        A_(groups),
        D_(groups),
        part_(groups),
        answer_(scores_) {}

  // Events of the cause: d of them, `total` the sum of the shares, F the pooled incidence before
  // and nextF after them, w the weight of the time.
  void addOwn(const std::vector<Group>& groups, double d, double total, double F, double nextF,
              double w) {
    // With one group left at risk, or no weight, no score can move, and what 1 - F divides by must
    // not make a not-a-number of that nothing.
    std::size_t active = 0;
    for (const Group& group : groups) active += group.atRisk > 0.0 ? 1 : 0;
    const bool moves = active > 1 && w != 0.0;
    const double rate = d / total;
    const double g = moves ? w * rate / (1.0 - F) : 0.0;

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
      const double spread = ties * rate / group.share;
      const double gh = g * group.share;
      const double wh = w * group.share;
      A_[q] = gh * gh * P_[q] + wh * wh * spread;
      D_[q] = gh * P_[q] + wh * b * spread;
      sum += A_[q];
      P_[q] += b * b * spread;
    }
    if (moves) addToScores(g * total, sum);
  }

  void addCompeting(const Group& group, std::size_t q, double nextF) {
    if (!(group.competing > 0.0 && group.nextSurvival > 0.0)) return;
    const double b = (1.0 - nextF) / group.nextSurvival;
    const double ties =
        group.competing > 1.0 ? 1.0 - (group.competing - 1.0) / (group.atRisk - 1.0) : 1.0;
    P_[q] += b * b * ties * group.survival * group.survival * group.competing /
             (group.atRisk * group.atRisk);
  }

  void addTo(numerics::SquareMatrix& covariance, const std::vector<std::uint32_t>& groups) const {
    std::vector<double> last(groups_, 0.0);  // row of the last group
    const auto add = [&](std::size_t k, std::size_t l, double value) {
      covariance(groups[k], groups[l]) += value;
    };
    std::size_t entry = 0;
    for (std::size_t k = 0; k < scores_; ++k) {
      for (std::size_t l = 0; l <= k; ++l, ++entry) {
        add(k, l, V_[entry]);
        last[l] -= V_[entry];
        if (l < k) last[k] -= V_[entry];
      }
    }
    for (std::size_t l = 0; l < scores_; ++l) {
      add(scores_, l, last[l]);
      last[scores_] -= last[l];
    }
    add(scores_, scores_, last[scores_]);
  }

 private:
  // The hazard's answer to the incidences is `g`, in units of the pooled share.
  void addToScores(double g, double sum) {
    for (std::size_t k = 0; k < scores_; ++k) {
      const double* of = &Q_[k * groups_];
      double mixed = 0.0;
      for (std::size_t q = 0; q < groups_; ++q) mixed += part_[q] * of[q];
      answer_[k] = mixed;
    }
    std::size_t entry = 0;
    for (std::size_t k = 0; k < scores_; ++k) {
      const double pk = part_[k];
      for (std::size_t l = 0; l < k; ++l, ++entry) {
        const double pl = part_[l];
        V_[entry] +=
            g * (pk * (Q_[l * groups_ + k] - answer_[l]) +
                 pl * (Q_[k * groups_ + l] - answer_[k])) +
            (pk * pl * (sum - A_[k] - A_[l]) - pl * (1.0 - pk) * A_[k] - pk * (1.0 - pl) * A_[l]);
      }
      V_[entry++] += 2.0 * g * pk * (Q_[k * groups_ + k] - answer_[k]) +
                     (1.0 - pk) * (1.0 - pk) * A_[k] + pk * pk * (sum - A_[k]);
    }
    for (std::size_t k = 0; k < scores_; ++k) {
      double* of = &Q_[k * groups_];
      for (std::size_t q = 0; q < groups_; ++q) of[q] -= part_[k] * D_[q];
      of[k] += D_[k];
    }
  }

  std::size_t groups_, scores_;
  std::vector<double> V_;  // row by row of its lower triangle
  std::vector<double> Q_, P_, A_, D_;
  std::vector<double> part_;    // p
  std::vector<double> answer_;  // sum over q of p(q) Q(k, q)
};

}  // namespace

GrayPart grayPart(const GrayStratum& stratum, std::size_t groups, std::uint32_t tested) {
  GrayPart part;
  const std::span<const GrayRow> rows = stratum.rows;
  const auto isTested = [tested](const GrayRow& row) { return row.cause == tested; };
  const auto firstEvent = std::find_if(rows.begin(), rows.end(), isTested);
  if (firstEvent == rows.end()) return part;
  part.anyEvent = true;
  part.last = std::find_if(rows.rbegin(), rows.rend(), isTested)->code;
  const std::uint32_t first = firstEvent->code;
  auto begin = firstEvent;
  while (begin != rows.begin() && (begin - 1)->code == first) --begin;

  std::vector<bool> seen(groups, false);
  std::uint32_t ends = 0;  // groups whose last row has been met
  for (auto row = rows.end(); row != begin && part.groups.size() < groups;) {
    --row;
    if (seen[row->group]) continue;
    seen[row->group] = true;
    part.groups.push_back(row->group);
    if (++ends == 2) part.last = std::min(part.last, row->code);
  }
  if (part.groups.size() < 2) return part;
  std::sort(part.groups.begin(), part.groups.end());

  const bool ofAll = std::all_of(begin, rows.end(), [&](const GrayRow& row) {
    return row.code == first && row.cause == tested;
  });
  if (!ofAll) return part;
  std::vector<bool> competing(groups, false);
  for (auto row = rows.begin(); row != begin; ++row) {
    if (row->cause != 0) competing[row->group] = true;
  }
  std::size_t moved = 1;
  for (const std::uint32_t group : part.groups) moved += competing[group] ? 1 : 0;
  part.singular = moved < part.groups.size();
  return part;
}

void addGrayStratum(const GrayStratum& stratum, const GrayOptions& options, const GrayPart& part,
                    GraySums& sums) {
  std::vector<Group> groups(part.groups.size());
  // None for who leaves before the first event of the cause.
  std::vector<Group*> groupAt(sums.scores.size(), nullptr);
  for (std::size_t k = 0; k < groups.size(); ++k) groupAt[part.groups[k]] = &groups[k];
  const std::span<const GrayRow> rows = stratum.rows;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Group* group = groupAt[rows[i].group];
    if (group == nullptr) continue;
    if (!stratum.weight.empty()) group->remaining = group->remaining + stratum.weight[i];
    ++group->rows;
  }
  for (Group& each : groups) {
    each.setAtRisk(stratum.weight.empty() ? static_cast<double>(each.rows) : each.remaining.hi);
  }

  Covariance covariance(groups.size());
  std::vector<double> scores(groups.size(), 0.0);
  std::vector<Group*> failing;  // those with events of any cause now
  double F = 0.0;
  // After the last time that counts an incidence of 1 would make a negative rho multiply nothing by
  // infinity.
  for (std::size_t begin = 0, end = 0; begin < rows.size(); begin = end) {
    const std::uint32_t code = rows[begin].code;
    if (code > part.last) break;
    failing.clear();
    double d = 0.0;
    for (; end < rows.size() && rows[end].code == code; ++end) {
      Group* group = groupAt[rows[end].group];
      if (group == nullptr || rows[end].cause == 0) continue;
      const double weight = stratum.weightOf(end);
      const bool own = rows[end].cause == options.cause;
      (own ? group->own : group->competing) += weight;
      d += own ? weight : 0.0;
      if (group->failing++ == 0) failing.push_back(group);
    }
    if (!failing.empty()) {
      for (Group* each : failing) each->fail();
      double nextF = F;
      if (d > 0.0) {
        double total = 0.0;
        double freeOfCause = 0.0;  // the total of those to whom the cause has not happened
        for (const Group& each : groups) {
          total += each.share;
          freeOfCause += (1.0 - each.incidence) * each.share;
        }
        nextF = F + d / total;
        const double w = options.rho == 0.0 ? 1.0 : numerics::pow(1.0 - F, options.rho);
        for (std::size_t k = 0; k < groups.size(); ++k) {
          const Group& each = groups[k];
          scores[k] += w * (each.own - d * each.share * (1.0 - each.incidence) / freeOfCause);
        }
        covariance.addOwn(groups, d, total, F, nextF, w);
      }
      for (Group* each : failing) {
        covariance.addCompeting(*each, static_cast<std::size_t>(each - groups.data()), nextF);
        each->move();
      }
      F = nextF;
    }
    for (std::size_t i = begin; i < end; ++i) {
      if (Group* group = groupAt[rows[i].group]) group->leave(stratum, i);
    }
  }
  for (std::size_t k = 0; k < groups.size(); ++k) sums.scores[part.groups[k]] += scores[k];
  covariance.addTo(sums.covariance, part.groups);
}

}  // namespace survmeth::engine::incidence
