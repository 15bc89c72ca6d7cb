// The picture of survmeth roc: the curve of each marker on equal axes, with the line of chance.
#include <cmath>

#include "cli/rocReport.h"
#include "cli/shell/gnuplot.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"
#include "cli/shell/session.h"
#include "text/utf8.h"

namespace cli {
namespace {

using survmeth::text::shortened;

using survmeth::RocCurve;
using survmeth::RocThreshold;

// All in points. The key stands between title and plot, where no curve can run into it.
constexpr int kPlot = 440, kLeft = 78, kRight = 48, kBottom = 62, kTitle = 36, kLine = 18;
constexpr std::size_t kMostMarkers = 16;
// Steps closer than this part of the axes are one in print; large data are thinned to that.
constexpr double kStep = 1.0 / 2000;

// From (0, 0), where nobody is called positive, to (1, 1).
std::string curveData(const RocCurve& curve, bool lowerIsPositive) {
  std::string data = "0 0\n";
  double lastX = 0, lastY = 0;
  const std::size_t count = curve.thresholds.size();
  for (std::size_t i = 0; i < count; ++i) {
    const RocThreshold& row = curve.thresholds[lowerIsPositive ? i : count - 1 - i];
    const double x = row.fp / curve.negatives, y = row.tp / curve.positives;
    if (i + 1 < count && x - lastX < kStep && y - lastY < kStep) continue;
    data += exact(x) + ' ' + exact(y) + '\n';
    lastX = x;
    lastY = y;
  }
  return data;
}

std::string keyOf(const RocReport& report, std::size_t m) {
  const survmeth::Estimate& area = report.result.curves[m].area;
  std::string text = shortened(report.markers[m], 18) + ", area " + fixed(area.value, 3);
  if (!std::isnan(area.lower)) {
    text += " (" + confidence(report.alpha) + "% " + fixed(area.lower, 3) + " to " +
            fixed(area.upper, 3) + ")";
  }
  return text;
}

std::string scriptOf(const RocReport& report, Picture picture) {
  const std::size_t markers = report.markers.size();
  const int top = kTitle + kLine * static_cast<int>(markers) + 14;
  const int width = kLeft + kPlot + kRight, height = top + kPlot + kBottom;
  const auto part = [](int points, int of) { return exact(static_cast<double>(points) / of); };
  std::string script = terminalLine(picture, width, height);
  for (std::size_t m = 0; m < markers; ++m) {
    script += "$curve" + std::to_string(m) + " << END\n" +
              curveData(report.result.curves[m], report.lowerIsPositive[m]) + "END\n";
  }
  script += "set lmargin at screen " + part(kLeft, width) + "\nset rmargin at screen " +
            part(kLeft + kPlot, width) + "\nset bmargin at screen " + part(kBottom, height) +
            "\nset tmargin at screen " + part(kBottom + kPlot, height) + "\nset label 1 " +
            gnuplotText("ROC curves, positive: " + shortened(report.classColumn, 20) + " = " +
                        shortened(report.positive, 20)) +
            " at screen " + part(kLeft, width) + ", screen " + part(height - kTitle / 2, height) +
            " left\n";
  script +=
      "set xrange [-0.015:1.015]\nset yrange [-0.015:1.015]\n"
      "set xtics 0,0.2,1 nomirror out font ',11'\nset ytics 0,0.2,1 nomirror out font ',11'\n"
      "set format x '%.1f'\nset format y '%.1f'\nset border 3 linecolor rgb '#333333'\n"
      "set grid linecolor rgb '#dddddd' linetype 1 linewidth 0.6\n"
      "set xlabel '1 - specificity' offset 0,0.2\nset ylabel 'sensitivity'\n"
      "set arrow from 0,0 to 1,1 nohead dashtype (4,4) linewidth 1.2 linecolor rgb '#777777'\n";
  script += "set key vertical reverse Left left top font ',11' maxcols 1 samplen 3.2 at screen " +
            part(kLeft, width) + ", screen " + part(height - kTitle + 4, height) + "\nplot ";
  for (std::size_t m = 0; m < markers; ++m) {
    const Stroke stroke = strokeOf(m);
    script += (m > 0 ? ", \\\n     $curve" : "$curve") + std::to_string(m) +
              " using 1:2 with lines title " + gnuplotText(keyOf(report, m)) +
              " linewidth 2 linecolor rgb '" + stroke.colour + "' dashtype " + stroke.dash;
  }
  return script + "\n";
}

}  // namespace

std::string rocPlot(const RocReport& report, const std::string& file) {
  const Picture picture = pictureOf(file);
  if (report.markers.size() > kMostMarkers) {
    throw Problem("--plot: there are " + counted(report.markers.size(), "marker", "markers") +
                  "; expected at most " + std::to_string(kMostMarkers) +
                  " that a reader can tell apart");
  }
  return scriptOf(report, picture);
}

}  // namespace cli
