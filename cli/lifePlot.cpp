// The picture of survmeth life: a step for each group with its band and a tick at each censoring,
// and below the axis the numbers still at risk.
#include <algorithm>
#include <cmath>

#include "cli/lifeReport.h"
#include "cli/shell/gnuplot.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"
#include "cli/shell/session.h"
#include "text/utf8.h"

namespace cli {
namespace {

using survmeth::text::displayWidth;
using survmeth::text::shortened;

using survmeth::SurvivalCurve;

constexpr int kWidth = 720, kRight = 36, kPlotHeight = 380, kLineHeight = 18, kCharacter = 7;
constexpr int kTitle = 34, kAxis = 62;  // space for the title, and for tics and axis label
constexpr int kSample = 75;             // of a line in the key, with the space around it
constexpr std::size_t kMostGroups = 16, kMostBands = 6, kMostTicks = 150;
// Steps closer than this part of the axes are one in print; large data are thinned to that.
constexpr double kStep = 1.0 / 2000;
constexpr double kTickHeight = 0.028;

double endOf(const LifeReport& report) {
  double end = 0;
  for (const SurvivalCurve& curve : report.result.curves) end = std::max(end, curve.time.back());
  return end > 0 ? end : 1;
}

// 1, 2 or 5 times a power of ten, for at most eight intervals.
double ticStep(double end) {
  const double rough = end / 8, power = std::pow(10, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= rough) return factor * power;
  }
  return 10 * power;
}

void addPoint(std::string& data, double x, double y) { data += exact(x) + ' ' + exact(y) + '\n'; }

// The rows at which the drawn curve has a corner.
std::vector<std::size_t> corners(const SurvivalCurve& curve, double end) {
  std::vector<std::size_t> rows;
  double time = -end, survival = 2;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    const bool last = i + 1 == curve.time.size();
    if (curve.eventsAt[i] == 0 && !last) continue;
    if (last || curve.time[i] - time > kStep * end || survival - curve.survival[i] > kStep) {
      rows.push_back(i);
      time = curve.time[i];
      survival = curve.survival[i];
    }
  }
  return rows;
}

std::string stepData(const SurvivalCurve& curve, double end) {
  std::string data;
  addPoint(data, 0, 1);
  double level = 1;
  for (const std::size_t i : corners(curve, end)) {
    addPoint(data, curve.time[i], level);
    level = curve.survival[i];
    addPoint(data, curve.time[i], level);
  }
  return data;
}

// Time, lower and upper limit as corners of a polygon; nothing where there are no limits.
std::string bandData(const SurvivalCurve& curve, double end) {
  std::string data;
  double lower = survmeth::kNone, upper = survmeth::kNone;
  const auto add = [&data](double time, double low, double high) {
    if (std::isnan(low) || std::isnan(high)) return;
    data += exact(time) + ' ' + exact(low) + ' ' + exact(high) + '\n';
  };
  for (const std::size_t i : corners(curve, end)) {
    add(curve.time[i], lower, upper);
    lower = curve.lower[i];
    upper = curve.upper[i];
    add(curve.time[i], lower, upper);
  }
  return data;
}

// A tick at each censoring; none where they would run together into a second curve.
std::string censoredData(const SurvivalCurve& curve) {
  std::string data;
  std::size_t count = 0;
  for (std::size_t i = 0; i < curve.time.size(); ++i) {
    if (curve.censoredAt[i] == 0) continue;
    if (++count > kMostTicks) return {};
    data += exact(curve.time[i]) + ' ' + exact(curve.survival[i] - kTickHeight / 2) + '\n';
  }
  return data;
}

double atRiskAt(const SurvivalCurve& curve, double time) {
  const auto at = std::lower_bound(curve.time.begin(), curve.time.end(), time);
  return at == curve.time.end() ? 0
                                : curve.atRisk[static_cast<std::size_t>(at - curve.time.begin())];
}

class Figure {
 public:
  Figure(const LifeReport& report, const std::string& file)
      : report_(report),
        picture_(pictureOf(file)),
        groups_(report.labels.size()),
        end_(endOf(report)),
        step_(ticStep(end_)),
        rightEnd_(1.02 * end_) {
    std::size_t width = 0;
    for (const std::string& label : report.labels) {
      labels_.push_back(shortened(label, 24));
      width = std::max(width, displayWidth(labels_.back()));
    }
    // Room for the row labels of the table under the axis.
    left_ = std::max(92, static_cast<int>(width) * kCharacter + 44);
    bottom_ = kAxis + kLineHeight * (static_cast<int>(groups_) + 1) + 12;
    keyColumns_ = std::max(
        1, (kWidth - left_ - kRight) / (static_cast<int>(width) * kCharacter * 6 / 5 + kSample));
    const int keyRows = groups_ > 1 ? (static_cast<int>(groups_) - 1) / keyColumns_ + 1 : 0;
    top_ = kTitle + kLineHeight * keyRows + (keyRows > 0 ? 6 : 0);
    height_ = top_ + kPlotHeight + bottom_;
  }

  std::string script() const {
    std::string text = terminalLine(picture_, kWidth, height_);
    text += data() + frame() + table() + plots();
    return text;
  }

 private:
  std::string screenY(double points) const { return exact(points / height_); }

  std::string data() const {
    std::string text;
    for (std::size_t g = 0; g < groups_; ++g) {
      const SurvivalCurve& curve = report_.result.curves[g];
      const std::string name = std::to_string(g) + " << END\n";
      text += "$step" + name + stepData(curve, end_) + "END\n";
      text += "$band" + name + bandData(curve, end_) + "END\n";
      text += "$censored" + name + censoredData(curve) + "END\n";
    }
    return text;
  }

