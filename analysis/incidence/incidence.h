// What survmeth incidence and its short form gray are asked, and what is found.
#ifndef ANALYSIS_INCIDENCE_INCIDENCE_H_
#define ANALYSIS_INCIDENCE_INCIDENCE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/pairs.h"
#include "engine/incidence/gray.h"
#include "engine/incidence/lost.h"
#include "frame/frame.h"
#include "frame/labels.h"
#include "model/eventTypes.h"
#include "numerics/progress.h"

namespace survmeth::analysis {

struct IncidenceRequest {
  std::string time, status, censor, event;
  std::vector<std::string> group;  // crossed
  std::string entry, weights, cluster, strata;
  engine::WeightKind weightsAre = engine::WeightKind::kFrequencies;
  double rho = 0, alpha = 0.05;
  Pairs pairs = Pairs::kNone;
  engine::incidence::Variance variance = engine::incidence::Variance::kAalen;
  engine::curves::Scale scale = engine::curves::Scale::kLogLog;
  std::vector<double> at;
  std::optional<double> tau;
  bool curves = false;       // printed
  bool kaplanMeier = false;  // 1 - Kaplan-Meier beside the incidences
};

// One type of event that is asked for.
struct IncidenceOfType {
  std::string label;
  std::size_t cause = 0;                            // index into a curve's causes
  std::optional<engine::incidence::GrayTest> test;  // none where nothing is to be compared
  std::vector<engine::curves::PairTest> pairs;
  // Of each group.
  std::vector<std::vector<engine::incidence::Reading>> at;
  std::vector<engine::incidence::TimeLost> lost;
  // Of the second, third ... group against the first.
  std::vector<std::vector<engine::curves::Contrast>> differences;
  std::vector<engine::incidence::LostContrasts> lostContrasts;
};

struct IncidenceAnswer {
  model::EventTypes event;
  frame::Labels group;  // one of all rows where there is no column of groups
  bool robust = false;
  std::vector<std::size_t> causes;  // of each cause: its status
  std::vector<engine::incidence::Curve> curves;
  std::vector<double> at;  // times of the readings
  std::vector<IncidenceOfType> types;

  bool several() const { return group.labels.size() > 1; }
  const std::string& causeLabel(std::size_t cause) const {
    return event.status.labels[causes[cause]];
  }
};

IncidenceAnswer fitIncidence(const frame::Frame& data, const IncidenceRequest& request,
                             numerics::Progress& progress);
// The tests alone.
IncidenceAnswer fitGray(const frame::Frame& data, const IncidenceRequest& request,
                        numerics::Progress& progress);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_INCIDENCE_INCIDENCE_H_
