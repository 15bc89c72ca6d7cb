// Martingale, deviance, Schoenfeld and second residuals of a Cox model.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Dist/Dist"
#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "numerics/hot.h"
#include "survival/cox/cox.h"
#include "survival/cox/strata.h"

namespace numerics = survmeth::numerics;

namespace {

using survival::cox::Row;
using Vector = std::vector<double>;

// Strata up to this size have their second residuals summed as the formula stands.
constexpr std::size_t kLiteralRows = 2048;

// corrections[r] += factor * eta[r] / riskSum for rows from..rows - 1.
SURVMETH_HOT void addProducts(double factor, double riskSum, const double* eta, std::size_t from,
                              std::size_t rows, double* corrections) {
  for (std::size_t r = from; r < rows; ++r) corrections[r] += factor * eta[r] / riskSum;
}

// Magnitudes whose products and quotients, three at a time, neither overflow nor underflow.
bool moderate(double x) { return std::fabs(x) >= 1e-100 && std::fabs(x) <= 1e100; }

// The residuals of one stratum's rows.
class StratumResiduals {
 public:
  StratumResiduals(int q, matrix* beta) : q_(q), beta_(beta) {}

  void form(const survival::cox::Strata& strata, matrix* X, matrix* delta,
            const matrix* baselineSurvival) {
    reached_.load(strata, X, q_, delta, beta_);
    riskSums_.load(reached_, strata.groups(), q_);
    first_ = reached_.first() + reached_.at(strata.first());
    const std::ptrdiff_t from = reached_.at(strata.first());
    rows_ = static_cast<std::size_t>(
        std::max<std::ptrdiff_t>(reached_.at(strata.last() + 1) - from, 0));
    delta_ = reached_.delta() + from;
    eta_ = reached_.eta().data() + from;
    offset_ = from;
    enterGroups(strata, baselineSurvival);
    formMartingales();
  }

  // Residuals of covariate j = 0..q - 1, after form().
  void formCovariate(int j) {
    const double* x = reached_.covariate(j) + offset_;
    schoenfeld_.resize(rows_);
    for (std::size_t i = 0; i < rows_; ++i) {
      const int k = group_[i];
      // A row in no group has no risk sums.
      const double expected = (k < 0 ? 0.0 : riskSums_.covariate(j + 1, k)) / riskSum_[i];
      schoenfeld_[i] = delta_[i] * (x[i] - expected);
    }
    corrections_.assign(rows_, 0.0);
    factors_.resize(rows_);
    for (std::size_t m = 0; m < rows_; ++m) factors_[m] = schoenfeld_[m] * deviance_[m];
    if (rows_ > kLiteralRows && separable()) {
      addRunningProducts();
    } else {
      addLiteralProducts();
    }
    second_.resize(rows_);
    for (std::size_t r = 0; r < rows_; ++r) {
      second_[r] = schoenfeld_[r] - (deviance_[r] == kMissing ? 0.0 : corrections_[r]);
    }
  }

  Row first() const { return first_; }
  std::size_t rows() const { return rows_; }
  const Vector& martingale() const { return martingale_; }
  const Vector& deviance() const { return deviance_; }
  const Vector& schoenfeld() const { return schoenfeld_; }
  const Vector& second() const { return second_; }

 private:
  void enterGroups(const survival::cox::Strata& strata, const matrix* baselineSurvival) {
    hazard_.assign(rows_, 0.0);
    riskSum_.assign(rows_, 0.0);
    group_.assign(rows_, -1);
    int k = 0;
    for (const survival::cox::Group& group : strata.groups()) {
      const double survival = baselineSurvival->vbget(strata.number(), k + 1);
      const Row end = std::min<Row>(group.last, first_ + static_cast<Row>(rows_) - 1);
      for (Row row = std::max(group.first, first_); row <= end; ++row) {
        const std::size_t i = static_cast<std::size_t>(row - first_);
        if (survival > 0.0) hazard_[i] = -numerics::log(survival);
        riskSum_[i] = riskSums_.total(k);
        group_[i] = k;
      }
      ++k;
    }
  }

