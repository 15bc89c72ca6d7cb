// Neighbouring columns side by side in one register.
#ifndef SURVIVAL_PARAM_LANES_H_
#define SURVIVAL_PARAM_LANES_H_

#include <cstring>

namespace survival::param {

inline constexpr int kLanes = 4;

// Each lane is a sum of its own, added in the order of the rows. Spelled out because compilers
// otherwise lay the rows side by side and shuffle them back.
typedef double Lanes __attribute__((vector_size(kLanes * sizeof(double))));

inline void load(const double* from, Lanes* lanes) { std::memcpy(lanes, from, sizeof *lanes); }
inline void store(const Lanes& lanes, double* to) { std::memcpy(to, &lanes, sizeof lanes); }

// Columns up to a whole number of lanes.
inline int wholeLanes(int columns) { return (columns + kLanes - 1) / kLanes * kLanes; }

}  // namespace survival::param

#endif  // SURVIVAL_PARAM_LANES_H_
