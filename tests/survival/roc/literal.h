// The sums over pairs of the ROC family as they are defined, loop inside loop: what the sorted
// windows of the library are held against.
#ifndef TESTS_SURVIVAL_ROC_LITERAL_H_
#define TESTS_SURVIVAL_ROC_LITERAL_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <vector>

#include "Klikro/utilities.h"

namespace survmeth::test::roc {

using Vector = std::vector<double>;

// Positions in ascending order of key, stable, NaN last.
inline std::vector<std::size_t> sortedBy(const Vector& key) {
  std::vector<std::size_t> order(key.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (std::isnan(key[a]) || std::isnan(key[b])) return !std::isnan(key[a]) && std::isnan(key[b]);
    return key[a] < key[b];
  });
  return order;
}

inline Vector taken(const Vector& v, const std::vector<std::size_t>& order) {
  Vector out;
  for (const std::size_t i : order) out.push_back(v[i]);
  return out;
}

inline double psi(double x, double y) {
  if (y - x > 1e-12) return 1.0;
  return std::fabs(y - x) < 1e-12 ? 0.5 : 0.0;
}

// Negatives stand first after the stable sort by status; their number is what the truncated sum
// of the statuses leaves.
struct LiteralClasses {
  Vector negative, negativeWeight, positive, positiveWeight;
};

struct LiteralComponents {
  Vector V01, V10;
  double area;
};

inline LiteralComponents literalComponents(const LiteralClasses& c, double N, double P,
                                           bool weightyPairsOnly) {
  LiteralComponents out{Vector(c.negative.size()), Vector(c.positive.size()), 0.0};
  double total = 0.0;
  for (std::size_t i = 0; i < c.negative.size(); ++i) {
    double sum = 0.0;
    for (std::size_t j = 0; j < c.positive.size(); ++j) {
      const double product = c.positiveWeight[j] * c.negativeWeight[i];
      if (weightyPairsOnly && !(product > 1e-12)) continue;
      sum += product * psi(c.negative[i], c.positive[j]);
      total += product * psi(c.negative[i], c.positive[j]);
    }
    out.V01[i] = sum / P;
  }
  for (std::size_t j = 0; j < c.positive.size(); ++j) {
    double sum = 0.0;
    for (std::size_t i = 0; i < c.negative.size(); ++i) {
      const double product = c.positiveWeight[j] * c.negativeWeight[i];
      if (weightyPairsOnly && !(product > 1e-12)) continue;
      sum += product * psi(c.negative[i], c.positive[j]);
    }
    out.V10[j] = sum / N;
  }
  out.area = total / (N * P);
  return out;
}

// One product: pow, where the compiler leaves it a call, may round otherwise.
inline double square(double x) { return x * x; }

inline double literalDelong(const LiteralClasses& c, double N, double P) {
  const LiteralComponents v = literalComponents(c, N, P, false);
  double S01 = 0.0;
  for (std::size_t i = 0; i < v.V01.size(); ++i) {
    S01 += c.negativeWeight[i] * square(v.V01[i] - v.area);
  }
  double S10 = 0.0;
  for (std::size_t j = 0; j < v.V10.size(); ++j) {
    S10 += c.positiveWeight[j] * square(v.V10[j] - v.area);
  }
  return std::sqrt(S10 / ((P - 1) * P) + S01 / ((N - 1) * N));
}

inline double literalMannWhitney(const LiteralClasses& c, double N, double P, double A) {
  double T1 = 0.0;
  double T2 = 0.0;
  for (std::size_t i = 0; i < c.negative.size(); ++i) {
    for (std::size_t j = 0; j < c.positive.size(); ++j) {
      if (std::fabs(c.negative[i] - c.positive[j]) < 1e-12) {
        T1 += c.negativeWeight[i];
        T2 += c.positiveWeight[j];
      }
    }
  }
  double V = (N + P) - T1 * T2;
  for (std::size_t i = 0; i < c.negative.size(); ++i) {
    double a = 0.0;
    double b = 0.0;
    for (std::size_t j = 0; j < c.positive.size(); ++j) {
      if (c.positive[j] < c.negative[i]) a += c.positiveWeight[j];
      if (c.positive[j] > c.negative[i]) b += c.positiveWeight[j];
    }
    V += (a - b) * (a - b) - (a + b);
  }
  for (std::size_t j = 0; j < c.positive.size(); ++j) {
    double above = 0.0;
    double below = 0.0;
    for (std::size_t i = 0; i < c.negative.size(); ++i) {
      if (c.negative[i] > c.positive[j]) above += c.positiveWeight[j];
      if (c.negative[i] < c.positive[j]) below += c.positiveWeight[j];
    }
    V += (above - below) * (above - below) - (above + below);
  }
  V = V / (N * P) - 4 * (N + P - 1) * ((A - 0.5) * (A - 0.5));
  if ((N - 1) * (P - 1) <= 1e-12 || V <= 1e-12) return 0.0;
  return 0.5 * std::sqrt(V / ((N - 1) * (P - 1)));
}

// Counts at every threshold, by going over all rows for each.
struct LiteralTable {
  Vector threshold, tp, tn, fp, fn;
  double N = 0.0;
  double P = 0.0;
};