  std::string frame() const {
    const bool bands = groups_ <= kMostBands;
    std::string title = "Survival";
    if (bands)
      title += ", " + confidence(report_.alpha) + "% limits (" + limitsName(report_.limits) + ")";
    const survmeth::Comparison& comparison = report_.result.comparison;
    if (groups_ > 1 && comparison.reason.empty()) {
      const std::string p = pValue(comparison[survmeth::CurveTest::kLogRank].pValue);
      title += ", log-rank p " + (p[0] == '<' ? "< " + p.substr(1) : "= " + p);
    }
    return "set lmargin at screen " + exact(static_cast<double>(left_) / kWidth) +
           "\nset rmargin at screen " + exact(1 - static_cast<double>(kRight) / kWidth) +
           "\nset bmargin at screen " + screenY(bottom_) + "\nset tmargin at screen " +
           screenY(height_ - top_) + "\nset label 100000 " + gnuplotText(title) + " at screen " +
           exact(static_cast<double>(left_) / kWidth) + ", screen " +
           screenY(height_ - kTitle / 2.0) + " left\nset xrange [0:" + exact(rightEnd_) +
           "]\nset yrange [0:1.02]\n" + "set xtics 0," + exact(step_) +
           " nomirror out font ',11'\nset ytics 0,0.2,1 nomirror out font ',11'\n" +
           "set border 3 linecolor rgb '#333333'\nset grid ytics linecolor rgb '#dddddd' " +
           "linetype 1 linewidth 0.6\nset xlabel " + gnuplotText(report_.time) +
           " offset 0,0.2\nset ylabel 'Survival'\nset format y '%.1f'\n" + key();
  }

  // The key stands between title and plot, where no curve can run into it.
  std::string key() const {
    if (groups_ < 2) return "unset key\n";
    return "set key horizontal reverse Left left top font ',11' maxcols " +
           std::to_string(keyColumns_) + " samplen 3.2 at screen " +
           exact(static_cast<double>(left_) / kWidth) + ", screen " +
           screenY(height_ - kTitle + 4) + "\n";
  }

  // Numbers at risk at the tics, in the colours of the curves.
  std::string table() const {
    std::string text;
    int label = 0;
    const auto put = [&](const std::string& what, const std::string& position,
                         const std::string& align, const std::string& colour) {
      text += "set label " + std::to_string(++label) + ' ' + gnuplotText(what) + " at " + position +
              ' ' + align + " font ',10' textcolor rgb '" + colour + "'\n";
    };
    const auto rowY = [&](std::size_t row) {
      return screenY(bottom_ - kAxis - kLineHeight * (static_cast<double>(row) + 0.5));
    };
    const std::string left = "screen " + exact(12.0 / kWidth) + ", screen ";
    put("At risk", left + rowY(0), "left", "#000000");
    for (std::size_t g = 0; g < groups_; ++g) {
      const std::string colour = strokeOf(g).colour;
      put(labels_[g], left + rowY(g + 1), "left", colour);
      for (int k = 0; k * step_ <= rightEnd_; ++k) {
        const double time = k * step_;
        put(brief(atRiskAt(report_.result.curves[g], time), 4),
            "first " + exact(time) + ", screen " + rowY(g + 1), "center", colour);
      }
    }
    return text;
  }

  std::string plots() const {
    std::string text = "plot ";
    const auto add = [&text](const std::string& what) {
      text += (text.size() > 5 ? ", \\\n     " : "") + what;
    };
    for (std::size_t g = 0; g < std::min(groups_, kMostBands); ++g) {
      if (groups_ > kMostBands || bandData(report_.result.curves[g], end_).empty()) continue;
      add("$band" + std::to_string(g) + " using 1:2:3 with filledcurves fillcolor rgb '" +
          strokeOf(g).colour + "' fillstyle transparent solid 0.13 noborder notitle");
    }
    for (std::size_t g = 0; g < groups_; ++g) {
      const std::string colour = std::string(" linecolor rgb '") + strokeOf(g).colour + "'";
      const std::string number = std::to_string(g);
      add("$step" + number + " using 1:2 with lines title " + gnuplotText(labels_[g]) +
          " linewidth 2" + colour + " dashtype " + strokeOf(g).dash);
      if (!censoredData(report_.result.curves[g]).empty()) {
        add("$censored" + number + " using 1:2:(0):(" + exact(kTickHeight) +
            ") with vectors nohead linewidth 1.6" + colour + " notitle");
      }
    }
    return text + "\n";
  }

  const LifeReport& report_;
  Picture picture_;
  std::size_t groups_;
  double end_, step_, rightEnd_;
  std::vector<std::string> labels_;
  int left_ = 0, bottom_ = 0, top_ = 0, height_ = 0, keyColumns_ = 1;
};

}  // namespace

std::string lifePlotNote(const LifeReport& report) {
  for (const SurvivalCurve& curve : report.result.curves) {
    if (curve.censored > 0 && censoredData(curve).empty()) {
      return "the plot marks no censorings in groups with more than " + std::to_string(kMostTicks) +
             " times of them";
    }
  }
  return {};
}

std::string lifePlot(const LifeReport& report, const std::string& file) {
  if (report.labels.size() > kMostGroups) {
    throw Problem("--plot: there are " + counted(report.labels.size(), "group", "groups") +
                  "; expected at most " + std::to_string(kMostGroups) +
                  " that a reader can tell apart");
  }
  return Figure(report, file).script();
}

}  // namespace cli
