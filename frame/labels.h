// The labels of a column in order, for groups, strata and factors.
#ifndef FRAME_LABELS_H_
#define FRAME_LABELS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/frame.h"

namespace survmeth::frame {

// Labels that are all numbers are ordered and told apart as numbers (1 and 1.0 are one, by its
// shortest spelling), others by their bytes; a factor keeps the order of its levels. Numbers become
// labels by their shortest text.
struct Labels {
  std::vector<std::string> labels;
  std::vector<std::uint32_t> codes;  // of each row, into labels; Column::kMissing where missing
  std::vector<std::size_t> counts;   // rows that hold each label
};

// Whether a label is the one that `value` spells: the same text, or the same number.
bool sameLabel(std::string_view label, std::string_view value);

// All labels, those that no row holds (any more) included, with count 0. Cost O(rows + l log l).
Labels allLabelsOf(const Column& column);

// Of a column of numbers in the order of first use, not counted. Cost O(rows)
Labels labelsByFirstUse(const Column& numbers);

// Those that rows hold.
Labels labelsOf(const Column& column);

// The combinations of `made` and one more column's labels that rows hold, "sex=f, rx=Obs", ordered
// as the labels are, the earlier columns first. None may be missing. `made` begins empty.
// Cost O(n log n), whatever the numbers of labels are.
void cross(Labels& made, const Labels& more, const std::string& name);

// The same of columns of `data` that hold labels.
Labels crossedLabels(const Frame& data, const std::vector<std::string>& names);

}  // namespace survmeth::frame

#endif  // FRAME_LABELS_H_
