#include "analysis/concordance.h"

#include <vector>

#include "engine/cox/concordance.h"
#include "engine/risk/arrangement.h"

namespace survmeth::analysis {

double concordanceOf(std::span<const double> time, std::span<const std::uint32_t> event,
                     std::span<const double> score) {
  const engine::Response response{{}, time, event};
  engine::Design scores;
  scores.columns = {score};
  scores.names = scores.termNames = {"score"};
  scores.term = {0};
  engine::risk::check(response, {}, scores);
  const engine::risk::Arrangement arrangement(response, {}, engine::risk::kTieTolerance);
  std::vector<double> arranged;
  arranged.reserve(arrangement.rows());
  for (const std::uint32_t row : arrangement.source) arranged.push_back(score[row]);
  return engine::cox::concordance(arrangement, arranged, {}, 0).estimate;
}

}  // namespace survmeth::analysis
