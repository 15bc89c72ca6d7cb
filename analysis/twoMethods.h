// What the analyses of two measurement methods share: the pairs, their table and their points.
#ifndef ANALYSIS_TWO_METHODS_H_
#define ANALYSIS_TWO_METHODS_H_

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "engine/input.h"
#include "frame/frame.h"
#include "report/report.h"

namespace survmeth::analysis {

// Each pair with the line it stood in.
struct Pairs {
  std::vector<double> first, second, line;
};

// Of two columns of numbers. Cost O(rows).
Pairs pairsOf(const frame::Frame& data, const std::string& first, const std::string& second);

// A table of one row for each pair: line, first and second, then what is added. For files.
report::Table pairTable(const char* id, const char* caption, const Pairs& pairs,
                        const std::string& first, const std::string& second,
                        std::vector<report::Column> more);

// Whether every value is the same; so of none.
bool isConstant(std::span<const double> values);

// `every value of "assigned" is 2: ` and what follows from it.
report::Note constantNote(const std::string& column, double value, const char* consequence);

// "95%" of alpha 0.05.
std::string confidence(double alpha);

// The smallest and the largest of the numbers, NaN passed over; there is one.
std::pair<double, double> extentOf(std::span<const double> values);

// Markers at (x, y), those without one of the two left out.
report::Series pointsAt(std::span<const double> x, std::span<const double> y);

// A straight line from one end to the other, under a name of its own.
report::Series lineFrom(std::string name, double x0, double y0, double x1, double y1);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_TWO_METHODS_H_
