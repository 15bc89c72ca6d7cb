// What survmeth life is asked.
#ifndef ANALYSIS_LIFE_REQUEST_H_
#define ANALYSIS_LIFE_REQUEST_H_

#include <optional>
#include <string>
#include <vector>

#include "engine/curves/curve.h"

namespace survmeth::analysis {

enum class LifeTable { kNone, kKaplanMeier, kActuarial };

struct LifeRequest {
  std::string time, event, weight;
  std::vector<std::string> group;        // crossed
  std::vector<std::string> eventValues;  // empty: those that mean so (model/coding.h)
  double alpha = 0.05;
  engine::curves::Scale limits = engine::curves::Scale::kLogLog;
  LifeTable table = LifeTable::kNone;
  std::optional<double> width;
  std::vector<double> bounds;
  std::vector<double> quantiles, at;
  std::optional<double> tau;

  bool intervals() const { return width || !bounds.empty(); }
  // Of the curves; only equal times are one.
  engine::curves::Options curves() const;
  double tolerance() const { return 0.0; }
};

// Refuses options that do not go together; throws BadOption.
void checkLife(const LifeRequest& request);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_LIFE_REQUEST_H_
