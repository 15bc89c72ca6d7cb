// The tests. Few groups: their numbers at risk and events on a grid of times, handed to
// ComputeLifeTests. Many: manyGroups.h.
//
// The grid holds the times at which anybody had an event; other times add nothing to any of the
// sums. (Filled by RunLife it would hold every time, and each call would copy it whole beside the
// table: twice the memory that the curves need.) ComputeLifeTests turns a singular covariance into
// statistic 0 and p-value 1, so whether a test exists is settled here, exactly: the covariance is a
// sum over times of D (N - D) / (N - 1) times that of one draw among those at risk, and x' V x = 0
// just when x is constant over the groups that are at risk together at each of these times. V
// without its last row and column is therefore regular just when these times link all groups to one
// another.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <span>

#include "Dist/Dist"
#include "analysis/manyGroups.h"
#include "analysis/survivalCurves.h"
#include "survival/survival.h"

namespace survmeth {
namespace {

// Up to so many groups (as many as a picture shows) the sums are those of the entry point, whose
// last bits callers compare; its cost grows as groups^2 times event times.
constexpr std::size_t kFewGroups = 16;
constexpr std::size_t kLargestGrid = std::size_t{1} << 27;  // 1 GB of doubles
// The squared score of the Gehan-Breslow test is of the fourth degree in the numbers at risk.
constexpr double kLargestRisk = 1e75;

// Numbers at risk and events of the included groups at the pooled event times, as the entry point
// takes them: column by column (time, then at risk, events, censored of each group).
class Grid {
 public:
  Grid(const std::vector<const SurvivalCurve*>& curves, std::vector<double> times)
      : groups_(curves.size()), times_(times.size()), cells_(height() * times_, 0.0) {
    for (std::size_t i = 0; i < times_; ++i) cells_[i * height()] = times[i];
    for (std::size_t j = 0; j < groups_; ++j) {
      const SurvivalCurve& curve = *curves[j];
      std::size_t row = 0;
      for (std::size_t i = 0; i < times_; ++i) {
        while (row < curve.time.size() && curve.time[row] < times[i]) ++row;
        if (row == curve.time.size()) break;  // nobody at risk any more
        cells_[i * height() + 3 * j + 1] = curve.atRisk[row];
        if (curve.time[row] == times[i]) cells_[i * height() + 3 * j + 2] = curve.eventsAt[row];
      }
    }
  }

  std::size_t height() const { return 3 * groups_ + 1; }
  std::size_t groups() const { return groups_; }
  std::size_t times() const { return times_; }
  double atRisk(std::size_t i, std::size_t j) const { return cells_[i * height() + 3 * j + 1]; }
  double events(std::size_t i, std::size_t j) const { return cells_[i * height() + 3 * j + 2]; }
  double* data() { return cells_.data(); }

 private:
  std::size_t groups_, times_;
  std::vector<double> cells_;
};

// Merges ascending runs, the k-th of them from bounds[k] to bounds[k + 1], into one.
void mergeRuns(std::vector<double>& values, std::span<const std::ptrdiff_t> bounds) {
  if (bounds.size() < 3) return;
  const std::size_t half = bounds.size() / 2;
  mergeRuns(values, bounds.first(half + 1));
  mergeRuns(values, bounds.subspan(half));
  std::inplace_merge(values.begin() + bounds.front(), values.begin() + bounds[half],
                     values.begin() + bounds.back());
}

std::vector<double> eventTimes(const std::vector<SurvivalCurve>& curves) {
  std::vector<double> times;
  std::vector<std::ptrdiff_t> bounds = {0};
  for (const SurvivalCurve& curve : curves) {
    for (std::size_t i = 0; i < curve.time.size(); ++i) {
      if (curve.eventsAt[i] > 0) times.push_back(curve.time[i]);
    }
    bounds.push_back(static_cast<std::ptrdiff_t>(times.size()));
  }
  mergeRuns(times, bounds);
  times.erase(std::unique(times.begin(), times.end()), times.end());
  return times;
}

// Which groups are linked to which: a forest of parents.
class Links {
 public:
  explicit Links(std::size_t groups) : parent_(groups), parts_(groups) {
    std::iota(parent_.begin(), parent_.end(), std::size_t{0});
  }
  void link(std::size_t a, std::size_t b) {
    a = root(a);
    b = root(b);
    if (a == b) return;
    parent_[a] = b;
    --parts_;
  }
  bool all() const { return parts_ == 1; }

