// Gray's K-sample test for the cumulative incidence of one event type under competing risks.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/cuminc/cuminc.h"

namespace numerics = survmeth::numerics;

namespace {

enum Cause { kCensored = 0, kInterest = 1, kCompeting = 2 };

// One group, at the current time.
struct Group {
  double atRisk = 0.0;
  double survival = 1.0;   // just before
  double incidence = 0.0;  // of the event of interest, just before
  double interest = 0.0;   // events now
  double competing = 0.0;
  double weight = 0.0;        // h = atRisk / survival, 0 with nobody at risk
  double nextSurvival = 1.0;  // survival after this time
};

// The groups that have rows, in order of their codes; the first `scored` of them have a score.
// A group without rows takes part in nothing, however many the caller says there are.
class GroupCodes {
 public:
  GroupCodes(const std::vector<double>& codes, int K) {
    // A code that its slot holds already was taken: with few groups hardly any are left to sort.
    std::array<double, 64> seen{};
    for (const double code : codes) {
      if (!(code >= 1.0 && code <= K && code == std::floor(code))) continue;
      double& slot = seen[static_cast<std::size_t>(code) % seen.size()];
      if (slot == code) continue;
      slot = code;
      present_.push_back(code);
    }
    std::sort(present_.begin(), present_.end());
    present_.erase(std::unique(present_.begin(), present_.end()), present_.end());
  }

  std::size_t size() const { return present_.size(); }
  std::size_t below(double code) const {
    return static_cast<std::size_t>(std::lower_bound(present_.begin(), present_.end(), code) -
                                    present_.begin());
  }
  // The group's place, or size() for a code that is none of 1..K.
  std::size_t placeOf(double code) const {
    if (std::isnan(code)) return size();
    const std::size_t place = below(code);
    return place < size() && present_[place] == code ? place : size();
  }

 private:
  std::vector<double> present_;
};

// Up to this many groups the covariance takes in one group after the other, in the order of its
// recursion: where scores depend on each other linearly, as without rows in group K, its rank
// shows in the last bits only, and so does the statistic that callers know from there.
constexpr std::size_t kFewGroups = 8;

// Gray's estimate of the covariance of the scores, carried from time to time: V of the scores
// themselves, Q of score k with the incidence of group q, P of that incidence.
class ScoreCovariance {
 public:
  ScoreCovariance(std::size_t groups, std::size_t scored)
      : groups_(groups),
        scored_(scored),
        V_(scored * (scored + 1) / 2),
        Q_(scored * groups),
        P_(groups),
        A_(std::max(scored, groups)),
        D_(std::max(scored, groups)),
        part_(groups),
        mixed_(scored) {}

  // Takes in one time: nd1 events of interest, T1 the sum of h, F the pooled incidence before and
  // nextF after it, w the weight of the time.
  void add(const std::vector<Group>& groups, double nd1, double T1, double F, double nextF,
           double w) {
    if (nd1 > 0.0) {
      const Time time{nd1, T1, F, nextF, w};
      if (groups_ <= kFewGroups) {
        addInOrder(groups, time);
      } else {
        addTogether(groups, time);
      }
    }
    for (std::size_t q = 0; q < groups_; ++q) {
      const Group& group = groups[q];
      if (!(group.atRisk > 0.0 && group.competing > 0.0 && group.nextSurvival > 0.0)) continue;
      const double b = (1.0 - nextF) / group.nextSurvival;
      const double ties =
          group.competing > 1.0 ? 1.0 - (group.competing - 1.0) / (group.atRisk - 1.0) : 1.0;
      P_[q] += b * b * ties * group.survival * group.survival * group.competing /
               (group.atRisk * group.atRisk);
    }
  }

  // The (K - 1) x (K - 1) covariance.
  void unpack(matrix* covariance) const {
    std::size_t entry = 0;
    for (std::size_t k = 1; k <= scored_; ++k) {
      for (std::size_t l = 1; l <= k; ++l, ++entry) {
        covariance->vbset(static_cast<int>(k), static_cast<int>(l), V_[entry]);
        covariance->vbset(static_cast<int>(l), static_cast<int>(k), V_[entry]);
      }
    }
  }

 private:
  struct Time {
    double nd1;
    double T1;
    double F;
    double nextF;
    double w;

