#include "engine/cox/risks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "engine/cox/chunks.h"
#include "numerics/elementary.h"
#include "numerics/hot.h"
#include "numerics/runningSum.h"
#include "numerics/sizes.h"

namespace survmeth::engine::cox {
namespace {

// Within this distance of 0 no sum of risks over- or underflows.
constexpr double kSafe = 300.0;
// Predictors of one stratum that lie further apart are given units row by row: up to here the square
// of a risk is a number too.
constexpr double kWidest = 600.0;

// Least and largest of some predictors; `finite` is 0 for finite numbers only.
struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  double finite = 0.0;
  void add(const Range& other) {
    low = std::min(low, other.low);
    high = std::max(high, other.high);
    finite += other.finite;
  }
  bool within(double limit) const { return finite == 0.0 && low >= -limit && high <= limit; }
};

// Eight of each, as each waits for itself.
SURVMETH_HOT void rangeOf(const double* value, std::size_t count, Range* range) {
  constexpr std::size_t kLanes = 8;
  double low[kLanes];
  double high[kLanes];
  double finite[kLanes] = {};
  std::fill(low, low + kLanes, value[0]);
  std::fill(high, high + kLanes, value[0]);
  const std::size_t whole = count / kLanes * kLanes;
  for (std::size_t i = 0; i < whole; i += kLanes) {
    for (std::size_t m = 0; m < kLanes; ++m) {
      const double v = value[i + m];
      low[m] = v < low[m] ? v : low[m];
      high[m] = v > high[m] ? v : high[m];
      finite[m] += v - v;
    }
  }
  for (std::size_t i = whole; i < count; ++i) {
    low[0] = std::min(low[0], value[i]);
    high[0] = std::max(high[0], value[i]);
    finite[0] += value[i] - value[i];
  }
  for (std::size_t m = 0; m < kLanes; ++m) range->add({low[m], high[m], finite[m]});
}

// The shift of one stratum; false where its predictors are too far apart.
bool shiftOf(std::span<const double> predictor, double& shift) {
  Range range;
  rangeOf(predictor.data(), predictor.size(), &range);
  if (range.high - range.low > kWidest) return false;
  shift = range.within(kSafe) ? 0.0 : std::floor(0.5 * (range.low + range.high));
  return true;
}

// Predictors and risks, block after block.
class Risks {
 public:
  Risks(const Problem& problem, std::span<const double> coefficients, Hazards& hazards)
      : problem_(problem),
        coefficients_(coefficients),
        hazards_(hazards),
        chunks_(problem.x),
        null_(std::all_of(coefficients.begin(), coefficients.end(),
                          [](double c) { return c == 0.0; })),
        observed_(problem.x.blocks()) {
    const std::size_t n = problem.arrangement.rows();
    if (hazards.predictor.empty()) hazards.predictor.swap(hazards.cumulative);
    hazards.predictor.resize(n);
    hazards.risk.resize(n);
    hazards.shift.assign(problem.arrangement.strata(), 0.0);
    hazards.scales = {};
    if (problem.arrangement.lateEntry()) {
      hazards.behind.clear();
    } else {
      hazards.behind.resize(numerics::product(problem.x.blocks(), problem.columns()));
    }
  }

  // False where predictors are no finite numbers. Nearly always no stratum needs a shift, and the
  // risks follow while the block's rows are at hand.
  bool form() {
    std::vector<Range> ranges(chunks_.count());
    chunks_.inParallel([&](std::size_t chunk, std::size_t begin, std::size_t end) {
      for (std::size_t block = begin; block < end; ++block) {
        predict(block);
        Range range;
        rangeOf(hazards_.predictor.data() + block * kBlock, problem_.x.rowsOf(block), &range);
        ranges[chunk].add(range);
        if (range.within(kSafe)) riskOf(block);
      }
    });
    Range all;
    for (const Range& range : ranges) all.add(range);
    if (all.finite != 0.0) return false;
    if (!all.within(kSafe) && !shifted()) {
      scale();
      return true;
    }
    sumUp();
    return true;
  }

  // The sum of weight times predictor less reference over the events.
  double observed() const {
    numerics::RunningSum sum;
    for (const double part : observed_) sum.add(part);
    return sum.value();
  }

 private:
  static constexpr std::size_t kBlock = numerics::BlockedColumns::kBlock;

  void predict(std::size_t block) {
    const risk::Arrangement& a = problem_.arrangement;
    double* predictor = hazards_.predictor.data() + block * kBlock;
    const std::size_t rows = problem_.x.rowsOf(block);
    if (a.offset.empty()) {
      std::fill_n(predictor, rows, 0.0);
    } else {
      std::copy_n(a.offset.data() + block * kBlock, rows, predictor);
    }
    if (!null_) numerics::addProduct(problem_.x.column(block, 0), coefficients_, rows, predictor);
  }

