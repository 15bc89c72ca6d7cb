// Strata, their groups and the rows they reach, as the loops of the Cox routines walk them.
#ifndef SURVIVAL_COX_STRATA_H_
#define SURVIVAL_COX_STRATA_H_

#include <algorithm>
#include <cstddef>
#include <vector>

#include "Klikro/matrix"
#include "Klikro/matrixInt"

namespace survival::cox {

// How far past the data's end the rows, groups and events of damaged tables are followed. All
// rows and groups out there are alike, so going on would only be waiting.
inline constexpr int kReach = 65536;

// The number of coefficients that loops run over: p, unless that is far more than the matrices
// could hold.
inline int coefficientsWithin(int p, const matrix* X, const matrix* other) {
  constexpr int slack = 16;
  return std::clamp(p, 0, std::max({X->cols(), other->rows(), other->cols()}) + slack);
}

// Linear predictors from here on would bring exp to its overflow.
inline constexpr double kLargestPredictor = 700.0;

using Row = long long;  // row numbers and their sums, wider than the counts they come from

// The caller's tables; groupSize and groupEvents may be null where a routine does not use them.
struct GroupTables {
  matrix* stratumSizes;
  int S;
  matrixInt* distinctTimes;
  matrixInt* groupStart;
  matrixInt* groupSize;
  matrixInt* groupEvents;
};

struct Group {
  Row first;
  Row last;  // last row of the group itself; its risk set ends with the stratum
  int events;
};

// One stratum after the other.
class Strata {
 public:
  explicit Strata(const GroupTables& tables);

  // Moves to the next stratum; false after the last one.
  bool next();

  int number() const { return number_; }
  Row first() const { return first_; }
  Row last() const { return first_ + size_ - 1; }
  const std::vector<Group>& groups() const { return groups_; }

 private:
  GroupTables tables_;
  int count_;
  int number_ = 0;
  Row first_ = 1;
  Row size_ = 0;
  std::vector<Group> groups_;
};

// The rows that a stratum and its groups reach, as columns that loops can run over: the caller's
// own columns where every row exists, else copies made with the containers' checked reads, so
// that tables which point outside the data give what those reads give.
class ReachedRows {
 public:
  // `delta` may be null.
  void load(const Strata& strata, matrix* X, int q, matrix* delta, matrix* beta);

  Row first() const { return first_; }
  // Rows of this stratum's risk sets: from first() to the stratum's last row.
  std::ptrdiff_t atRisk() const { return atRisk_; }
  std::ptrdiff_t count() const { return count_; }
  // Position of a row in the columns, within 0..count().
  std::ptrdiff_t at(Row row) const;

  // Covariate j = 0..q - 1.
  const double* covariate(int j) const { return columns_[static_cast<std::size_t>(j)]; }
  const double* delta() const { return delta_; }
  // Linear predictor; rows outside the stratum have none and read as the containers' -1.
  const std::vector<double>& eta() const { return eta_; }

 private:
  Row first_ = 1;
  std::ptrdiff_t count_ = 0;
  std::ptrdiff_t atRisk_ = 0;
  std::vector<const double*> columns_;
  const double* delta_ = nullptr;
  std::vector<double> eta_;
  std::vector<double> copies_;
};

// A term of a row: exp(eta), times one or two covariates (null for none). The product is formed
// from left to right, first * second * exp(eta), so (r, c) and (c, r) have the same bits.
struct Term {
  const double* first;
  const double* second;
};

// Sums of terms over the risk set of every group of a stratum.
class RiskSets {
 public:
  // Rows whose flag in leftOut[] is set are in no risk set; empty: none is left out.
  void load(const ReachedRows& rows, const std::vector<Group>& groups,
            const std::vector<double>& risk, const std::vector<bool>& leftOut);

  // sums[t * groups + k] for terms t = 0..count - 1.
  void sum(const Term* terms, int count, double* sums);

 private:
  std::ptrdiff_t rows_ = 0;
  int groups_ = 0;
  const double* risk_ = nullptr;
  std::vector<std::ptrdiff_t> leftOut_;
  std::vector<double> starts_;   // of the sums to form, positions from 0
  std::vector<int> sumOfGroup_;  // which of them is a group's; empty when each has its own
  std::vector<double> tile_;
  std::vector<double> distinct_;  // sums before groups that share one are served
};

// Risk sums of a stratum without the rows whose linear predictor is not below the limit: those of
// exp(eta) for every group k, and of covariate j = 1..q times exp(eta).
class GuardedRiskSums {
 public:
  void load(const ReachedRows& rows, const std::vector<Group>& groups, int covariates);
  double total(int k) const { return sums_[static_cast<std::size_t>(k)]; }
  double covariate(int j, int k) const {
    return sums_[static_cast<std::size_t>(j) * groups_ + static_cast<std::size_t>(k)];
  }

 private:
  std::size_t groups_ = 0;
  std::vector<double> sums_;
  std::vector<double> risk_;
  std::vector<bool> leftOut_;
  RiskSets sets_;
};

}  // namespace survival::cox

#endif  // SURVIVAL_COX_STRATA_H_
