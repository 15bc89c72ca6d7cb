// Score residuals of all rows and the sums of their outer products.
#include <algorithm>
#include <vector>

#include "engine/cox/chunks.h"
#include "engine/cox/means.h"
#include "engine/cox/residuals.h"
#include "engine/cox/scores.h"

namespace survmeth::engine::cox {
namespace {

using numerics::BlockedColumns;
constexpr std::size_t kBlock = BlockedColumns::kBlock;

// What the sums of one column over the risk sets are multiplied with at each time: for the mean
// that an event is compared with, and for the increments times the means, of the rows that stay
// and of those that fail.
struct ScoreFactors {
  double meanOthers, meanFailing, others, mixed, failing;
  double once;  // 1 / D0; its square may be below the smallest number
};

std::vector<ScoreFactors> scoreFactors(const Problem& problem, const Hazards& hazards, Ties ties) {
  const risk::Arrangement& a = problem.arrangement;
  std::vector<ScoreFactors> factors(a.times());
  for (std::size_t k = 0; k < a.times(); ++k) {
    const TieMoments m = tieMoments(problem, hazards, ties, k);
    const double once = 1.0 / hazards.all(k);
    const double perEvent = once / a.eventWeight[k];
    factors[k] = {m.u * perEvent, m.uf * perEvent, m.u2 * once, m.u2f * once, m.u2ff * once, once};
  }
  return factors;
}

// Column by column.
BlockedColumns scoreColumns(const Problem& problem, const Hazards& hazards, Ties ties) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t n = a.rows();
  const std::size_t times = a.times();
  BlockedColumns result(n, problem.columns());
  if (times == 0) return result;
  const std::vector<ScoreFactors> factors = scoreFactors(problem, hazards, ties);
  numerics::LargeArray<double> risk(hazards.risk);
  for (std::size_t i = 0; i < n && a.weighted; ++i) risk[i] /= a.weight[i];
  numerics::inParallel(problem.columns(), [&](std::size_t j) {
    std::vector<double> value(n);  // risk times x, then the sums of increments times means
    std::vector<double> others(times);
    std::vector<double> failing(times);
    std::vector<double> mean(times);
    riskTimes(problem, hazards, j, value);
    problem.sums.overRiskSets(value, others, failing, hazards.scales);
    for (std::size_t k = 0; k < times; ++k) {
      const ScoreFactors& factor = factors[k];
      mean[k] = factor.meanOthers * others[k] + factor.meanFailing * failing[k];
      const double o = others[k] * factor.once;
      const double f = failing[k] * factor.once;
      others[k] = factor.others * o + factor.mixed * f;
      failing[k] = factor.mixed * o + factor.failing * f;
    }
    problem.sums.overTimes(others, failing, value, hazards.scales);
    for (std::size_t block = 0; block < result.blocks(); ++block) {
      const double* x = problem.x.column(block, j);
      double* out = result.column(block, j);
      const std::size_t from = block * kBlock;
      for (std::size_t i = 0; i < result.rowsOf(block); ++i) {
        const std::size_t row = from + i;
        // A time that exists; it counts for events only, by a product and not by a decision.
        const double away = x[i] - mean[std::max<std::size_t>(a.end[row], 1) - 1];
        out[i] = static_cast<double>(a.event[row]) * away -
                 risk[row] * (x[i] * hazards.cumulative[row] - value[row]);
      }
    }
  });
  return result;
}

// Calls work(chunk, block, scores) for every block of the rows, on several threads: the chunk is
// the part of the rows that the block belongs to, whose blocks come in ascending order.
template <typename Work>
void forwardScores(const Problem& problem, const Hazards& hazards, Ties ties, const Work& work) {
  const risk::Arrangement& a = problem.arrangement;
  const Chunks chunks(problem.x);
  // What each part carries on by itself, and then with what the parts before it do.
  std::vector<std::vector<double>> carried(chunks.count());
  numerics::inParallel(
      chunks.count() - std::min<std::size_t>(1, chunks.count()), [&](std::size_t chunk) {
        ForwardScores scores(problem, hazards, ties);
        for (std::size_t block = chunks.begin(chunk); block < chunks.end(chunk); ++block) {
          scores.pass(block);
        }
        carried[chunk] = scores.carried();
      });
  for (std::size_t chunk = 1; chunk + 1 < chunks.count(); ++chunk) {
    const std::size_t before = chunks.begin(chunk) * kBlock - 1;
    const std::size_t last = chunks.end(chunk) * kBlock - 1;
    if (a.rowStratum[before] != a.rowStratum[last]) continue;
    for (std::size_t j = 0; j < problem.columns(); ++j) carried[chunk][j] += carried[chunk - 1][j];
  }
  chunks.inParallel([&](std::size_t chunk, std::size_t begin, std::size_t end) {
    ForwardScores scores(problem, hazards, ties);
    if (chunk > 0) scores.carried() = carried[chunk - 1];
    std::vector<double> formed(problem.columns() * kBlock);
    for (std::size_t block = begin; block < end; ++block) {
      scores.form(block, formed.data());
      work(chunk, block, formed.data());
    }
  });
}

}  // namespace