    // How the incidence of a group answers to its events, and their variance.
    double b(const Group& group) const {
      return group.nextSurvival == 0.0 ? 1.0 : 1.0 - (1.0 - nextF) / group.nextSurvival;
    }
    double d(const Group& group) const {
      const double ties = nd1 > 1.0 ? 1.0 - (nd1 - 1.0) / (group.survival * T1 - 1.0) : 1.0;
      return ties * nd1 / (T1 * group.weight);
    }
  };

  double& Q(std::size_t k, std::size_t q) { return Q_[k * groups_ + q]; }

  void addInOrder(const std::vector<Group>& groups, const Time& time) {
    for (std::size_t q = 0; q < groups_; ++q) {
      const Group& group = groups[q];
      if (!(group.atRisk > 0.0)) continue;
      for (std::size_t k = 0; k < scored_; ++k) {
        A_[k] = groups[k].atRisk > 0.0
                    ? time.w * ((k == q ? 1.0 : 0.0) - groups[k].weight / time.T1) * group.weight
                    : 0.0;
        D_[k] = A_[k] == 0.0 ? 0.0 : A_[k] * time.nd1 / (time.T1 * (1.0 - time.F));
      }
      const double b = time.b(group);
      const double d = time.d(group);
      std::size_t entry = 0;
      for (std::size_t k = 0; k < scored_; ++k) {
        for (std::size_t l = 0; l <= k; ++l, ++entry) {
          V_[entry] += D_[k] * Q(l, q) + D_[l] * Q(k, q) + D_[k] * D_[l] * P_[q];
          V_[entry] += A_[k] * A_[l] * d;
        }
      }
      for (std::size_t k = 0; k < scored_; ++k) {
        Q(k, q) += D_[k] * P_[q];
        Q(k, q) += A_[k] * b * d;
      }
      P_[q] += b * b * d;
    }
  }

  // The same for all groups at once. A(k, q) is w h(q) ([k = q] - p(k)) with p(k) = h(k) / T1, so
  // that the sums over q need one pass and a time costs O(K^2), not O(K^3).
  void addTogether(const std::vector<Group>& groups, const Time& time) {
    // With one group left at risk, or no weight, no score can move, and what 1 - F divides by
    // must not make a not-a-number of that nothing.
    std::size_t active = 0;
    for (const Group& group : groups) active += group.atRisk > 0.0 ? 1 : 0;
    const bool moves = active > 1 && time.w != 0.0;
    const double g = moves ? time.w * time.nd1 / (time.T1 * (1.0 - time.F)) : 0.0;

    // A_ and D_ hold what group q gives V and Q before the factors of k and l.
    double total = 0.0;
    for (std::size_t q = 0; q < groups_; ++q) {
      const Group& group = groups[q];
      part_[q] = group.weight / time.T1;
      A_[q] = D_[q] = 0.0;
      if (!(group.atRisk > 0.0)) continue;
      const double b = time.b(group);
      const double d = time.d(group);
      const double gh = g * group.weight;
      const double wh = time.w * group.weight;
      A_[q] = gh * gh * P_[q] + wh * wh * d;
      D_[q] = gh * P_[q] + wh * b * d;
      total += A_[q];
      P_[q] += b * b * d;
    }
    if (!moves) return;

    for (std::size_t k = 0; k < scored_; ++k) {
      mixed_[k] = 0.0;
      for (std::size_t q = 0; q < groups_; ++q) mixed_[k] += groups[q].weight * Q(k, q);
    }
    std::size_t entry = 0;
    for (std::size_t k = 0; k < scored_; ++k) {
      const double pk = part_[k];
      for (std::size_t l = 0; l < k; ++l, ++entry) {
        const double pl = part_[l];
        V_[entry] +=
            g * (groups[k].weight * Q(l, k) - pk * mixed_[l]) +
            g * (groups[l].weight * Q(k, l) - pl * mixed_[k]) +
            (pk * pl * (total - A_[k] - A_[l]) - pl * (1.0 - pk) * A_[k] - pk * (1.0 - pl) * A_[l]);
      }
      V_[entry++] += 2.0 * g * (groups[k].weight * Q(k, k) - pk * mixed_[k]) +
                     (1.0 - pk) * (1.0 - pk) * A_[k] + pk * pk * (total - A_[k]);
    }
    for (std::size_t k = 0; k < scored_; ++k) {
      for (std::size_t q = 0; q < groups_; ++q) {
        Q(k, q) += ((k == q ? 1.0 : 0.0) - part_[k]) * D_[q];
      }
    }
  }