  void formMartingales() {
    martingale_.resize(rows_);
    deviance_.resize(rows_);
    for (std::size_t i = 0; i < rows_; ++i) {
      const double delta = delta_[i];
      const double m = eta_[i] < survival::cox::kLargestPredictor
                           ? delta - hazard_[i] * numerics::exp(eta_[i])
                           : delta;
      martingale_[i] = m;
      deviance_[i] = delta - m != 0.0 ? FSgn(m) * sqr(2.0 * (-m - delta * numerics::log(delta - m)))
                                      : kMissing;
    }
  }

  // Whether a row's linear predictor may be taken out of its sum: rounding apart, nothing then
  // changes. A deviance marker that takes part makes products overflow, which must stay so.
  bool separable() const {
    for (std::size_t i = 0; i < rows_; ++i) {
      const bool factorSafe = factors_[i] == 0.0 || moderate(factors_[i]);
      const bool etaSafe = deviance_[i] == kMissing || eta_[i] == 0.0 || moderate(eta_[i]);
      if (!factorSafe || !etaSafe || !moderate(riskSum_[i])) return false;
    }
    return true;
  }

  void addRunningProducts() {
    double running = 0.0;
    for (std::size_t r = 0; r < rows_; ++r) {
      running += factors_[r] / riskSum_[r];
      corrections_[r] = running * eta_[r];
    }
  }

  // Row after row, so that every sum has the order of the formula.
  void addLiteralProducts() {
    const bool finite = std::all_of(eta_, eta_ + rows_, [](double x) { return std::isfinite(x); });
    for (std::size_t m = 0; m < rows_; ++m) {
      if (std::isnan(factors_[m])) {
        // Every sum that this row takes part in is not a number from here on.
        std::fill(corrections_.begin() + static_cast<std::ptrdiff_t>(m), corrections_.end(),
                  factors_[m]);
        return;
      }
      // Adds zeros only.
      if (finite && factors_[m] == 0.0 && riskSum_[m] > 0.0) continue;
      addProducts(factors_[m], riskSum_[m], eta_, m, rows_, corrections_.data());
    }
  }

  int q_;
  matrix* beta_;
  survival::cox::ReachedRows reached_;
  survival::cox::GuardedRiskSums riskSums_;
  Row first_ = 1;
  std::size_t rows_ = 0;
  std::ptrdiff_t offset_ = 0;
  const double* delta_ = nullptr;
  const double* eta_ = nullptr;
  Vector hazard_;
  Vector riskSum_;
  std::vector<int> group_;
  Vector martingale_;
  Vector deviance_;
  Vector schoenfeld_;
  Vector factors_;
  Vector corrections_;
  Vector second_;
};

}  // namespace

void ResCox(matrix* time, int n, int q, matrix* delta, matrix* X, matrix* stratumSizes, int S,
            matrix* beta, matrixInt* distinctTimes, matrixInt* groupSize, matrixInt* groupStart,
            matrix* baselineSurvival, matrix* residuals) {
  q = survival::cox::coefficientsWithin(q, X, beta);
  const int written = std::min(n, residuals->count());
  for (int i = 1; i <= written; ++i) {
    residuals->vbset(i, 1, time->vbget(i, 1));
    residuals->vbset(i, 2, delta->vbget(i, 1));
    for (int column = 3; column <= 2 * q + 4; ++column) residuals->vbset(i, column, 0.0);
  }

  StratumResiduals stratum(q, beta);
  survival::cox::Strata strata({stratumSizes, S, distinctTimes, groupStart, groupSize, nullptr});
  while (strata.next()) {
    stratum.form(strata, X, delta, baselineSurvival);
    const auto write = [&](int column, const Vector& values) {
      for (std::size_t i = 0; i < stratum.rows(); ++i) {
        const Row row = stratum.first() + static_cast<Row>(i);
        if (row < 1 || row > written) continue;
        residuals->vbset(static_cast<int>(row), column, values[i]);
      }
    };
    write(3, stratum.martingale());
    write(4, stratum.deviance());
    for (int j = 0; j < q; ++j) {
      stratum.formCovariate(j);
      write(j + 5, stratum.schoenfeld());
      write(q + j + 5, stratum.second());
    }
  }
}
