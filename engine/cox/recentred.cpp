#include "engine/cox/recentred.h"

#include <algorithm>
#include <limits>

#include "engine/cox/means.h"
#include "numerics/gram.h"
#include "numerics/threads.h"

namespace survmeth::engine::cox {
namespace {

using numerics::BlockedColumns;
using numerics::SquareMatrix;
constexpr std::size_t kBlock = BlockedColumns::kBlock;

// Four of sixteen digits may go.
constexpr double kMostSquares = 1e4;
constexpr std::size_t kMostRanges = 24;

// What the event times begin .. end - 1 add.
struct Range {
  std::size_t begin, end;
  std::vector<double> gradient, squares;
  SquareMatrix information;
};

class Ranges {
 public:
  Ranges(const Problem& problem, const Hazards& hazards, Ties ties, std::span<const double> factor)
      : problem_(problem),
        hazards_(hazards),
        ties_(ties),
        factor_(factor),
        means_(problem.columns()) {
    const std::size_t times = problem.arrangement.times();
    numerics::inParallel(problem.columns(), [&](std::size_t j) {
      std::vector<double> value(problem.arrangement.rows());
      std::vector<double> failing(times);
      means_[j].resize(times);
      riskTimes(problem, hazards, j, value);
      problem.sums.overRiskSets(value, means_[j], failing, hazards.scales);
      for (std::size_t k = 0; k < times; ++k) {
        means_[j][k] = (means_[j][k] + failing[k]) / hazards.all(k);
      }
    });
  }

  // The time at which a range is best split for one column: where the sums of squares about the
  // means of both sides are smallest. `begin` where there is nothing to be gained.
  std::size_t split(const Range& range, std::size_t j) const {
    const std::vector<double>& omega = problem_.arrangement.eventWeight;
    const double centre = mean(range, j);
    double weights = 0.0;
    for (std::size_t k = range.begin; k < range.end; ++k) weights += omega[k];
    double left = 0.0;
    double sum = 0.0;
    double best = 0.0;
    std::size_t at = range.begin;
    for (std::size_t k = range.begin; k + 1 < range.end; ++k) {
      left += omega[k];
      sum += omega[k] * (means_[j][k] - centre);
      // What the sum of squares falls by.
      const double gain = sum * sum * (1.0 / left + 1.0 / (weights - left));
      if (gain > best) {
        best = gain;
        at = k + 1;
      }
    }
    return at;
  }

  Range form(std::size_t begin, std::size_t end) const {
    const std::size_t p = problem_.columns();
    Range range{begin, end, std::vector<double>(p, 0.0), std::vector<double>(p, 0.0),
                SquareMatrix(p)};
    std::vector<double> centre(p);
    for (std::size_t j = 0; j < p; ++j) centre[j] = mean(range, j);
    addRows(centre, range);
    for (std::size_t j = 0; j < p; ++j) range.squares[j] = range.information(j, j);
    subtractMeans(centre, range);
    return range;
  }

 private:
  double mean(const Range& range, std::size_t j) const {
    const std::vector<double>& omega = problem_.arrangement.eventWeight;
    double sum = 0.0;
    double weights = 0.0;
    for (std::size_t k = range.begin; k < range.end; ++k) {
      sum += omega[k] * means_[j][k];
      weights += omega[k];
    }
    return sum / weights;
  }

  double times(std::size_t k) const { return factor_.empty() ? 1.0 : factor_[k]; }

  void addRows(const std::vector<double>& centre, Range& range) const {
    const risk::Arrangement& a = problem_.arrangement;
    std::vector<double> at(a.times(), 0.0);
    std::vector<double> own(a.times(), 0.0);
    for (std::size_t k = range.begin; k < range.end; ++k) {
      at[k] = times(k) * hazards_.increment[k];
      own[k] = times(k) * hazards_.own[k];
    }
    std::vector<double> exposed(a.rows());
    problem_.sums.overTimes(at, own, exposed, hazards_.scales);
    std::vector<double> x(centre.size() * kBlock);
    for (std::size_t block = 0; block < problem_.x.blocks(); ++block) {
      const std::size_t from = block * kBlock;
      const std::size_t rows = problem_.x.rowsOf(block);
      double residual[kBlock];
      bool any = false;
      for (std::size_t i = 0; i < rows; ++i) {
        exposed[from + i] *= hazards_.risk[from + i];
        residual[i] = -exposed[from + i];
        any = any || exposed[from + i] != 0.0;
        if (a.event[from + i] == 0) continue;
        const std::size_t k = a.end[from + i] - std::size_t{1};
        if (k < range.begin || k >= range.end) continue;
        residual[i] += times(k) * a.weight[from + i];
        any = true;
      }
      if (!any) continue;
      for (std::size_t j = 0; j < centre.size(); ++j) {
        const double* column = problem_.x.column(block, j);
        for (std::size_t i = 0; i < kBlock; ++i) x[j * kBlock + i] = column[i] - centre[j];
      }
      numerics::addWeightedSums(x.data(), residual, rows, range.gradient);
      numerics::addWeightedGram(x.data(), exposed.data() + from, rows, 1.0, range.information);
    }
  }