 private:
  std::size_t root(std::size_t a) {
    while (parent_[a] != a) a = parent_[a] = parent_[parent_[a]];
    return a;
  }
  std::vector<std::size_t> parent_;
  std::size_t parts_;
};

// Sums over the grid that say what to make of the entry point's answer.
struct Survey {
  std::vector<double> observed, expected;
  std::array<double, 3> largestScore{};  // largest |U| of each test
  std::array<double, 3> scale{};         // what it is large against
  double largestRisk = 0;
  bool linked = false;
  bool fractionalRisk = false;  // less than one at risk: the variance formula does not hold
};

Survey surveyOf(const Grid& grid) {
  Survey survey;
  const std::size_t groups = grid.groups();
  survey.observed.assign(groups, 0.0);
  survey.expected.assign(groups, 0.0);
  std::vector<double> scores(3 * groups, 0.0);
  Links links(groups);
  for (std::size_t i = 0; i < grid.times(); ++i) {
    double atRisk = 0, events = 0;
    for (std::size_t j = 0; j < groups; ++j) {
      atRisk += grid.atRisk(i, j);
      events += grid.events(i, j);
    }
    survey.largestRisk = std::max(survey.largestRisk, atRisk);
    const std::array<double, 3> weights{1.0, atRisk, std::sqrt(atRisk)};
    for (std::size_t t = 0; t < 3; ++t) survey.scale[t] += weights[t] * events;
    std::size_t first = groups;
    for (std::size_t j = 0; j < groups; ++j) {
      if (!(grid.atRisk(i, j) > 0)) continue;
      const double expected = events * grid.atRisk(i, j) / atRisk;
      survey.observed[j] += grid.events(i, j);
      survey.expected[j] += expected;
      for (std::size_t t = 0; t < 3; ++t) {
        scores[3 * j + t] += weights[t] * (grid.events(i, j) - expected);
      }
      if (events < atRisk && atRisk > 1 && !links.all()) {
        if (first == groups) first = j;
        links.link(first, j);
      }
    }
    if (events < atRisk && atRisk <= 1) survey.fractionalRisk = true;
  }
  for (std::size_t k = 0; k < scores.size(); ++k) {
    survey.largestScore[k % 3] = std::max(survey.largestScore[k % 3], std::fabs(scores[k]));
  }
  survey.linked = links.all();
  return survey;
}

std::string refusal(bool fractionalRisk, bool linked) {
  if (fractionalRisk) return "the weights leave less than one at risk at an event time";
  if (linked) return {};
  return "the covariance is singular: no event times that some of those at risk survive link all "
         "groups";
}

void setCounts(Comparison& comparison, const std::vector<double>& observed,
               const std::vector<double>& expected) {
  for (std::size_t g = 0, j = 0; g < comparison.included.size(); ++g) {
    const bool hasPart = comparison.included[g];
    comparison.observed[g] = hasPart ? observed[j] : 0;
    comparison.expected[g] = hasPart ? expected[j] : 0;
    if (hasPart) ++j;
  }
}

void loseTests(Comparison& comparison, double largestRisk) {
  comparison.reason = largestRisk > kLargestRisk
                          ? "the weights are too large for the sums of the tests"
                          : "the covariance is singular to working precision";
  comparison.tests = {};
}

void compareMany(const ManyGroups& many, Comparison& comparison) {
  comparison.reason = refusal(many.fractionalRisk(), many.linked());
  if (comparison.reason.empty() && !many.fits()) {
    comparison.reason = "there are too many groups for their covariance matrix";
  }
  if (!comparison.reason.empty()) return;
  const double freedom = static_cast<double>(many.observed().size() - 1);
  for (std::size_t t = 0; t < 3; ++t) {
    const double statistic = many.chiSquare(static_cast<CurveTest>(t));
    if (!(statistic >= 0)) return loseTests(comparison, many.largestRisk());
    comparison.tests[t] = {statistic, freedom, pValChiSq(statistic, freedom)};
  }
  setCounts(comparison, many.observed(), many.expected());
}

void compareFew(const std::vector<const SurvivalCurve*>& included, std::vector<double> times,
                Comparison& comparison) {
  Grid grid(included, std::move(times));
  const Survey survey = surveyOf(grid);
  comparison.reason = refusal(survey.fractionalRisk, survey.linked);
  if (!comparison.reason.empty()) return;

  std::array<double, 12> result{};  // 3 x 4: statistic, critical value, p-value, alpha
  const int count = static_cast<int>(grid.times());
  ComputeLifeTests(grid.data(), count, count, static_cast<int>(included.size()), 0.05,
                   result.data());
  for (std::size_t t = 0; t < 3; ++t) {
    const double statistic = result[t];
    // Only a covariance that was singular to the last digit gives 0 for scores that are not.
    const bool lost = statistic == 0 && survey.largestScore[t] > 1e-9 * survey.scale[t];
    if (!(statistic >= 0) || std::isinf(statistic) || lost) {
      return loseTests(comparison, survey.largestRisk);
    }
    comparison.tests[t] = {statistic, static_cast<double>(survey.observed.size() - 1),
                           result[6 + t]};
  }
  setCounts(comparison, survey.observed, survey.expected);
}

}  // namespace

Comparison compareCurves(const std::vector<SurvivalCurve>& curves) {
  Comparison comparison;
  comparison.included.assign(curves.size(), false);
  comparison.observed.assign(curves.size(), kNone);
  comparison.expected.assign(curves.size(), kNone);
  if (curves.size() < 2) {
    comparison.reason = "there is one group";
    return comparison;
  }
  std::vector<double> times = eventTimes(curves);
  if (times.empty()) {
    comparison.reason = "there is no event";
    return comparison;
  }
  std::vector<const SurvivalCurve*> included;
  for (std::size_t g = 0; g < curves.size(); ++g) {
    // At risk at an event time: still there at the first one.
    comparison.included[g] = curves[g].time.back() >= times.front();
    if (comparison.included[g]) included.push_back(&curves[g]);
  }
  if (included.size() < 2) {
    comparison.reason = "nobody is at risk at an event time outside one group";
    return comparison;
  }
  if (included.size() > kFewGroups || 3 * included.size() + 1 > kLargestGrid / times.size()) {
    compareMany(ManyGroups(included, times), comparison);
  } else {
    compareFew(included, std::move(times), comparison);
  }
  return comparison;
}

}  // namespace survmeth
