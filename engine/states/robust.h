// Robust errors of states: what the weight of each cluster does to probabilities, times in states
// and hazards (infinitesimal jackknife).
#ifndef ENGINE_STATES_ROBUST_H_
#define ENGINE_STATES_ROBUST_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/states/estimate.h"
#include "engine/states/path.h"

namespace survmeth::engine::states {

class Robust {
 public:
  // The clusters are those of the histories, else their subjects, else their rows.
  //
  // In   estimates   of these histories and options, `path` their steps
  Robust(const Histories& histories, const Options& options, const Estimates& estimates,
         Path& path);

  // Sets the variances of the probabilities at all times. The squares of the influences are carried
  // from step to step with their products with the weights at risk; of a single cluster the
  // influence is only known when one of its rows comes or goes.
  //
  // Cost O(n states^2 log(times) + times states^2)
  void setVariances(Estimates& estimates);

  // The errors of the times in states up to `horizon`, backwards from there.
  //
  // Cost O(n states + times states^2)
  void setStayErrors(double horizon, Estimates& estimates);

  // The variances of the hazard of one transition.
  //
  // Cost O(n)
  void setVariances(Transition& transition) const;

 private:
  // A row while it is at risk: at the steps first .. last.
  struct Stay {
    std::uint32_t row, cluster, first, last;
  };
  struct Moments;
  std::vector<double> initial() const;
  double weightOf(std::uint32_t row) const;
  bool jumps(const Stay& stay) const;
  double push(const Stay& stay) const;

  const Histories& h_;
  std::vector<double> time_;
  std::vector<double> start_;  // p(start), where it is observed
  double startTime_;
  Path& path_;
  std::size_t clusters_ = 0;
  std::vector<std::uint32_t> clusterOf_;  // of each row
  std::vector<Stay> stays_;               // by last, the rows of positive weight
  std::vector<std::uint32_t> byFirst_;    // places in stays_
};

}  // namespace survmeth::engine::states

#endif  // ENGINE_STATES_ROBUST_H_
