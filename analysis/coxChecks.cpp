#include "analysis/coxChecks.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analysis/coxModel.h"
#include "analysis/spread.h"

namespace survmeth {
namespace {

// What is left of a column that depends on others is rounding noise below this part of its length.
constexpr double kDependent = 1e-9;
// A column whose weight in a combination is below this part of the largest is not one of it.
constexpr double kPresent = 1e-6;

double norm(const double* x, std::size_t n) {
  double squares = 0;
  for (std::size_t i = 0; i < n; ++i) squares += x[i] * x[i];
  return std::sqrt(squares);
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
    text += "\"" + names[i] + "\"";
  }
  return text;
}

// Columns around their mean in each stratum, at length 1; an empty one where nothing varies.
std::vector<std::vector<double>> withinStrata(const CoxRows& rows) {
  std::vector<std::vector<double>> columns;
  for (const std::vector<double>& values : rows.x) {
    const std::vector<double> scaled = inUnit(values, unitOf(values));
    std::vector<double> column;
    for (std::size_t s = 0; s + 1 < rows.starts.size(); ++s) {
      std::vector<double> stratum(scaled.begin() + static_cast<std::ptrdiff_t>(rows.starts[s]),
                                  scaled.begin() + static_cast<std::ptrdiff_t>(rows.starts[s + 1]));
      centre(stratum);
      column.insert(column.end(), stratum.begin(), stratum.end());
    }
    // In a unit in which squares neither overflow nor vanish.
    column = inUnit(column, unitOf(column));
    const double length = norm(column.data(), column.size());
    if (length == 0) column.clear();
    for (double& value : column) value /= length;
    columns.push_back(std::move(column));
  }
  return columns;
}

// Parts of columns along directions found one after the other: parts[j][k] of column j along the
// k-th direction, in which the column taken[k] was the first to go.
struct Dependence {
  std::vector<std::vector<double>> parts;
  std::vector<std::size_t> taken;

  // The columns that column j is a combination of, in their order.
  std::vector<std::size_t> origins(std::size_t j) const {
    std::vector<double> weight = parts[j];
    double largest = 0;
    for (std::size_t k = taken.size(); k-- > 0;) {
      weight[k] /= parts[taken[k]][k];
      largest = std::max(largest, std::fabs(weight[k]));
      for (std::size_t m = 0; m < k; ++m) weight[m] -= weight[k] * parts[taken[k]][m];
    }
    std::vector<std::size_t> found;
    for (std::size_t k = 0; k < taken.size(); ++k) {
      if (std::fabs(weight[k]) > kPresent * largest) found.push_back(taken[k]);
    }
    std::sort(found.begin(), found.end());
    return found;
  }
};

// Counts of scores at or below a rank, for ranks added one by one.
class RankCounts {
 public:
  explicit RankCounts(std::size_t ranks) : tree_(ranks + 1, 0) {}
  void add(std::size_t rank) {
    for (std::size_t i = rank + 1; i < tree_.size(); i += i & (~i + 1)) ++tree_[i];
    ++total_;
  }
  // How many of the added ranks are below `rank`.
  std::size_t below(std::size_t rank) const {
    std::size_t count = 0;
    for (std::size_t i = rank; i > 0; i -= i & (~i + 1)) count += tree_[i];
    return count;
  }
  std::size_t total() const { return total_; }

 private:
  std::vector<std::size_t> tree_;
  std::size_t total_ = 0;
};

}  // namespace

std::vector<bool> varyWithinStrata(const CoxRows& rows) {
  std::vector<bool> vary;
  for (const std::vector<double>& column : withinStrata(rows)) vary.push_back(!column.empty());
  return vary;
}

