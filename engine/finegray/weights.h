// Weights of rows that stay in the risk sets of a subdistribution after an event of another cause:
// G(t-) / G(exit-) of the censoring curve G, where rows enter late times H(t-) / H(exit-) of the
// curve H of entries.
#ifndef ENGINE_FINEGRAY_WEIGHTS_H_
#define ENGINE_FINEGRAY_WEIGHTS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/curves/sample.h"

namespace survmeth::engine::finegray {

using curves::Groups;

// What the censoring curve loses at a time with c censorings, d events of any cause and n at risk.
enum class CensoringTies {
  kAtRisk,       // c / n: events and censorings of one time beside each other (Fine & Gray 1999)
  kAfterEvents,  // c / (n - d): events first
};

// Kaplan-Meier curves of the censoring times of each group, and of the entries backwards.
//
// A row that enters at s is at risk behind s: of those there then, e of n enter. H(t) is the product
// of 1 - e / n over the entries behind t, H(t-) that over those at t too.
// Source Geskus, Biometrics 67 (2011) 39-49
class CensoringCurves {
 public:
  // In   anyEvent   the response with all causes one event; valid as long as this
  CensoringCurves(const Response& anyEvent, const Rows& rows, const Groups& groups,
                  CensoringTies ties, double tieTolerance);

  // G(t-) H(t-); 0 behind the last time of the group, where nothing is known of G.
  double before(std::size_t group, double time) const;

  CensoringTies ties() const { return ties_; }
  // Of the psi terms: times of the groups with what is censored at them.
  const curves::Sample& sample() const { return sample_; }
  // How many of those at risk at time k may be censored: n or n - d.
  double censorable(std::size_t k) const {
    return ties_ == CensoringTies::kAtRisk ? sample_.atRisk[k] : sample_.surviving[k];
  }

 private:
  void findEntries(const Response& response, const Rows& rows, const Groups& groups);

  CensoringTies ties_;
  curves::Sample sample_;
  std::vector<double> censoring_;  // G behind each time of the sample
  // Entries of each group, ascending, with H before each.
  std::vector<std::size_t> firstEntry_;
  std::vector<double> entry_, entered_;
};

}  // namespace survmeth::engine::finegray

#endif  // ENGINE_FINEGRAY_WEIGHTS_H_