BlockedColumns scoreRows(const Problem& problem, const Hazards& hazards, Ties ties) {
  if (hazards.byColumn(problem)) return scoreColumns(problem, hazards, ties);
  BlockedColumns result(problem.arrangement.rows(), problem.columns());
  forwardScores(problem, hazards, ties, [&](std::size_t, std::size_t block, const double* formed) {
    for (std::size_t j = 0; j < problem.columns(); ++j) {
      std::copy_n(formed + j * kBlock, result.rowsOf(block), result.column(block, j));
    }
  });
  return result;
}

namespace {

// Adds weighted rows of one block, and their outer products.
void addScores(const double* scores, const double* weight, std::size_t rows, ScoreSums& sums) {
  double squares[kBlock];
  for (std::size_t i = 0; i < rows; ++i) squares[i] = weight[i] * weight[i];
  numerics::addWeightedSums(scores, weight, rows, sums.total);
  numerics::addWeightedGram(scores, squares, rows, 1.0, sums.products);
}

BlockedColumns clusterRows(const Problem& problem, const BlockedColumns& rows) {
  const risk::Arrangement& a = problem.arrangement;
  BlockedColumns clusters(problem.clusters, rows.columns());
  numerics::inParallel(rows.columns(), [&](std::size_t j) {
    for (std::size_t i = 0; i < rows.rows(); ++i) {
      clusters(problem.cluster[a.source[i]], j) += a.weight[i] * rows(i, j);
    }
  });
  return clusters;
}

}  // namespace

ScoreSums scoreSums(const Problem& problem, Ties ties, std::span<const double> coefficients) {
  Hazards hazards;
  return scoreSums(problem, ties, coefficients, hazards);
}

ScoreSums scoreSums(const Problem& problem, Ties ties, std::span<const double> coefficients,
                    Hazards& hazards) {
  const risk::Arrangement& a = problem.arrangement;
  const std::size_t p = problem.columns();
  hazardsAt(problem, ties, coefficients, hazards);
  ScoreSums sums{std::vector<double>(p, 0.0), numerics::SquareMatrix(p)};
  if (p == 0) return sums;
  // Of each part of the rows its own sums, which are added up in the parts' order.
  std::vector<ScoreSums> parts;
  if (!hazards.byColumn(problem) && problem.cluster.empty()) {
    parts.assign(Chunks(problem.x).count(), sums);
    forwardScores(problem, hazards, ties,
                  [&](std::size_t chunk, std::size_t block, const double* formed) {
                    addScores(formed, a.weight.data() + block * kBlock, problem.x.rowsOf(block),
                              parts[chunk]);
                  });
  } else {
    BlockedColumns rows = scoreRows(problem, hazards, ties);
    std::vector<double> weight = a.weight;
    if (!problem.cluster.empty()) {
      rows = clusterRows(problem, rows);
      weight.assign(problem.clusters, 1.0);
    }
    const Chunks chunks(rows);
    parts.assign(chunks.count(), sums);
    chunks.inParallel([&](std::size_t chunk, std::size_t begin, std::size_t end) {
      for (std::size_t block = begin; block < end; ++block) {
        addScores(rows.column(block, 0), weight.data() + block * kBlock, rows.rowsOf(block),
                  parts[chunk]);
      }
    });
  }
  for (const ScoreSums& part : parts) {
    for (std::size_t j = 0; j < p; ++j) {
      sums.total[j] += part.total[j];
      for (std::size_t k = 0; k <= j; ++k) sums.products(j, k) += part.products(j, k);
    }
  }
  numerics::mirror(sums.products);
  return sums;
}

}  // namespace survmeth::engine::cox
