#include "engine/curves/rates.h"

#include <algorithm>
#include <cmath>

#include "Dist/Dist"
#include "numerics/doubleDouble.h"
#include "numerics/elementary.h"
#include "numerics/sizes.h"

namespace survmeth::engine::curves {
namespace {

using numerics::DoubleDouble;

void requireAscending(std::span<const double> values, const char* text) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isfinite(values[i]) || (i > 0 && !(values[i - 1] < values[i]))) {
      throw Refusal(Role::kIntervals, Refusal::kNone, text, i);
    }
  }
}

// The first value that is not below `at`.
std::size_t place(std::span<const double> values, double at) {
  return static_cast<std::size_t>(std::lower_bound(values.begin(), values.end(), at) -
                                  values.begin());
}

double weightOf(const Rows& rows, std::size_t row) {
  return rows.weight.empty() ? 1.0 : rows.weight[row];
}

void add(DoubleDouble& sum, double term) { sum = sum + term; }

// Sums of one interval: of weights that are there all along, of the parts of the others' times.
struct Cell {
  DoubleDouble change, parts;
};

double exactPValue(double events, double trials, double probability) {
  if (events != std::floor(events) || trials != std::floor(trials)) return kAbsent;
  const double odds = probability / (1.0 - probability);
  const double logOfSeen = numerics::lgamma(trials + 1.0) - numerics::lgamma(events + 1.0) -
                           numerics::lgamma(trials - events + 1.0) +
                           events * numerics::log(probability) +
                           (trials - events) * numerics::log1p(-probability);
  const double seen = numerics::exp(logOfSeen);
  // Equal probabilities are equal but for rounding; R's margin too.
  const double most = seen * (1.0 + 1e-7);
  double sum = seen;
  double current = seen;
  for (double k = events; k < trials;) {
    current *= (trials - k) / (k + 1.0) * odds;
    k += 1.0;
    if (current <= most) sum += current;
    if (!(current > 0.0)) break;
  }
  current = seen;
  for (double k = events; k > 0.0;) {
    current *= k / (trials - k + 1.0) / odds;
    k -= 1.0;
    if (current <= most) sum += current;
    if (!(current > 0.0)) break;
  }
  return std::min(sum, 1.0);
}

}  // namespace

Interval poissonLimits(double events, double personTime, double level) {
  normalQuantile(level);  // refuses
  if (!(personTime > 0.0)) return {};
  const double tail = 0.5 * (1.0 - level);
  const double lower = events > 0.0 ? 0.5 * InvCDFChiSq(tail, 2.0 * events) : 0.0;
  return {lower / personTime, 0.5 * InvCDFChiSq(1.0 - tail, 2.0 * events + 2.0) / personTime};
}

std::vector<std::vector<Rate>> rates(const Response& response, const Rows& rows,
                                     const Groups& groups, std::span<const double> cuts,
                                     double level) {
  check(response, rows, groups, "Rates");
  requireAscending(cuts, "the cuts of time are not ascending numbers");
  const std::size_t intervals = cuts.size() + 1;
  constexpr double kForever = std::numeric_limits<double>::infinity();
  std::vector<Cell> cells(numerics::product(groups.size(), intervals + 1));
  std::vector<std::vector<Rate>> result(groups.size(), std::vector<Rate>(intervals));
  for (std::size_t row = 0; row < response.rows(); ++row) {
    const double weight = weightOf(rows, row);
    const double exit = response.exit[row];
    const double entry = response.entry.empty() ? 0.0 : response.entry[row];
    if (exit < entry) {
      throw Refusal(Role::kTime, row, "person-time without entries runs from 0, exit is negative",
                    Refusal::kNone, "a number from 0");
    }
    Cell* cell = &cells[groups[row] * (intervals + 1)];
    const std::size_t last = place(cuts, exit);
    // The interval in which time just after the entry lies.
    const std::size_t first =
        static_cast<std::size_t>(std::upper_bound(cuts.begin(), cuts.end(), entry) - cuts.begin());
    if (response.event[row] != 0) result[groups[row]][last].events += weight;
    if (first >= last) {
      add(cell[last].parts, weight * (exit - entry));
      continue;
    }
    add(cell[first].parts, weight * (cuts[first] - entry));
    add(cell[last].parts, weight * (exit - cuts[last - 1]));
    add(cell[first + 1].change, weight);
    add(cell[last].change, -weight);
  }
  for (std::size_t g = 0; g < groups.size(); ++g) {
    DoubleDouble whole;
    for (std::size_t k = 0; k < intervals; ++k) {
      Rate& rate = result[g][k];
      const Cell& cell = cells[g * (intervals + 1) + k];
      rate.from = k == 0 ? -kForever : cuts[k - 1];
      rate.to = k == cuts.size() ? kForever : cuts[k];
      whole = whole + cell.change;
      DoubleDouble time = cell.parts;
      if (k > 0 && k < cuts.size()) time = time + whole * (rate.to - rate.from);
      rate.personTime = time.hi;
      if (!(rate.personTime > 0.0)) continue;
      rate.rate = rate.events / rate.personTime;
      if (!rows.weight.empty() && rows.weightKind == WeightKind::kSampling) continue;
      const Interval limits = poissonLimits(rate.events, rate.personTime, level);
      rate.lower = limits.lower;
      rate.upper = limits.upper;
    }
  }
  return result;
}

