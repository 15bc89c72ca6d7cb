// What the analyses of two measurement methods share: the pairs, their table and their points.
#ifndef ANALYSIS_TWO_METHODS_H_
#define ANALYSIS_TWO_METHODS_H_

#include <initializer_list>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "analysis/estimate.h"
#include "engine/input.h"
#include "frame/frame.h"
#include "report/report.h"

namespace survmeth::analysis {

// Each pair with the line it stood in; the columns are those of the data, not copies.
struct Pairs {
  frame::Column first, second;
  frame::LineMap lines;
};

// Of two columns of numbers. Cost O(1).
Pairs pairsOf(const frame::Frame& data, const std::string& first, const std::string& second);

// A table of one row for each pair: line, first and second, then what is added.
report::Table pairTable(const char* id, const char* caption, const Pairs& pairs,
                        std::vector<report::Column> more);

// `every value of "assigned" is 2: ` and what follows from it, of each column where all are the
// same.
void noteConstants(std::initializer_list<const frame::Column*> columns, const char* consequence,
                   report::Report& report);

// The smallest and the largest of the numbers, NaN passed over; there is one.
std::pair<double, double> extentOf(std::span<const double> values);

// The same; of a single number as wide a range as the number itself is from 0.
std::pair<double, double> widthOf(std::span<const double> values);

// Markers at (x, y), those without one of the two left out.
report::Series pointsAt(std::span<const double> x, std::span<const double> y);

// A horizontal line at the estimate from `ends.first` to `ends.second`, with its limits as a band.
void addLevel(const char* name, const Estimate& level, std::pair<double, double> ends,
              report::Panel& panel);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_TWO_METHODS_H_