void requireIndependence(const CoxRows& rows) {
  std::vector<std::vector<double>> columns = withinStrata(rows);
  std::vector<std::string> constant;
  for (std::size_t j = 0; j < columns.size(); ++j) {
    if (columns[j].empty()) constant.push_back(rows.names[j]);
  }
  if (!constant.empty()) {
    throw NoSuchModel("the covariate" + std::string(constant.size() > 1 ? "s " : " ") +
                      listed(constant) + (constant.size() > 1 ? " do" : " does") + " not vary" +
                      (rows.starts.size() > 2 ? " within any stratum" : ""));
  }

  // Each column is replaced by what is independent of those taken before it.
  const std::size_t n = rows.time.size();
  Dependence found{std::vector<std::vector<double>>(columns.size()), {}};
  std::vector<std::size_t> left(columns.size());
  for (std::size_t j = 0; j < left.size(); ++j) left[j] = j;
  while (!left.empty()) {
    std::size_t best = 0;
    double longest = -1;
    for (std::size_t k = 0; k < left.size(); ++k) {
      const double length = norm(columns[left[k]].data(), n);
      // Of columns that are about as long the first in the request is kept.
      if (length > longest * (1 + 1e-6)) {
        longest = length;
        best = k;
      }
    }
    if (longest <= kDependent) break;
    std::vector<double> direction = columns[left[best]];
    for (double& value : direction) value /= longest;
    found.taken.push_back(left[best]);
    found.parts[left[best]].push_back(longest);
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(best));
    for (const std::size_t j : left) {
      found.parts[j].push_back(0);
      // Twice is enough: what the first pass leaves by rounding the second removes.
      for (int pass = 0; pass < 2; ++pass) {
        double product = 0;
        for (std::size_t i = 0; i < n; ++i) product += direction[i] * columns[j][i];
        for (std::size_t i = 0; i < n; ++i) columns[j][i] -= product * direction[i];
        found.parts[j].back() += product;
      }
    }
  }
  if (left.empty()) return;

  std::string clauses;
  for (const std::size_t j : left) {
    std::vector<std::string> others;
    for (const std::size_t k : found.origins(j)) others.push_back(rows.names[k]);
    clauses += clauses.empty() ? "the covariate " + listed({rows.names[j]}) + " follows exactly"
                               : ", and " + listed({rows.names[j]});
    clauses += " from " + listed(others);
  }
  throw NoSuchModel(clauses + "; leave out one of " + (left.size() > 1 ? "each" : "them"));
}

void requireOverlap(const CoxRows& rows) {
  for (std::size_t j = 0; j < rows.x.size(); ++j) {
    const std::vector<double>& x = rows.x[j];
    bool always[2] = {true, true};  // events are the largest, the smallest of those at risk
    bool strict[2] = {false, false};
    for (std::size_t s = 0; s + 1 < rows.starts.size(); ++s) {
      const std::size_t first = rows.starts[s];
      double most = -INFINITY, least = INFINITY;
      for (std::size_t end = rows.starts[s + 1]; end > first;) {
        std::size_t begin = end;
        while (begin > first && rows.time[begin - 1] == rows.time[end - 1]) --begin;
        for (std::size_t i = begin; i < end; ++i) {
          most = std::max(most, x[i]);
          least = std::min(least, x[i]);
        }
        for (std::size_t i = begin; i < end; ++i) {
          if (rows.event[i] == 0) continue;
          if (x[i] < most) always[0] = false;
          if (x[i] > least) always[1] = false;
          if (least < most) strict[0] = strict[1] = true;
        }
        end = begin;
      }
    }
    for (const int side : {0, 1}) {
      if (!always[side] || !strict[side]) continue;
      throw NoSuchModel("the covariate \"" + rows.names[j] +
                        "\" separates the events: at every event time the " +
                        (side == 0 ? "largest" : "smallest") +
                        " value at risk is the one that fails, and its estimate is infinite");
    }
  }
}

double concordance(const CoxRows& rows, const std::vector<double>& score) {
  double concordant = 0, tied = 0, pairs = 0;
  for (std::size_t s = 0; s + 1 < rows.starts.size(); ++s) {
    const std::size_t first = rows.starts[s], last = rows.starts[s + 1];
    std::vector<double> levels(score.begin() + static_cast<std::ptrdiff_t>(first),
                               score.begin() + static_cast<std::ptrdiff_t>(last));
    std::sort(levels.begin(), levels.end());
    levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
    const auto rankOf = [&](std::size_t i) {
      return static_cast<std::size_t>(std::lower_bound(levels.begin(), levels.end(), score[i]) -
                                      levels.begin());
    };
    // From the last time on: an event is paired with all that lived longer, and with those
    // censored at its own time.
    RankCounts later(levels.size());
    for (std::size_t end = last; end > first;) {
      std::size_t begin = end;
      while (begin > first && rows.time[begin - 1] == rows.time[end - 1]) --begin;
      for (std::size_t i = begin; i < end; ++i) {
        if (rows.event[i] == 0) later.add(rankOf(i));
      }
      for (std::size_t i = begin; i < end; ++i) {
        if (rows.event[i] == 0) continue;
        const std::size_t rank = rankOf(i);
        const std::size_t below = later.below(rank);
        concordant += static_cast<double>(below);
        tied += static_cast<double>(later.below(rank + 1) - below);
        pairs += static_cast<double>(later.total());
      }
      for (std::size_t i = begin; i < end; ++i) {
        if (rows.event[i] != 0) later.add(rankOf(i));
      }
      end = begin;
    }
  }
  return pairs > 0 ? (concordant + tied / 2) / pairs : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace survmeth
