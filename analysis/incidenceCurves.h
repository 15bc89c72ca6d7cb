// Cumulative incidence of one type of event, others competing, by group.
#ifndef ANALYSIS_INCIDENCE_CURVES_H_
#define ANALYSIS_INCIDENCE_CURVES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace survmeth {

struct IncidenceRequest {
  std::span<const double> time;           // finite, not negative
  std::span<const std::uint32_t> status;  // 0 censored, otherwise the type of the event
  std::span<const std::uint32_t> group;   // 0 .. groups - 1
  std::size_t groups = 0;                 // each has rows
  std::uint32_t event = 1;                // the type, not 0; every other one competes
};

// One group, an element for each distinct time, ascending.
struct IncidenceCurve {
  std::vector<double> time;
  std::vector<double> atRisk;     // just before the time
  std::vector<double> censored;   // at it
  std::vector<double> incidence;  // just after it: the sum of S(t-) d / n, S free of any event
};

// Throws engine::Refusal as the test of the same columns does (grayTest.h), and of a group without
// rows ("group", with the group).
// Cost O(n log n)
// Source Aalen & Johansen, Scand J Statist 5 (1978) 141-150
std::vector<IncidenceCurve> incidenceCurves(const IncidenceRequest& request);

}  // namespace survmeth

#endif  // ANALYSIS_INCIDENCE_CURVES_H_
