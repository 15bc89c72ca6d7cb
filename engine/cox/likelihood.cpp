#include "engine/cox/likelihood.h"

#include <algorithm>

namespace survmeth::engine::cox {
namespace {

using numerics::BlockedColumns;
using numerics::SquareMatrix;
constexpr std::size_t kBlock = BlockedColumns::kBlock;

// The outer products of one time's means, u2 (a + m E)(a + m E)' + rest E E' with a the sum of the
// others, E that of the failing rows, both over D0: every term positive.
struct MeanTerms {
  double mean, weight, failingWeight;
};

MeanTerms meanTerms(const TieMoments& m) {
  if (m.u2 == 0.0) return {1.0, 0.0, 0.0};
  const double mean = m.u2f / m.u2;
  return {mean, m.u2, std::max(0.0, m.u2ff - mean * m.u2f)};
}

// The rows' part: weights r A of the outer products and w delta - r A of the gradient.
class RowTerms {
 public:
  RowTerms(const Problem& problem, const Hazards& hazards, std::span<const double> factor,
           std::span<const double> cumulative)
      : problem_(problem),
        hazards_(hazards),
        factor_(factor),
        cumulative_(cumulative),
        work_(problem.columns() * kBlock) {}

  void add(std::size_t block, std::vector<double>& gradient, SquareMatrix& information) {
    const risk::Arrangement& a = problem_.arrangement;
    const std::size_t rows = problem_.x.rowsOf(block);
    double exposed[kBlock];
    double residual[kBlock];
    for (std::size_t i = 0; i < rows; ++i) {
      const std::size_t row = block * kBlock + i;
      exposed[i] = hazards_.risk[row] * cumulative_[row];
      double observed = a.event[row] != 0 ? a.weight[row] : 0.0;
      if (!factor_.empty() && a.event[row] != 0) observed *= factor_[a.end[row] - std::size_t{1}];
      residual[i] = observed - exposed[i];
    }
    const double* x = problem_.x.column(block, 0);
    numerics::addWeightedSums(x, residual, rows, gradient);
    numerics::addWeightedGram(x, exposed, rows, 1.0, work_.data(), information);
  }

 private:
  const Problem& problem_;
  const Hazards& hazards_;
  std::span<const double> factor_, cumulative_;
  std::vector<double> work_;
};

// Sums of r x from each row of a block to the end of its stratum, block after block from the last,
// for rows that are at risk from the beginning; and the means at the event times in the block.
class BackwardMeans {
 public:
  BackwardMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                std::span<const double> factor)
      : problem_(problem),
        hazards_(hazards),
        ties_(ties),
        factor_(factor),
        sums_(kBlock * 4),
        means_(problem.columns() * kBlock),
        work_(problem.columns() * kBlock),
        base_(problem.columns(), 0.0),
        lost_(problem.columns(), 0.0),
        others_(problem.columns(), 0.0),
        extra_(problem.columns(), 0.0),
        time_(problem.arrangement.times()),
        stratum_(problem.arrangement.strata()) {}

  void subtract(std::size_t block, SquareMatrix& information) {
    findSegments(block);
    findActions(block);
    for (std::size_t j = 0; j < problem_.columns(); j += 4) {
      const std::size_t count = std::min<std::size_t>(4, problem_.columns() - j);
      if (count == 4) {
        sumColumns<4>(block, j);
      } else {
        for (std::size_t c = 0; c < count; ++c) sumColumns<1>(block, j + c, c);
      }
      for (std::size_t c = 0; c < count; ++c) {
        formMeans(sums_.data() + c * kBlock, j + c);
      }
    }
    const std::size_t rows = std::min(count_, kBlock);
    numerics::addWeightedGram(means_.data(), weight_, rows, -1.0, work_.data(), information);
    if (rows == count_) return;
    for (std::size_t j = 0; j < problem_.columns(); ++j) {
      for (std::size_t k = 0; k <= j; ++k) {
        information(j, k) -= weight_[kBlock] * extra_[j] * extra_[k];
      }
    }
  }

 private:
  struct Segment {
    std::size_t begin, stop;  // within the block
    bool last;                // the stratum ends here
  };
  // One event time: `hold` keeps the sum over the rows at risk that do not fail.
  enum class Kind { kHoldNothing, kHold, kSingle, kTied };
  struct Action {
    Kind kind;
    std::size_t row;
    double scale, mean;
  };

