// Which of a model's terms stay: step by step, whole terms, interactions only beside their parts.
#ifndef PROCEDURES_SELECTION_H_
#define PROCEDURES_SELECTION_H_

#include <cstddef>
#include <vector>

#include "numerics/progress.h"
#include "procedures/family.h"

namespace survmeth::procedures {

enum class Direction {
  kBackward,  // from all terms
  kForward,   // from the forced ones
  kBoth,      // from all terms, and terms may come back
};

struct SelectionOptions {
  Direction direction = Direction::kBackward;
  // Terms go by their Wald test's p-value: the largest, while it is at least `remove`; they come in
  // by that of the larger model: the smallest, while it is below `enter`, at most `remove`.
  // Otherwise by -2 log-likelihood + penalty parameters: the change that lowers it most.
  bool byPValue = true;
  double remove = 0.1, enter = 0.05;
  double penalty = 2.0;      // 2: AIC; log n: BIC
  std::vector<bool> forced;  // terms that stay; empty: none
};

struct SelectionStep {
  std::size_t term = 0;
  bool added = false;
  Test test;  // Wald's that decided; with a criterion the likelihood ratio of the two models
  double logLikelihood = kAbsent;  // of the model after it
  std::size_t parameters = 0;
};

struct Selection {
  std::vector<bool> in;
  Fit fit;
  std::vector<SelectionStep> steps;
};

// A term leaves only where no other term in the model contains it, and enters only where all that it
// contains are there. A model without a maximum is passed over. The last term can go.
//
// Cost backward by p-values one fit a step; else up to one fit a term and step
// Source Venables & Ripley, Modern Applied Statistics with S (2002), 6.8 (stepwise by a criterion)
Selection select(Family& family, const SelectionOptions& options, numerics::Progress& progress);

}  // namespace survmeth::procedures

#endif  // PROCEDURES_SELECTION_H_