  std::size_t groups_;
  std::size_t scored_;
  std::vector<double> V_;  // row by row of its lower triangle
  std::vector<double> Q_;
  std::vector<double> P_;
  std::vector<double> A_;
  std::vector<double> D_;
  std::vector<double> part_;   // p
  std::vector<double> mixed_;  // sum over q of h(q) Q(k, q)
};

}  // namespace

void GrayTest(int n, int K, matrix* time, matrix* status, matrix* group, int eventCode, double rho,
              double* statistic, double* df, double* pValue) {
  SortQ(status, n, 1, 1, n, group, time, 1, 0, kTrue);
  SortQ(status, n, 1, 1, n, time, group, 1, 0, kTrue);

  // Rows past the group column have no group and count nowhere.
  const int rows = std::min(n, group->count());
  std::vector<double> codes;
  for (int i = 1; i <= rows; ++i) codes.push_back(group->vbget(i, 1));
  const GroupCodes present(codes, K);
  const std::size_t scored = present.below(K);
  // A score without rows has no variance: V is singular, and there is no need to form it.
  const bool singular = static_cast<double>(scored) < static_cast<double>(K) - 1.0;

  std::vector<Group> groups(present.size());
  std::vector<std::size_t> places;
  for (const double code : codes) {
    places.push_back(present.placeOf(code));
    if (places.back() < groups.size()) groups[places.back()].atRisk += 1.0;
  }

  std::vector<double> scores(scored);
  ScoreCovariance covariance(singular ? 0 : groups.size(), singular ? 0 : scored);
  double F = 0.0;
  for (int i = 1, next = 1; i <= rows; i = next) {
    const double t = time->vbget(i, 1);
    do {
      ++next;
    } while (next <= rows && time->vbget(next, 1) == t);

    for (Group& each : groups) each.interest = each.competing = 0.0;
    double nd1 = 0.0;
    double nd2 = 0.0;
    for (int row = i; row < next; ++row) {
      const std::size_t place = places[row - 1];
      const double code = status->vbget(row, 1);
      if (place == groups.size()) continue;
      if (code == eventCode) {
        groups[place].interest += 1.0;
        nd1 += 1.0;
      } else if (code != 0.0) {
        groups[place].competing += 1.0;
        nd2 += 1.0;
      }
    }

    if (nd1 + nd2 > 0.0) {
      double T1 = 0.0;
      double T2 = 0.0;
      for (Group& each : groups) {
        each.weight = 0.0;
        if (!(each.atRisk > 0.0)) continue;
        each.nextSurvival =
            (each.atRisk - each.interest - each.competing) * each.survival / each.atRisk;
        each.weight = each.atRisk / each.survival;
        T1 += each.weight;
        T2 += (1.0 - each.incidence) * each.atRisk / each.survival;
      }
      const double w = numerics::pow(1.0 - F, rho);
      for (std::size_t k = 0; k < scored; ++k) {
        const Group& each = groups[k];
        if (!(each.atRisk > 0.0)) continue;
        scores[k] +=
            w * (each.interest - nd1 * each.atRisk * (1.0 - each.incidence) / each.survival / T2);
      }
      const double nextF = F + nd1 / T1;
      if (!singular) covariance.add(groups, nd1, T1, F, nextF, w);
      for (Group& each : groups) {
        if (!(each.atRisk > 0.0)) continue;
        each.incidence = each.interest * each.survival / each.atRisk + each.incidence;
        each.survival = each.nextSurvival;
      }
      F = nextF;
    }
    for (int row = i; row < next; ++row) {
      if (places[row - 1] < groups.size()) groups[places[row - 1]].atRisk -= 1.0;
    }
  }

  if (singular) {
    // The inverse of a singular matrix is all zeros.
    *statistic = 0.0;
    for (const double score : scores) *statistic += 0.0 * score;
  } else {
    const int order = static_cast<int>(scored);
    matrix V(order, order, 0);
    matrix inverse(order, order, 0);
    matrix score(order, 1, 0);
    covariance.unpack(&V);
    short outcome = 0;
    V.inverse1(&inverse, outcome, kEpsilon);
    for (int k = 1; k <= order; ++k) score.vbset(k, 1, scores[k - 1]);
    *statistic = M_ProductTrVBV(&score, order, &inverse);
  }
  *df = static_cast<double>(K) - 1.0;
  *pValue = pValChiSq(*statistic, *df);
}