inline LiteralTable literalTable(const Vector& status, const Vector& values, const Vector& weights,
                                 int rule) {
  const auto byStatus = sortedBy(status);
  const Vector statusFirst = taken(status, byStatus);
  const Vector valuesFirst = taken(values, byStatus);
  Vector working = taken(weights, byStatus);
  for (std::size_t i = 0; i < working.size(); ++i) {
    if (valuesFirst[i] <= kMissing) working[i] = 0.0;
  }
  const auto byValue = sortedBy(valuesFirst);
  const Vector x = taken(valuesFirst, byValue);
  const Vector s = taken(statusFirst, byValue);
  const Vector w = taken(working, byValue);
  const std::size_t n = x.size();

  LiteralTable table;
  for (std::size_t i = 0; i < n; ++i) {
    table.P += w[i] * s[i];
    table.N += w[i] * (1 - s[i]);
  }
  const auto sum = [&](std::size_t begin, std::size_t end, bool positives) {
    double total = 0.0;
    for (std::size_t i = begin; i < end; ++i) total += positives ? w[i] * s[i] : w[i] * (1 - s[i]);
    return total;
  };
  for (std::size_t before = 0, through = 0; before < n; before = through) {
    through = before + 1;
    while (through < n && !(x[through] > x[through - 1])) ++through;
    if (x[before] <= kMissing) continue;
    const bool first = table.threshold.empty();
    table.threshold.push_back(x[before]);
    switch (rule) {
      case 2:
        table.tp.push_back(sum(before, n, true));
        table.fp.push_back(sum(before, n, false));
        table.tn.push_back(first ? 0.0 : sum(0, before, false));
        table.fn.push_back(first ? 0.0 : sum(0, before, true));
        break;
      case 1:
        table.tp.push_back(sum(0, through, true));
        table.fp.push_back(sum(0, through, false));
        table.tn.push_back(sum(through, n, false));
        table.fn.push_back(sum(through, n, true));
        break;
      case 0:
        table.tp.push_back(first ? 0.0 : sum(0, before, true));
        table.fp.push_back(first ? 0.0 : sum(0, before, false));
        table.tn.push_back(sum(before, n, false));
        table.fn.push_back(sum(before, n, true));
        break;
      default:
        table.tp.push_back(sum(through, n, true));
        table.fp.push_back(sum(through, n, false));
        table.tn.push_back(sum(0, through, false));
        table.fn.push_back(sum(0, through, true));
    }
  }
  return table;
}

// Rows of the negatives (false) or positives (true) after the sort by status.
inline std::vector<std::size_t> literalClass(const Vector& status, bool positives) {
  const auto order = sortedBy(status);
  double sum = 0.0;
  for (const double s : status) sum += s;
  const long long n = static_cast<long long>(status.size());
  const long long nNeg = std::clamp(n - truncated(sum), 0LL, n);
  return positives ? std::vector<std::size_t>(order.begin() + nNeg, order.end())
                   : std::vector<std::size_t>(order.begin(), order.begin() + nNeg);
}

// The group vectors: a missing value is value 0 with weight 0.
inline LiteralClasses literalGroups(const Vector& status, const Vector& values,
                                    const Vector& weights) {
  LiteralClasses c;
  for (const bool positives : {false, true}) {
    for (const std::size_t row : literalClass(status, positives)) {
      const bool missing = values[row] <= kMissing;
      (positives ? c.positive : c.negative).push_back(missing ? 0.0 : values[row]);
      (positives ? c.positiveWeight : c.negativeWeight).push_back(missing ? 0.0 : weights[row]);
    }
  }
  return c;
}

// DeLong's covariance of two tests over the rows where neither is missing, loop inside loop.
inline double literalCovariance(const Vector& status, const Vector& first, const Vector& second,
                                const Vector& weights) {
  LiteralClasses a;
  LiteralClasses b;
  double N = 0.0;
  double P = 0.0;
  for (const bool positives : {false, true}) {
    for (const std::size_t row : literalClass(status, positives)) {
      const bool missing = first[row] <= kMissing || second[row] <= kMissing;
      const double w = missing ? 0.0 : row == 0 ? 1.0 : weights[row];
      (positives ? P : N) += w;
      for (LiteralClasses* c : {&a, &b}) {
        (positives ? c->positive : c->negative).push_back(c == &a ? first[row] : second[row]);
        (positives ? c->positiveWeight : c->negativeWeight).push_back(w);
      }
    }
  }
  const LiteralComponents u = literalComponents(a, N, P, true);
  const LiteralComponents v = literalComponents(b, N, P, true);
  double S01 = 0.0;
  for (std::size_t i = 0; i < u.V01.size(); ++i) {
    S01 += a.negativeWeight[i] * (u.V01[i] - u.area) * (v.V01[i] - v.area);
  }
  double S10 = 0.0;
  for (std::size_t j = 0; j < u.V10.size(); ++j) {
    S10 += a.positiveWeight[j] * (u.V10[j] - u.area) * (v.V10[j] - v.area);
  }
  return S01 / (N - 1) / N + S10 / (P - 1) / P;
}

}  // namespace survmeth::test::roc

#endif  // TESTS_SURVIVAL_ROC_LITERAL_H_
