// Probabilities of being in each state, hazards of the transitions, and the time spent in states.
#ifndef ENGINE_STATES_ESTIMATE_H_
#define ENGINE_STATES_ESTIMATE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/states/history.h"

namespace survmeth::engine::states {

struct Options {
  double start = 0.0;           // from which on probabilities are
  std::vector<double> initial;  // of each state then, sum 1; empty: as observed, those at risk
                                // just behind the start
  double horizon = kAbsent;     // of the times in states; NaN: none
  bool robust = false;          // errors; those of clusters and sampling weights are anyway
};

// One state, an element for each time.
struct State {
  std::vector<double> atRisk;       // weight just before the time
  std::vector<double> probability;  // just after it
  std::vector<double> variance;
};

// A transition that happens.
struct Transition {
  std::uint32_t from, to;
  double events = 0;
  std::vector<double> time;                    // at which it happens, ascending
  std::vector<double> hazard, hazardVariance;  // Nelson-Aalen: sums of d / n and of d / n^2, or
                                               // robust
};

// The time spent in a state from the start to the horizon.
struct Stay {
  double time = kAbsent, standardError = kAbsent;
};

struct Estimates {
  std::vector<double> time;  // of transitions behind the start, ascending
  std::vector<double> initial;
  std::vector<State> states;
  std::vector<Transition> transitions;  // by from, then to
  std::vector<Stay> stays;              // of each state; empty without a horizon
  double followed = kAbsent;            // the last exit
  // Nobody is followed to the horizon, and somebody is where others leave: carried on level.
  bool extended = false;
  bool robust = false;
};

// Aalen and Johansen's estimate p(t) = p(start) times the product of I + dA over the times. Its
// error goes from time to time, d p' = d p (I + dA) + p d(dA), with the multinomial covariances of
// the rows of dA (Greenwood's type); the initial probabilities are taken as given. The time in
// states is carried along with its covariances. Robust errors are the squared influences of the
// clusters' weights, that on the observed initial probabilities with them.
//
// In   histories   checked
// Edge Refusal(kValue) for a horizon not after the start, for initial probabilities that are none;
//      Refusal(kRequest) where none are given and nobody is at risk at the start
// Cost O(n log n + times states^2); robust O(n states^2 log(times)) besides; only equal times are
//      one
// Source Aalen & Johansen, Scand J Statist 5 (1978) 141-150; Andersen, Borgan, Gill & Keiding
//        (1993) IV.4
Estimates estimate(const Histories& histories, const Options& options);

}  // namespace survmeth::engine::states

#endif  // ENGINE_STATES_ESTIMATE_H_
