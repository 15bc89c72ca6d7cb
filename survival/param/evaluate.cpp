// The pass over the rows: predictor, terms of the law, sums.
#include "survival/param/evaluate.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "numerics/elementary.h"
#include "survival/param/laws.h"
#include "survival/param/normalEquations.h"
#include "survival/param/predictor.h"

namespace survival::param {

namespace {

// A block of rows of the caller's columns other than the covariates.
template <typename Law>
class Rows {
 public:
  Rows(const Model& model, int limit)
      : model_(model), scratch_(kColumns), hazard_(Law::kHasHazard ? limit : 0) {
    for (auto& column : scratch_) column.resize(limit);
  }

  // Moves to rows first .. first + count - 1, whose predictor is `eta`.
  void read(const Law& law, int first, int count, const double* eta) {
    times_ = rowsOf(model_.times, 1, first, count, scratch_[0].data());
    status_ = rowsOf(model_.status, 1, first, count, scratch_[1].data());
    lower_ = rowsOf(model_.bounds, 1, first, count, scratch_[2].data());
    upper_ = rowsOf(model_.bounds, 2, first, count, scratch_[3].data());
    weights_ = rowsOf(model_.weights, 1, first, count, scratch_[4].data());
    eta_ = eta;
    if constexpr (Law::kHasHazard) {
      law.standardise(times_, eta, count, hazard_.data());
      const std::span<double> all(hazard_.data(), static_cast<std::size_t>(count));
      numerics::expArray(all, all);
    }
  }

  Row at(int i) const {
    const double hazard = Law::kHasHazard ? hazard_[i] : 0.0;
    return {times_[i], status_[i], lower_ + i, upper_ + i, weights_[i], eta_[i], hazard};
  }

 private:
  static constexpr int kColumns = 5;
  const Model& model_;
  std::vector<std::vector<double>> scratch_;
  std::vector<double> hazard_;
  const double* times_ = nullptr;
  const double* status_ = nullptr;
  const double* lower_ = nullptr;
  const double* upper_ = nullptr;
  const double* weights_ = nullptr;
  const double* eta_ = nullptr;
};

struct SigmaSums {
  double gradient = 0.0;
  double sigmaSigma = 0.0;
};

template <typename Law>
void addTerms(const Terms& terms, double weight, int i, DesignBlock* block, SigmaSums* sigma) {
  block->eta[i] = weight * terms.eta;
  block->etaEta[i] = weight * terms.etaEta;
  block->etaSigma[i] = 0.0;
  if constexpr (Law::kHasScale) {
    block->etaSigma[i] = weight * terms.etaSigma;
    sigma->gradient += weight * terms.sigma;
    sigma->sigmaSigma += weight * terms.sigmaSigma;
  }
}

void add(matrix* m, int i, int j, double value) { m->vbset(i, j, m->vbget(i, j) + value); }

template <typename Law>
void store(const DesignSums& sums, const SigmaSums& sigma, int p, matrix* gradient,
           matrix* hessian) {
  const int columns = std::max(p, 0) + 1;
  const auto at = [&](int column) {
    return column + 1 < columns ? column + 1 : afterCoefficients(p, 1);
  };
  for (int r = 0; r < columns; ++r) {
    add(gradient, at(r), 1, sums.gradientAt(r));
    for (int s = 0; s < columns; ++s) add(hessian, at(r), at(s), sums.etaEtaAt(r, s));
  }
  if constexpr (Law::kHasScale) {
    const int last = afterCoefficients(p, 2);
    add(gradient, last, 1, sigma.gradient);
    for (int r = 0; r < columns; ++r) {
      add(hessian, at(r), last, sums.etaSigmaAt(r));
      add(hessian, last, at(r), sums.etaSigmaAt(r));
    }
    add(hessian, last, last, sigma.sigmaSigma);
  }
}

// Rows past the end of the status column have no status and so no term of their own.
template <typename Law, bool kValue, bool kDerivatives>
void pass(const Model& model, const matrix* parameters, double* logLik, matrix* gradient,
          matrix* hessian) {
  const int present = std::min(model.n, model.status->count());
  const long long columns = std::max<long long>(model.p, 0) + 1LL;
  requireMatrix(std::max(present, 1), columns);
  const Coefficients coefficients(parameters, model.p);
  if constexpr (kDerivatives) requireMatrix(coefficients.count() + 1, columns);
  Law law(coefficients.sigma);
  Predictor predictor(model.covariates, coefficients);
  const int limit = predictor.blockRows();
  std::vector<double> eta(limit);
  Rows<Law> rows(model, limit);
  DesignBlock block(kDerivatives ? predictor.width() : 0, kDerivatives ? limit : 0);
  DesignSums sums(block.width);
  SigmaSums sigma;
  double value = 0.0;

  for (int first = 0; first < present; first += std::min(limit, present - first)) {
    const int count = std::min(limit, present - first);
    predictor.read(first, count, eta.data(), kDerivatives ? block.row(0) : nullptr);
    rows.read(law, first, count, eta.data());
    std::vector<int> withoutEtaEta;
    for (int i = 0; i < count; ++i) {
      const Row row = rows.at(i);
      Terms terms{};
      const Extent extent = law.template add<kValue, kDerivatives>(row, &value, &terms);
      if constexpr (kDerivatives) {
        if (extent == Extent::kNone) {
          block.clear(i);
          continue;
        }
        addTerms<Law>(terms, row.weight, i, &block, &sigma);
        if (extent == Extent::kWithoutEtaEta) withoutEtaEta.push_back(i);
      }
    }
    if constexpr (kDerivatives) {
      sums.addFirstOrder(block, count);
      for (const int i : withoutEtaEta) block.clear(i);
      sums.addSecondOrder(block, count);
    }
  }
  if constexpr (kValue) {
    if constexpr (!Law::kHasScale) {
      const int weighted = std::clamp(model.weights->count(), present, model.n);
      for (int i = present; i < weighted; ++i) {
        value += model.weights->vbget(i + 1, 1) * law.carried();
      }
      // Past the weights as well every row weighs -1.
      if (weighted < model.n) value += (weighted - static_cast<double>(model.n)) * law.carried();
    }
    *logLik = value;
  }
  if constexpr (kDerivatives) store<Law>(sums, sigma, model.p, gradient, hessian);
}

template <typename Law>
void passOf(const Model& model, const matrix* parameters, double* logLik, matrix* gradient,
            matrix* hessian) {
  if (gradient == nullptr) {
    pass<Law, true, false>(model, parameters, logLik, gradient, hessian);
  } else if (logLik == nullptr) {
    pass<Law, false, true>(model, parameters, logLik, gradient, hessian);
  } else {
    pass<Law, true, true>(model, parameters, logLik, gradient, hessian);
  }
}

}  // namespace

void evaluate(const Model& model, matrix* parameters, double* logLik, matrix* gradient,
              matrix* hessian) {
  if (logLik != nullptr) *logLik = 0.0;
  if (gradient != nullptr) {
    matrix::matCheck(gradient, parameterCount(model.p, model.k), 1, 0.0);
    std::fill_n(hessian->data(), hessian->count(), 0.0);
  }
  if (model.n < 1) return;
  switch (model.distribution) {
    case kExponential:
      return passOf<Exponential>(model, parameters, logLik, gradient, hessian);
    case kWeibull:
      return passOf<Weibull>(model, parameters, logLik, gradient, hessian);
    case kLogNormal:
      return passOf<LogNormal>(model, parameters, logLik, gradient, hessian);
    default:
      return;
  }
}

}  // namespace survival::param
