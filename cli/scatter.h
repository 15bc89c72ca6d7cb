// Scatter plots of two methods.
#ifndef CLI_SCATTER_H_
#define CLI_SCATTER_H_

#include <string>
#include <vector>

#include "cli/shell/gnuplot.h"

namespace cli {

// A horizontal line with its name at the right edge and, where lower < upper, a shaded band.
struct Level {
  std::string name;
  double value, lower, upper;
  bool isBias;
};

// The inline data block $points: x and y of every pair of numbers.
std::string pointBlock(const std::vector<double>& x, const std::vector<double>& y);

// Points with levels drawn across: differences against means.
std::string levelScatter(Picture picture, const std::string& title, const std::string& xLabel,
                         const std::string& yLabel, const std::vector<double>& x,
                         const std::vector<double>& y, const std::vector<Level>& levels);

// Points with the line y = intercept + slope x and the line of identity, on equal axes.
std::string lineScatter(Picture picture, const std::string& title, const std::string& xLabel,
                        const std::string& yLabel, const std::vector<double>& x,
                        const std::vector<double>& y, double intercept, double slope);

}  // namespace cli

#endif  // CLI_SCATTER_H_
