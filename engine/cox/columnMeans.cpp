// The means over risk sets column by column, over all event times.
#include <algorithm>

#include "engine/cox/chunks.h"
#include "engine/cox/means.h"
#include "numerics/largeArray.h"
#include "numerics/threads.h"

namespace survmeth::engine::cox {

using numerics::BlockedColumns;
using numerics::SquareMatrix;

void riskTimes(const Problem& problem, const Hazards& hazards, std::size_t j,
               std::span<double> value) {
  for (std::size_t block = 0; block < problem.x.blocks(); ++block) {
    const double* x = problem.x.column(block, j);
    const double* risk = hazards.risk.data() + block * BlockedColumns::kBlock;
    double* to = value.data() + block * BlockedColumns::kBlock;
    for (std::size_t i = 0; i < problem.x.rowsOf(block); ++i) to[i] = risk[i] * x[i];
  }
}

namespace {

// Columns whose sums are formed together: a row's times are looked up once for all of them, at the
// price of memory for each event time. No more than leave every thread some.
std::size_t columnsAbreast(const Problem& problem) {
  const std::size_t n = problem.arrangement.rows();
  const std::size_t times = problem.arrangement.times();
  const std::size_t affordable = times <= n / 8 ? risk::Sums::kAbreast : times <= n / 4 ? 2 : 1;
  const std::size_t threads = numerics::threads();
  return std::clamp<std::size_t>((problem.columns() + threads - 1) / threads, 1, affordable);
}

}  // namespace

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
  BlockedColumns means = BlockedColumns::unfilled(weight.size(), p);
  const auto put = [&](std::size_t j, const double* others, const double* failing,
                       std::size_t step) {
    for (std::size_t k = 0; k < a.times(); ++k) {
      const double whole = hazards.all(k);
      std::size_t to = place[k];
      if (terms[k].weight != 0.0) {
        means(to++, j) = (others[k * step] + terms[k].mean * failing[k * step]) / whole;
      }
      if (terms[k].failingWeight != 0.0) means(to, j) = failing[k * step] / whole;
    }
  };
  const std::size_t abreast = hazards.scales.empty() ? columnsAbreast(problem) : 1;
  numerics::inParallel((p + abreast - 1) / abreast, [&](std::size_t group) {
    const std::size_t j = group * abreast;
    const std::size_t columns = std::min(abreast, p - j);
    numerics::LargeArray<double> others(a.times() * columns);
    numerics::LargeArray<double> failing(a.times() * columns);
    if (hazards.scales.empty()) {
      problem.sums.overRiskSets(hazards.risk, problem.x, j, columns, others, failing);
    } else {
      std::vector<double> value(a.rows());
      riskTimes(problem, hazards, j, value);
      problem.sums.overRiskSets(value, others, failing, hazards.scales);
    }
    for (std::size_t c = 0; c < columns; ++c) {
      put(j + c, others.data() + c, failing.data() + c, columns);
    }
  });
  const Chunks chunks(means);
  std::vector<SquareMatrix> parts(chunks.count(), SquareMatrix(p));
  chunks.inParallel([&](std::size_t chunk, std::size_t begin, std::size_t end) {
    for (std::size_t block = begin; block < end; ++block) {
      numerics::addWeightedGram(means.column(block, 0),
                                weight.data() + block * BlockedColumns::kBlock, means.rowsOf(block),
                                1.0, parts[chunk]);
    }
  });
  for (const SquareMatrix& part : parts) {
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t k = 0; k <= j; ++k) information(j, k) -= part(j, k);
    }
  }
}

}  // namespace survmeth::engine::cox