  void subtractMeans(const std::vector<double>& centre, Range& range) const {
    const risk::Arrangement& a = problem_.arrangement;
    const std::size_t p = centre.size();
    const std::size_t count = range.end - range.begin;
    BlockedColumns means(2 * count, p);
    std::vector<double> weight(2 * count);
    std::vector<MeanTerms> terms(count);
    for (std::size_t m = 0; m < count; ++m) {
      const std::size_t k = range.begin + m;
      terms[m] = meanTerms(tieMoments(problem_, hazards_, ties_, k));
      weight[2 * m] = times(k) * terms[m].weight;
      weight[2 * m + 1] = times(k) * terms[m].failingWeight;
    }
    numerics::inParallel(p, [&](std::size_t j) {
      std::vector<double> value(a.rows());
      std::vector<double> others(a.times());
      std::vector<double> failing(a.times());
      for (std::size_t i = 0; i < a.rows(); ++i) {
        value[i] = hazards_.risk[i] * (problem_.x(i, j) - centre[j]);
      }
      problem_.sums.overRiskSets(value, others, failing, hazards_.scales);
      for (std::size_t m = 0; m < count; ++m) {
        const std::size_t k = range.begin + m;
        means(2 * m, j) = (others[k] + terms[m].mean * failing[k]) / hazards_.all(k);
        means(2 * m + 1, j) = failing[k] / hazards_.all(k);
      }
    });
    for (std::size_t block = 0; block < means.blocks(); ++block) {
      numerics::addWeightedGram(means.column(block, 0), weight.data() + block * kBlock,
                                means.rowsOf(block), -1.0, range.information);
    }
  }

  const Problem& problem_;
  const Hazards& hazards_;
  Ties ties_;
  std::span<const double> factor_;
  std::vector<std::vector<double>> means_;  // columns x times: over the risk sets
};

// How many times the information the sum of squares is.
double ratio(double squares, double information) {
  if (squares == 0.0) return 0.0;
  return information > 0.0 ? squares / information : std::numeric_limits<double>::infinity();
}

}  // namespace

void recentre(const Problem& problem, const Hazards& hazards, Ties ties,
              std::span<const double> factor, std::span<const double> squares,
              std::vector<double>& gradient, SquareMatrix& information) {
  const std::size_t p = problem.columns();
  bool needed = false;
  for (std::size_t j = 0; j < p; ++j) {
    needed = needed || ratio(squares[j], information(j, j)) > kMostSquares;
  }
  // Factors of both signs make a sum that is near 0 of terms that are not.
  const bool positive =
      std::all_of(factor.begin(), factor.end(), [](double f) { return f >= 0.0; });
  if (!needed || !positive) return;
  const Ranges forming(problem, hazards, ties, factor);
  std::vector<Range> ranges;
  ranges.push_back(forming.form(0, problem.arrangement.times()));
  for (;;) {
    gradient.assign(p, 0.0);
    information = SquareMatrix(p);
    for (const Range& range : ranges) {
      for (std::size_t j = 0; j < p; ++j) {
        gradient[j] += range.gradient[j];
        for (std::size_t k = 0; k <= j; ++k) information(j, k) += range.information(j, k);
      }
    }
    if (ranges.size() >= kMostRanges) return;
    // The range and the column that lose most, if they can be helped.
    double worst = kMostSquares;
    std::size_t chosen = ranges.size();
    std::size_t at = 0;
    for (std::size_t r = 0; r < ranges.size(); ++r) {
      for (std::size_t j = 0; j < p; ++j) {
        const double lost = ratio(ranges[r].squares[j], information(j, j));
        if (!(lost > worst)) continue;
        const std::size_t split = forming.split(ranges[r], j);
        if (split == ranges[r].begin) continue;
        worst = lost;
        chosen = r;
        at = split;
      }
    }
    if (chosen == ranges.size()) return;
    const Range whole = ranges[chosen];
    ranges[chosen] = forming.form(whole.begin, at);
    ranges.push_back(forming.form(at, whole.end));
  }
}

}  // namespace survmeth::engine::cox
