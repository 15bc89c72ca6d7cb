// What analyses ask of their groups.
#ifndef ANALYSIS_GROUPS_H_
#define ANALYSIS_GROUPS_H_

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "frame/frame.h"
#include "frame/labels.h"

namespace survmeth::analysis {

// The groups that rows are in: the labels of one column, or the combinations of several.
frame::Labels groupsOf(const frame::Frame& data, const std::vector<std::string>& columns);

// Throws engine::Refusal (kGroup) unless there are from 2 to `most` groups.
void requireSeveral(const frame::Labels& groups, std::size_t most);

// An empty group is more likely a mistake than a group nobody wants to see. Throws engine::Refusal
// (kGroup) of the first whose rows are incomplete or all have weight 0; no weights: 1 each.
void requireFilled(const frame::Labels& groups, std::span<const double> weight);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_GROUPS_H_
