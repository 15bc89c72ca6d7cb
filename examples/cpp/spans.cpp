// A Cox regression of numbers in memory: weeks in remission under 6-MP and placebo (Freireich et
// al., Blood 21, 1963), by the engine alone.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>

#include "engine/cox/fit.h"
#include "engine/input.h"
#include "numerics/progress.h"

namespace {

namespace engine = survmeth::engine;

engine::cox::Fit fitRemission(engine::cox::Ties ties) {
  const std::vector<double> weeks = {6,  6,  6,  7,  10, 13, 16, 22, 23, 6,  9,  10, 11, 17,
                                     19, 20, 25, 32, 32, 34, 35, 1,  1,  2,  2,  3,  4,  4,
                                     5,  5,  8,  8,  8,  8,  11, 11, 12, 12, 15, 17, 22, 23};
  std::vector<std::uint32_t> relapse(weeks.size(), 1);
  std::vector<double> placebo(weeks.size(), 1.0);
  for (std::size_t i = 0; i < 21; ++i) placebo[i] = 0.0;
  for (std::size_t i = 9; i < 21; ++i) relapse[i] = 0;  // still in remission

  const engine::Response response = {.entry = {}, .exit = weeks, .event = relapse};
  const engine::Design design = {
      .columns = {placebo}, .names = {"placebo"}, .term = {0}, .termNames = {"placebo"}};
  survmeth::numerics::Progress progress;
  return engine::cox::fit(response, engine::Rows(), design, {.ties = ties}, progress);
}

}  // namespace

int main() {
  try {
    for (const auto ties : {engine::cox::Ties::kEfron, engine::cox::Ties::kBreslow}) {
      const engine::cox::Fit fit = fitRemission(ties);
      std::printf("coefficient %.6f, std error %.6f, log-likelihood %.6f\n", fit.coefficients[0],
                  fit.standardError(0), fit.logLikelihood);
    }
  } catch (const engine::Refusal& refusal) {
    std::fprintf(stderr, "%s\n", refusal.what());
    return 1;
  }
  return 0;
}