  // Risks of a block from its predictors, and what is summed up over its rows.
  void riskOf(std::size_t block) {
    const risk::Arrangement& a = problem_.arrangement;
    const std::size_t from = block * kBlock;
    const std::size_t rows = problem_.x.rowsOf(block);
    double eta[kBlock];
    for (std::size_t i = 0; i < rows; ++i) {
      eta[i] = hazards_.predictor[from + i] - hazards_.shift[a.rowStratum[from + i]];
    }
    // Four sums, as each waits for itself; a product, where a decision would be guessed wrong.
    double part[4] = {};
    for (std::size_t i = 0; i < rows; ++i) {
      part[i % 4] += a.event[from + i] * (a.weight[from + i] * eta[i]);
    }
    observed_[block] = (part[0] + part[1]) + (part[2] + part[3]);
    double* risk = hazards_.risk.data() + from;
    if (null_ && a.offset.empty()) {
      std::copy_n(a.weight.data() + from, rows, risk);
    } else {
      numerics::expArray({eta, rows}, {risk, rows});
      if (a.weighted) {
        for (std::size_t i = 0; i < rows; ++i) risk[i] *= a.weight[from + i];
      }
    }
    if (a.lateEntry() || block == 0) return;
    const std::span<double> sums = behind(block - 1);
    std::fill(sums.begin(), sums.end(), 0.0);
    numerics::addWeightedSums(problem_.x.column(block, 0), risk, continuedRows(problem_, block),
                              sums);
  }

  bool shifted() {
    const risk::Arrangement& a = problem_.arrangement;
    for (std::size_t s = 0; s < a.strata(); ++s) {
      const std::size_t begin = a.stratumRow[s];
      const std::size_t count = a.stratumRow[s + 1] - begin;
      if (!shiftOf({hazards_.predictor.data() + begin, count}, hazards_.shift[s])) return false;
    }
    chunks_.inParallel([&](std::size_t, std::size_t begin, std::size_t end) {
      for (std::size_t block = begin; block < end; ++block) riskOf(block);
    });
    return true;
  }

  // Units for rows and times; predictors lose nothing to them.
  void scale() {
    const risk::Arrangement& a = problem_.arrangement;
    risk::Scales& scales = hazards_.scales;
    hazards_.shift.assign(a.strata(), 0.0);
    hazards_.behind.clear();
    scales.row.resize(a.rows());
    std::vector<double> eta(a.rows());
    for (std::size_t i = 0; i < a.rows(); ++i) {
      scales.row[i] = std::round(hazards_.predictor[i] / risk::kScaleStep);
      eta[i] = hazards_.predictor[i] - risk::kScaleStep * scales.row[i];
    }
    numerics::expArray(eta, hazards_.risk);
    for (std::size_t i = 0; i < a.rows(); ++i) hazards_.risk[i] *= a.weight[i];
    scales.time = problem_.sums.largestInRiskSets(scales.row);
    numerics::RunningSum sum;
    for (std::size_t i = 0; i < a.rows(); ++i) {
      if (a.event[i] == 0) continue;
      const double reference = risk::kScaleStep * scales.time[a.end[i] - std::size_t{1}];
      sum.add(a.weight[i] * (hazards_.predictor[i] - reference));
    }
    observed_.assign(1, sum.value());
  }

  std::span<double> behind(std::size_t block) {
    const std::size_t p = problem_.columns();
    return {hazards_.behind.data() + block * p, p};
  }

  // From the sums of one block to those of all the stratum's blocks behind; what rounding takes
  // from a sum goes into the next.
  void sumUp() {
    const std::size_t blocks = problem_.x.blocks();
    if (problem_.arrangement.lateEntry() || blocks == 0) return;
    const std::span<double> none = behind(blocks - 1);
    std::fill(none.begin(), none.end(), 0.0);
    std::vector<double> lost(problem_.columns(), 0.0);
    for (std::size_t block = blocks - 1; block-- > 0;) {
      const std::span<double> sums = behind(block);
      if (continuedRows(problem_, block + 1) < problem_.x.rowsOf(block + 1)) {
        std::fill(lost.begin(), lost.end(), 0.0);
        continue;
      }
      const std::span<const double> base = behind(block + 1);
      for (std::size_t j = 0; j < lost.size(); ++j) {
        const double part = lost[j] + sums[j];
        const double sum = base[j] + part;
        const double added = sum - base[j];
        lost[j] = (base[j] - (sum - added)) + (part - added);
        sums[j] = sum;
      }
    }
  }

  const Problem& problem_;
  std::span<const double> coefficients_;
  Hazards& hazards_;
  Chunks chunks_;
  bool null_;
  std::vector<double> observed_;  // of each block
};

}  // namespace

bool formRisks(const Problem& problem, std::span<const double> coefficients, Hazards& hazards,
               double& observed) {
  Risks risks(problem, coefficients, hazards);
  if (!risks.form()) return false;
  observed = risks.observed();
  return true;
}

}  // namespace survmeth::engine::cox
