// Strata, their groups and the rows they reach.
#include "survival/cox/strata.h"

#include <algorithm>
#include <limits>

#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "survival/cox/riskSums.h"

namespace survival::cox {

namespace numerics = survmeth::numerics;
namespace {

int withinInt(Row row) {
  return static_cast<int>(
      std::clamp<Row>(row, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// Resizes without keeping or clearing what stood there.
double* room(std::vector<double>& buffer, std::size_t count) {
  if (buffer.size() < count) buffer.resize(count);
  return buffer.data();
}

}  // namespace

Strata::Strata(const GroupTables& tables)
    : tables_(tables),
      // A stratum past both tables has no rows and no groups.
      count_(std::min(tables.S,
                      std::max(tables.distinctTimes->count(), tables.stratumSizes->count()))) {}

bool Strata::next() {
  first_ += size_;
  size_ = 0;
  if (number_ >= count_) return false;
  ++number_;
  size_ = truncated(tables_.stratumSizes->vbget(1, number_));

  // Groups past the tables read -1 in all three of them.
  const Row past = Row{tables_.groupStart->count()} + kReach;
  const int groups =
      static_cast<int>(std::clamp<Row>(tables_.distinctTimes->vbget(number_, 1), 0, past));
  groups_.clear();
  for (int k = 1; k <= groups; ++k) {
    const Row first = tables_.groupStart->vbget(number_, k);
    const Row size = tables_.groupSize != nullptr ? tables_.groupSize->vbget(number_, k) : 0;
    const int events = tables_.groupEvents != nullptr ? tables_.groupEvents->vbget(number_, k) : 0;
    groups_.push_back({first, first + size - 1, events});
  }
  return true;
}

std::ptrdiff_t ReachedRows::at(Row row) const {
  return static_cast<std::ptrdiff_t>(std::clamp<Row>(row - first_, 0, count_));
}

void ReachedRows::load(const Strata& strata, matrix* X, int q, matrix* delta, matrix* beta) {
  Row low = strata.first();
  Row high = strata.last();
  for (const Group& group : strata.groups()) {
    if (group.first <= strata.last()) low = std::min(low, group.first);
    if (group.first <= group.last) {
      low = std::min(low, group.first);
      high = std::max(high, group.last);
    }
  }
  const Row reach = Row{std::max(X->count(), delta != nullptr ? delta->count() : 0)} + kReach;
  low = std::clamp(low, -reach, reach + 1);
  high = std::clamp(high, low - 1, reach);
  first_ = low;
  count_ = static_cast<std::ptrdiff_t>(high - low + 1);
  atRisk_ = static_cast<std::ptrdiff_t>(std::clamp<Row>(strata.last() - low + 1, 0, count_));

  const std::size_t rows = static_cast<std::size_t>(count_);
  const bool present = low >= 1 && high <= X->rows() && q <= X->cols() &&
                       (delta == nullptr || high <= delta->rows());
  columns_.resize(static_cast<std::size_t>(std::max(q, 0)));
  if (present) {
    for (int j = 0; j < q; ++j) {
      columns_[j] = X->data() + static_cast<std::ptrdiff_t>(j) * X->rows() + (low - 1);
    }
    if (delta != nullptr) delta_ = delta->data() + (low - 1);
  } else {
    double* copies = room(copies_, rows * (columns_.size() + 1));
    for (int j = 0; j <= q; ++j) {
      double* column = copies + static_cast<std::size_t>(j) * rows;
      for (std::size_t i = 0; i < rows; ++i) {
        const int row = withinInt(low + static_cast<Row>(i));
        if (j < q) {
          column[i] = X->vbget(row, j + 1);
        } else if (delta != nullptr) {
          column[i] = delta->vbget(row, 1);
        }
      }
      if (j < q) {
        columns_[j] = column;
      } else {
        delta_ = column;
      }
    }
  }

  eta_.assign(rows, 0.0);
  for (int j = 0; j < q; ++j) {
    const double* column = columns_[j];
    const double coefficient = beta->vbget(j + 1, 1);
    for (std::size_t i = 0; i < rows; ++i) eta_[i] += column[i] * coefficient;
  }
  std::fill(eta_.begin(), eta_.begin() + at(strata.first()), -1.0);
  std::fill(eta_.begin() + at(strata.last() + 1), eta_.end(), -1.0);
}

void RiskSets::load(const ReachedRows& rows, const std::vector<Group>& groups,
                    const std::vector<double>& risk, const std::vector<bool>& leftOut) {
  rows_ = rows.atRisk();
  groups_ = static_cast<int>(groups.size());
  risk_ = risk.data();
  leftOut_.clear();
  for (std::size_t i = 0; i < leftOut.size(); ++i) {
    if (leftOut[i]) leftOut_.push_back(static_cast<std::ptrdiff_t>(i));
  }
  starts_.clear();
  sumOfGroup_.clear();
  for (const Group& group : groups) {
    const double start = static_cast<double>(rows.at(group.first));
    if (starts_.empty() || start != starts_.back()) starts_.push_back(start);
    sumOfGroup_.push_back(static_cast<int>(starts_.size()) - 1);
  }
  if (starts_.size() == groups.size()) sumOfGroup_.clear();
}

void RiskSets::sum(const Term* terms, int count, double* sums) {
  const int distinct = static_cast<int>(starts_.size());
  const bool shared = !sumOfGroup_.empty();
  for (int done = 0; done < count; done += kTileTerms) {
    const int width = std::min(kTileTerms, count - done);
    double* tile = room(tile_, static_cast<std::size_t>(rows_) * kTileTerms);
    for (int t = 0; t < width; ++t) {
      const Term& term = terms[done + t];
      if (term.first == nullptr) {
        for (std::ptrdiff_t i = 0; i < rows_; ++i) tile[i * width + t] = risk_[i];
      } else if (term.second == nullptr) {
        for (std::ptrdiff_t i = 0; i < rows_; ++i) tile[i * width + t] = term.first[i] * risk_[i];
      } else {
        for (std::ptrdiff_t i = 0; i < rows_; ++i) {
          tile[i * width + t] = term.first[i] * term.second[i] * risk_[i];
        }
      }
      for (const std::ptrdiff_t i : leftOut_) {
        if (i < rows_) tile[i * width + t] = 0.0;
      }
    }
    double* out = sums + static_cast<std::size_t>(done) * groups_;
    if (!shared) {
      sumOverRiskSets(width)(tile, rows_, starts_.data(), groups_, out, groups_);
      continue;
    }
    double* formed = room(distinct_, static_cast<std::size_t>(distinct) * kTileTerms);
    sumOverRiskSets(width)(tile, rows_, starts_.data(), distinct, formed, distinct);
    for (int t = 0; t < width; ++t) {
      for (int k = 0; k < groups_; ++k) {
        out[static_cast<std::size_t>(t) * groups_ + k] =
            formed[static_cast<std::size_t>(t) * distinct + sumOfGroup_[k]];
      }
    }
  }
}

void GuardedRiskSums::load(const ReachedRows& rows, const std::vector<Group>& groups,
                           int covariates) {
  groups_ = groups.size();
  const std::vector<double>& eta = rows.eta();
  risk_.resize(eta.size());
  leftOut_.assign(eta.size(), false);
  numerics::expArray(eta, risk_);
  for (std::size_t i = 0; i < eta.size(); ++i) {
    if (eta[i] < kLargestPredictor) continue;
    risk_[i] = 0.0;
    leftOut_[i] = true;
  }
  sets_.load(rows, groups, risk_, leftOut_);
  std::vector<Term> terms{{nullptr, nullptr}};
  for (int j = 0; j < covariates; ++j) terms.push_back({rows.covariate(j), nullptr});
  room(sums_, terms.size() * groups_);
  sets_.sum(terms.data(), static_cast<int>(terms.size()), sums_.data());
}

}  // namespace survival::cox
