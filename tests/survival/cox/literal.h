// The formulas of the Cox routines as plain loops over the containers' checked reads, the slow way
// that the fast routines must agree with bit for bit.
#ifndef TESTS_SURVIVAL_COX_LITERAL_H_
#define TESTS_SURVIVAL_COX_LITERAL_H_

#include <cmath>
#include <vector>

#include "numerics/elementary.h"
#include "tests/survival/cox/cox_case.h"

namespace survmeth::test {

// Linear predictors of one stratum, read by row; there are none outside it.
class LiteralEta {
 public:
  LiteralEta(int p, matrix* X, matrix* beta, int first, int rows)
      : first_(first), eta_(rows, 1, 0) {
    for (int i = first; i < first + rows; ++i) {
      double eta = 0.0;
      for (int j = 1; j <= p; ++j) eta += X->vbget(i, j) * beta->vbget(j, 1);
      eta_.vbset(i - first + 1, 1, eta);
    }
  }
  double operator()(int row) const { return eta_.vbget(row - first_ + 1, 1); }

 private:
  int first_;
  matrix eta_;
};

struct LiteralLikelihood {
  LiteralLikelihood(CoxCase* c, int ties, Doubles coefficients)
      : gradient(c->p, 1, 0), hessian(c->p, c->p, 0) {
    if (ties != 0 && ties != 1) return;
    const int p = c->p;
    matrix beta(p, 1, coefficients.data(), 0, 0);
    int a = 1;
    for (int s = 1; s <= c->S; ++s) {
      const int rows = truncated(c->sizes.vbget(1, s));
      const int b = a + rows - 1;
      const int D = c->distinct.vbget(s, 1);
      matrix A(D, p, 0), S0(D, 1, 0), S1(D, p, 0), T0(D, 1, 0), T1(D, p, 0);
      std::vector<Doubles> S2(std::max(D, 0), Doubles(static_cast<std::size_t>(p) * p));
      std::vector<Doubles> T2(S2);
      const LiteralEta eta(p, &c->X, &beta, a, rows);
      double linear = 0.0;
      for (int k = 1; k <= D; ++k) {
        const int g = c->start.vbget(s, k);
        const int m = c->size.vbget(s, k);
        for (int j = 1; j <= p; ++j) {
          double sum = 0.0;
          for (int i = g; i <= g + m - 1; ++i) sum += c->delta.vbget(i, 1) * c->X.vbget(i, j);
          A.vbset(k, j, sum);
        }
        for (int i = g; i <= b; ++i) {
          if (ties == 0 && eta(i) >= 700) continue;
          const double e = numerics::exp(eta(i));
          S0.vbset(k, 1, S0.vbget(k, 1) + e);
          for (int r = 1; r <= p; ++r) {
            S1.vbset(k, r, S1.vbget(k, r) + c->X.vbget(i, r) * e);
            for (int q = 1; q <= p; ++q) {
              S2[k - 1][(r - 1) + (q - 1) * p] += c->X.vbget(i, r) * c->X.vbget(i, q) * e;
            }
          }
        }
        for (int i = g; ties == 1 && i <= g + m - 1; ++i) {
          const double e = numerics::exp(eta(i));
          const double d = c->delta.vbget(i, 1);
          T0.vbset(k, 1, T0.vbget(k, 1) + d * e);
          for (int r = 1; r <= p; ++r) {
            T1.vbset(k, r, T1.vbget(k, r) + d * c->X.vbget(i, r) * e);
            for (int q = 1; q <= p; ++q) {
              T2[k - 1][(r - 1) + (q - 1) * p] += d * c->X.vbget(i, r) * c->X.vbget(i, q) * e;
            }
          }
        }
      }
      for (int k = 1; k <= D; ++k) {
        for (int j = 1; j <= p; ++j) linear += A.vbget(k, j) * beta.vbget(j, 1);
      }
      logLik = s == 1 ? linear : logLik + linear;
      if (ties == 0) {
        breslow(c, s, D, A, S0, S1, S2);
      } else {
        efron(c, s, D, A, S0, S1, S2, T0, T1, T2);
      }
      a += rows;
    }
  }

  double logLik = 0.0;
  matrix gradient;
  matrix hessian;

 private:
  void breslow(CoxCase* c, int s, int D, const matrix& A, const matrix& S0, const matrix& S1,
               const std::vector<Doubles>& S2) {
    const double epsilon = 2.220446049250313e-16;
    const int p = c->p;
    for (int k = 1; k <= D; ++k) {
      const int d = c->events.vbget(s, k);
      const double total = S0.vbget(k, 1);
      if (total > epsilon) logLik -= d * numerics::log(total);
      if (!(std::fabs(total) > epsilon)) continue;
      for (int j = 1; j <= p; ++j) {
        gradient.vbset(j, 1, gradient.vbget(j, 1) + (A.vbget(k, j) - d * S1.vbget(k, j) / total));
      }
      for (int r = 1; r <= p; ++r) {
        for (int q = 1; q <= p; ++q) {
          const double term = d * ((S1.vbget(k, q) / total) * (S1.vbget(k, r) / total) -
                                   S2[k - 1][(r - 1) + (q - 1) * p] / total);
          hessian.vbset(r, q, hessian.vbget(r, q) + term);
        }
      }
    }
  }

  void efron(CoxCase* c, int s, int D, const matrix& A, const matrix& S0, const matrix& S1,
             const std::vector<Doubles>& S2, const matrix& T0, const matrix& T1,
             const std::vector<Doubles>& T2) {
    const int p = c->p;
    Doubles expected(p), curvature(static_cast<std::size_t>(p) * p);
    for (int k = 1; k <= D; ++k) {
      const int d = c->events.vbget(s, k);
      double logs = 0.0;
      for (int m = 1; m <= d; ++m) {
        const double f = (m - 1) / d;  // in integers, as the routine has it
        const double total = S0.vbget(k, 1) - f * T0.vbget(k, 1);
        logs += numerics::log(total);
        for (int r = 1; r <= p; ++r) {
          const double ofR = S1.vbget(k, r) - f * T1.vbget(k, r);
          expected[r - 1] += ofR / total;
          for (int q = 1; q <= p; ++q) {
            const int at = (r - 1) + (q - 1) * p;
            const double ofQ = S1.vbget(k, q) - f * T1.vbget(k, q);
            curvature[at] +=
                ofQ * (ofR / total) / total - (S2[k - 1][at] - f * T2[k - 1][at]) / total;
          }
        }
      }
      logLik -= logs;
      for (int j = 1; j <= p; ++j) gradient.vbset(j, 1, gradient.vbget(j, 1) + A.vbget(k, j));
    }
    for (int r = 1; r <= p; ++r) {
      gradient.vbset(r, 1, gradient.vbget(r, 1) - expected[r - 1]);
      for (int q = 1; q <= p; ++q) {
        hessian.vbset(r, q, hessian.vbget(r, q) + curvature[(r - 1) + (q - 1) * p]);
      }
    }
  }
};

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_COX_LITERAL_H_