  void findSegments(std::size_t block) {
    const risk::Arrangement& a = problem_.arrangement;
    segments_.clear();
    const std::size_t from = block * kBlock;
    std::size_t stop = from + problem_.x.rowsOf(block);
    while (stop > from) {
      while (stratum_ > 0 && a.stratumRow[stratum_ - 1] >= stop) --stratum_;
      const std::size_t begin = std::max<std::size_t>(from, a.stratumRow[stratum_ - 1]);
      segments_.push_back({begin - from, stop - from, stop == a.stratumRow[stratum_]});
      stop = begin;
    }
  }

  void findActions(std::size_t block) {
    const risk::Arrangement& a = problem_.arrangement;
    const std::size_t from = block * kBlock;
    actions_.clear();
    count_ = 0;
    while (time_ > 0) {
      const std::size_t k = time_ - 1;
      const bool tied = a.events[k] > 1 && ties_ != Ties::kBreslow;
      if (tied && !held_) {
        const std::size_t row = a.firstEvent[k] + a.events[k];
        if (row == a.stratumRow[a.timeStratum[k] + 1]) {
          actions_.push_back({Kind::kHoldNothing, 0, 0.0, 0.0});
        } else if (row >= from) {
          actions_.push_back({Kind::kHold, row - from, 0.0, 0.0});
        } else {
          return;
        }
        held_ = true;
      }
      if (a.firstEvent[k] < from) return;
      addTerms(k, tied, a.firstEvent[k] - from);
      held_ = false;
      --time_;
    }
  }

  void addTerms(std::size_t k, bool tied, std::size_t row) {
    const MeanTerms terms = meanTerms(tieMoments(problem_, hazards_, ties_, k));
    if (terms.weight == 0.0) return;
    const double times = factor_.empty() ? 1.0 : factor_[k];
    actions_.push_back(
        {tied ? Kind::kTied : Kind::kSingle, row, 1.0 / hazards_.all(k), terms.mean});
    weight_[count_++] = times * terms.weight;
    if (tied) weight_[count_++] = times * terms.failingWeight;
  }

  template <std::size_t kColumns>
  void sumColumns(std::size_t block, std::size_t j, std::size_t place = 0) {
    const double* risk = hazards_.risk.data() + block * kBlock;
    const double* x = problem_.x.column(block, j);
    double* sums = sums_.data() + place * kBlock;
    for (const Segment& segment : segments_) {
      if (segment.last) {
        for (std::size_t c = 0; c < kColumns; ++c) base_[j + c] = lost_[j + c] = 0.0;
      }
      double part[kColumns];
      for (std::size_t c = 0; c < kColumns; ++c) part[c] = lost_[j + c];
      for (std::size_t i = segment.stop; i-- > segment.begin;) {
        for (std::size_t c = 0; c < kColumns; ++c) {
          part[c] += risk[i] * x[c * kBlock + i];
          sums[c * kBlock + i] = part[c];
        }
      }
      for (std::size_t c = 0; c < kColumns; ++c) {
        const double base = base_[j + c];
        for (std::size_t i = segment.begin; i < segment.stop; ++i) sums[c * kBlock + i] += base;
        // What rounding takes from the base goes into the next part.
        const double sum = base + part[c];
        const double added = sum - base;
        lost_[j + c] = (base - (sum - added)) + (part[c] - added);
        base_[j + c] = sum;
      }
    }
  }

  void formMeans(const double* sums, std::size_t j) {
    double& others = others_[j];
    double formed[kBlock + 1];
    double* means = formed;
    for (const Action& action : actions_) {
      switch (action.kind) {
        case Kind::kHoldNothing:
          others = 0.0;
          break;
        case Kind::kHold:
          others = sums[action.row];
          break;
        case Kind::kSingle:
          *means++ = sums[action.row] * action.scale;
          break;
        case Kind::kTied: {
          const double failing = sums[action.row] - others;
          *means++ = (others + action.mean * failing) * action.scale;
          *means++ = failing * action.scale;
          break;
        }
      }
    }
    std::copy_n(formed, std::min(count_, kBlock), means_.data() + j * kBlock);
    if (count_ > kBlock) extra_[j] = formed[kBlock];
  }

