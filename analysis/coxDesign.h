// The covariates of a Cox model from the columns that a person names: numbers as they are, labels as
// indicators of each level but the first, which is the reference.
#ifndef ANALYSIS_COX_DESIGN_H_
#define ANALYSIS_COX_DESIGN_H_

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "analysis/coxModel.h"
#include "frame/frame.h"

namespace survmeth::analysis {

struct CoxDesign {
  std::vector<CoxCovariate> covariates;                         // numbers from data or own
  std::vector<std::pair<std::string, std::string>> references;  // column, level
  std::deque<std::vector<double>> own;
};

// Throws engine::Refusal (kCovariate, with the column) for more than a hundred levels.
CoxDesign coxDesignOf(const frame::Frame& data, const std::vector<std::string>& columns,
                      const std::vector<std::string>& factors);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_DESIGN_H_