RateRatio rateRatio(const Rate& first, const Rate& second, double level) {
  normalQuantile(level);  // refuses
  const double events = first.events + second.events;
  if (!(events > 0.0 && first.personTime > 0.0 && second.personTime > 0.0)) return {};
  const double scale = first.personTime / second.personTime;
  double lower = kAbsent;
  double upper = kAbsent;
  // The lower limit from the share of the second, the upper from the first's, whose complement
  // would be lost where the share is nearly 1.
  double other = kAbsent;
  double unused = kAbsent;
  GetInfSupClopper(second.events, events, 1.0 - level, &lower, &unused);
  GetInfSupClopper(first.events, events, 1.0 - level, &other, &unused);
  upper = other > 0.0 ? (1.0 - other) / other : std::numeric_limits<double>::infinity();
  RateRatio result;
  result.ratio = first.events > 0.0 ? second.events / first.events * scale
                                    : std::numeric_limits<double>::infinity();
  result.lower = lower / (1.0 - lower) * scale;
  result.upper = upper * scale;
  result.pValue = exactPValue(second.events, events,
                              second.personTime / (first.personTime + second.personTime));
  return result;
}

std::vector<std::vector<RiskCount>> riskTable(const Response& response, const Rows& rows,
                                              const Groups& groups, std::span<const double> time) {
  check(response, rows, groups, "Counts at risk");
  requireAscending(time, "the times of the table are not ascending numbers");
  const std::size_t columns = time.size() + 1;
  struct Changes {
    DoubleDouble atRisk, events, censored;
  };
  std::vector<Changes> changes(numerics::product(groups.size(), columns));
  for (std::size_t row = 0; row < response.rows(); ++row) {
    const double weight = weightOf(rows, row);
    Changes* change = &changes[groups[row] * columns];
    // At risk at the times behind its entry up to its exit, counted among the ended from the
    // first time at or after its exit.
    const std::size_t ended = place(time, response.exit[row]);
    const bool atOnce = ended < time.size() && time[ended] == response.exit[row];
    const std::size_t begin =
        response.entry.empty()
            ? 0
            : static_cast<std::size_t>(
                  std::upper_bound(time.begin(), time.end(), response.entry[row]) - time.begin());
    add(change[begin].atRisk, weight);
    add(change[ended + (atOnce ? 1 : 0)].atRisk, -weight);
    add(response.event[row] != 0 ? change[ended].events : change[ended].censored, weight);
  }
  std::vector<std::vector<RiskCount>> result(groups.size());
  for (std::size_t g = 0; g < groups.size(); ++g) {
    Changes sum;
    for (std::size_t k = 0; k < time.size(); ++k) {
      const Changes& change = changes[g * columns + k];
      sum.atRisk = sum.atRisk + change.atRisk;
      sum.events = sum.events + change.events;
      sum.censored = sum.censored + change.censored;
      result[g].push_back({sum.atRisk.hi, change.events.hi, sum.events.hi, sum.censored.hi});
    }
  }
  return result;
}

}  // namespace survmeth::engine::curves
