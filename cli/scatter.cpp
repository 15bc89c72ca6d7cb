#include "cli/scatter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "cli/shell/numbers.h"

namespace cli {
namespace {

constexpr const char* kInk = "#333333";
constexpr const char* kBiasColour = "#0072B2";
constexpr const char* kLimitColour = "#D55E00";

std::string range(double least, double most) {
  const double margin = most > least ? 0.06 * (most - least) : 1;
  return "[" + exact(least - margin) + ":" + exact(most + margin) + "]";
}

// The smallest and largest number of a list that may hold NaN.
void widen(const std::vector<double>& values, double& least, double& most) {
  for (const double value : values) {
    if (std::isnan(value)) continue;
    least = std::min(least, value);
    most = std::max(most, value);
  }
}

std::string frame(Picture picture, const std::string& title, const std::string& xLabel,
                  const std::string& yLabel) {
  return terminalLine(picture, 760, 560) + "set title " + gnuplotText(title) + "\nset xlabel " +
         gnuplotText(xLabel) + "\nset ylabel " + gnuplotText(yLabel) + "\nset border 3 lc rgb '" +
         kInk + "'\nset tics nomirror out\nset samples 2\n";
}

}  // namespace

std::string pointBlock(const std::vector<double>& x, const std::vector<double>& y) {
  std::string block = "$points << EOD\n";
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::isnan(x[i]) || std::isnan(y[i])) continue;
    block += exact(x[i]) + " " + exact(y[i]) + "\n";
  }
  return block + "EOD\n";
}

std::string levelScatter(Picture picture, const std::string& title, const std::string& xLabel,
                         const std::string& yLabel, const std::vector<double>& x,
                         const std::vector<double>& y, const std::vector<Level>& levels) {
  double xLeast = INFINITY, xMost = -INFINITY, yLeast = INFINITY, yMost = -INFINITY;
  widen(x, xLeast, xMost);
  widen(y, yLeast, yMost);
  for (const Level& level : levels) widen({level.value, level.lower, level.upper}, yLeast, yMost);

  std::string script = frame(picture, title, xLabel, yLabel);
  script += "set xrange " + range(xLeast, xMost) + "\nset yrange " + range(yLeast, yMost) +
            "\nset rmargin 24\n";
  for (const Level& level : levels) {
    const std::string colour = level.isBias ? kBiasColour : kLimitColour;
    const std::string value = exact(level.value);
    script += "set object rectangle from graph 0, first " + exact(level.lower) +
              " to graph 1, first " + exact(level.upper) + " behind fillcolor rgb '" + colour +
              "' fillstyle solid 0.15 noborder\n";
    script += "set arrow from graph 0, first " + value + " to graph 1, first " + value +
              " nohead lw 1.6 lc rgb '" + colour + "'" + (level.isBias ? "" : " dt (10,6)") + "\n";
    script += "set label " + gnuplotText(level.name + " " + brief(level.value, 4)) +
              " at graph 1.01, first " + value + " left textcolor rgb '" + colour + "'\n";
  }
  return script + pointBlock(x, y) + "plot $points with points pt 6 ps 0.9 lw 1.3 lc rgb '" + kInk +
         "' notitle\n";
}

std::string lineScatter(Picture picture, const std::string& title, const std::string& xLabel,
                        const std::string& yLabel, const std::vector<double>& x,
                        const std::vector<double>& y, double intercept, double slope) {
  double least = INFINITY, most = -INFINITY;
  widen(x, least, most);
  widen(y, least, most);
  const std::string both = range(least, most);
  return frame(picture, title, xLabel, yLabel) + "set size ratio -1\nset xrange " + both +
         "\nset yrange " + both + "\nset key top left reverse Left samplen 2.5\n" +
         pointBlock(x, y) +
         "plot x with lines lw 1.2 dt (4,4) lc rgb '#777777' title 'identity', " +
         exact(intercept) + " + (" + exact(slope) + ") * x with lines lw 2 lc rgb '" + kBiasColour +
         "' title 'Deming line', $points with points pt 6 ps 0.9 lw 1.3 lc rgb '" + kInk +
         "' notitle\n";
}

}  // namespace cli