  const Problem& problem_;
  const Hazards& hazards_;
  Ties ties_;
  std::span<const double> factor_;
  std::vector<double> sums_, means_, work_, base_, lost_, others_, extra_;
  std::size_t time_, stratum_;
  bool held_ = false;
  std::vector<Segment> segments_;
  std::vector<Action> actions_;
  // A tied time gives two means and has two rows in the block, but for the block's last time: its
  // other rows may stand in the next block.
  double weight_[kBlock + 1];
  std::size_t count_ = 0;
};

// The means where rows enter late: column after column over all event times.
void subtractMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                   std::span<const double> factor, SquareMatrix& information) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t p = problem.columns();
  std::vector<std::size_t> place(a.times());
  std::vector<double> weight;
  std::vector<MeanTerms> terms(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    terms[k] = meanTerms(tieMoments(problem, hazards, ties, k));
    place[k] = weight.size();
    const double times = factor.empty() ? 1.0 : factor[k];
    if (terms[k].weight != 0.0) weight.push_back(times * terms[k].weight);
    if (terms[k].failingWeight != 0.0) weight.push_back(times * terms[k].failingWeight);
  }
  BlockedColumns means(weight.size(), p);
  std::vector<double> value(a.rows());
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  for (std::size_t j = 0; j < p; ++j) {
    for (std::size_t i = 0; i < a.rows(); ++i) value[i] = hazards.risk[i] * problem.x(i, j);
    problem.sums.overRiskSets(value, others, failing);
    for (std::size_t k = 0; k < a.times(); ++k) {
      const double whole = hazards.all(k);
      std::size_t to = place[k];
      if (terms[k].weight != 0.0) {
        means(to++, j) = (others[k] + terms[k].mean * failing[k]) / whole;
      }
      if (terms[k].failingWeight != 0.0) means(to, j) = failing[k] / whole;
    }
  }
  std::vector<double> work(p * kBlock);
  for (std::size_t block = 0; block < means.blocks(); ++block) {
    numerics::addWeightedGram(means.column(block, 0), weight.data() + block * kBlock,
                              means.rowsOf(block), -1.0, work.data(), information);
  }
}

}  // namespace

void derivatives(const Problem& problem, const Hazards& hazards, Ties ties,
                 std::span<const double> factor, std::vector<double>& gradient,
                 SquareMatrix& information) {
  const risk::Arrangement& a = problem.arrangement;
  gradient.assign(problem.columns(), 0.0);
  information = SquareMatrix(problem.columns());
  if (problem.columns() == 0) return;
  std::vector<double> weighted;
  if (!factor.empty()) {
    std::vector<double> at(a.times());
    std::vector<double> own(a.times());
    for (std::size_t k = 0; k < a.times(); ++k) {
      at[k] = factor[k] * hazards.increment[k];
      own[k] = factor[k] * hazards.own[k];
    }
    weighted.resize(a.rows());
    problem.sums.overTimes(at, own, weighted);
  }
  RowTerms rows(problem, hazards, factor,
                factor.empty() ? std::span<const double>(hazards.cumulative) : weighted);
  BackwardMeans means(problem, hazards, ties, factor);
  for (std::size_t block = problem.x.blocks(); block-- > 0;) {
    rows.add(block, gradient, information);
    if (!a.lateEntry()) means.subtract(block, information);
  }
  if (a.lateEntry()) subtractMeans(problem, hazards, ties, factor, information);
  numerics::mirror(information);
}

bool evaluate(const Problem& problem, Ties ties, std::span<const double> coefficients,
              Hazards& hazards, numerics::NewtonPoint& point) {
  if (!hazardsAt(problem, ties, coefficients, hazards)) return false;
  derivatives(problem, hazards, ties, {}, point.gradient, point.information);
  point.value = hazards.logLikelihood;
  if (ties == Ties::kDiscrete) addDiscreteTies(problem, hazards, point);
  if (ties == Ties::kMarginal) addMarginalTies(problem, hazards, point);
  return true;
}

std::vector<std::uint32_t> othersAtRisk(const risk::Arrangement& arrangement, std::size_t k) {
  std::vector<std::uint32_t> rows;
  const std::uint32_t stop = arrangement.stratumRow[arrangement.timeStratum[k] + 1];
  for (std::uint32_t i = arrangement.firstEvent[k] + arrangement.events[k]; i < stop; ++i) {
    if (arrangement.firstTime(i) <= k) rows.push_back(i);
  }
  return rows;
}

}  // namespace survmeth::engine::cox
