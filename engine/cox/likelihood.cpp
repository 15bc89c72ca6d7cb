#include "engine/cox/likelihood.h"

#include "engine/cox/chunks.h"
#include "engine/cox/means.h"
#include "engine/cox/recentred.h"

namespace survmeth::engine::cox {
namespace {

using numerics::BlockedColumns;
using numerics::SquareMatrix;
constexpr std::size_t kBlock = BlockedColumns::kBlock;

// The rows' part: weights r A of the outer products and w delta - r A of the gradient.
class RowTerms {
 public:
  RowTerms(const Problem& problem, const Hazards& hazards, std::span<const double> factor,
           std::span<const double> cumulative)
      : problem_(problem), hazards_(hazards), factor_(factor), cumulative_(cumulative) {}

  void add(std::size_t block, std::vector<double>& gradient, SquareMatrix& information) const {
    const risk::Arrangement& a = problem_.arrangement;
    const std::size_t rows = problem_.x.rowsOf(block);
    const std::size_t from = block * kBlock;
    double exposed[kBlock];
    double observed[kBlock];
    for (std::size_t i = 0; i < rows; ++i) {
      exposed[i] = hazards_.risk[from + i] * cumulative_[from + i];
      observed[i] = a.event[from + i] * a.weight[from + i];
    }
    if (!factor_.empty()) {
      for (std::size_t i = 0; i < rows; ++i) {
        if (a.event[from + i] != 0) observed[i] *= factor_[a.end[from + i] - std::size_t{1}];
      }
    }
    double residual[kBlock];
    for (std::size_t i = 0; i < rows; ++i) residual[i] = observed[i] - exposed[i];
    const double* x = problem_.x.column(block, 0);
    numerics::addWeightedSums(x, residual, rows, gradient);
    numerics::addWeightedGram(x, exposed, rows, 1.0, information);
  }

 private:
  const Problem& problem_;
  const Hazards& hazards_;
  std::span<const double> factor_, cumulative_;
};

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
    problem.sums.overTimes(at, own, weighted, hazards.scales);
  }
  const RowTerms rows(problem, hazards, factor,
                      factor.empty() ? std::span<const double>(hazards.cumulative) : weighted);
  // Of each part of the rows its own sums, which are added up in the parts' order; those of the means
  // beside those of the rows.
  const Chunks chunks(problem.x);
  std::vector<std::vector<double>> gradients(chunks.count(), gradient);
  std::vector<SquareMatrix> squares(chunks.count(), information);
  std::vector<SquareMatrix> squaresOfMeans(chunks.count(), information);
  chunks.inParallel([&](std::size_t chunk, std::size_t begin, std::size_t end) {
    if (hazards.byColumn(problem)) {
      for (std::size_t block = end; block-- > begin;) {
        rows.add(block, gradients[chunk], squares[chunk]);
      }
      return;
    }
    BackwardMeans means(problem, hazards, ties, factor, end);
    for (std::size_t block = end; block-- > begin;) {
      rows.add(block, gradients[chunk], squares[chunk]);
      means.subtract(block, squaresOfMeans[chunk]);
    }
  });
  std::vector<double> whole(problem.columns(), 0.0);
  for (std::size_t chunk = 0; chunk < chunks.count(); ++chunk) {
    for (std::size_t j = 0; j < gradient.size(); ++j) {
      gradient[j] += gradients[chunk][j];
      whole[j] += squares[chunk](j, j);
      for (std::size_t k = 0; k <= j; ++k) {
        information(j, k) += squares[chunk](j, k) + squaresOfMeans[chunk](j, k);
      }
    }
  }
  if (hazards.byColumn(problem)) subtractMeans(problem, hazards, ties, factor, information);
  recentre(problem, hazards, ties, factor, whole, gradient, information);
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
