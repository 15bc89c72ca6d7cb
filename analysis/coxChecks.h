// What is wrong with a proportional-hazards model before it is fitted.
#ifndef ANALYSIS_COX_CHECKS_H_
#define ANALYSIS_COX_CHECKS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace survmeth {

// Rows sorted by stratum and, within one, by ascending time.
struct CoxRows {
  std::vector<double> time;
  std::vector<double> event;           // 0 or 1
  std::vector<std::size_t> starts;     // first row of each stratum, then the number of rows
  std::vector<std::string> names;      // of the covariates
  std::vector<std::vector<double>> x;  // columns
};

// Which covariates vary within some stratum; the others have no coefficient. Cost O(n p).
std::vector<bool> varyWithinStrata(const CoxRows& rows);

// Throws NoSuchModel for covariates without variation within strata, or that depend linearly on
// others: the column with most left that is independent is taken first, and its direction removed
// from the others. Cost O(n p^2).
// Source Golub & Van Loan, Matrix Computations, 5.4 (orthogonalisation with column pivoting)
void requireIndependence(const CoxRows& rows);

// Throws NoSuchModel for a covariate whose value in every event is the largest of all at risk, or
// the smallest of all: its estimate is infinite. Cost O(n p).
void requireOverlap(const CoxRows& rows);

// Harrell's concordance of a score with the survival times, within strata; pairs are counted
// exactly. NaN without a pair whose order is known. Cost O(n log n).
double concordance(const CoxRows& rows, const std::vector<double>& score);

}  // namespace survmeth

#endif  // ANALYSIS_COX_CHECKS_H_
