// What a row does to the baseline's cumulative hazard by the time t is, at any t, a combination of
// few functions of t with numbers of its own, which change when it comes under risk and when it
// ends. Sums of squares of all rows at every event time are therefore those of the numbers' products,
// kept up to date from row to row.
#include "engine/finegray/hazards.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/finegray/errors.h"
#include "engine/finegray/products.h"
#include "numerics/cholesky.h"
#include "numerics/runningSum.h"

namespace survmeth::engine::finegray {
namespace {

using numerics::RunningSum;

// The hazard of one stratum of the baseline: the functions of time, and every row's numbers.
class StratumHazard {
 public:
  StratumHazard(const Fit& fit, std::size_t stratum, std::span<const std::uint32_t> sampleRow)
      : fit_(fit),
        problem_(*fit.problem),
        stratum_(stratum),
        begin_(problem_.rows.arrangement.stratumTime[stratum]),
        times_(problem_.rows.arrangement.stratumTime[stratum + 1] - begin_),
        sampleRow_(sampleRow) {
    own_.push_back(0.0);
    RunningSum sum;
    for (std::size_t k = 0; k < times_; ++k) own_.push_back(sum.add(step(k)));
    const std::size_t groups = problem_.censoring.size();
    gone_.resize(groups);
    lost_.resize(groups);
    weighted_.resize(groups);
    const auto& times = problem_.curves.sample().time;
    for (auto* each : {&before_, &upTo_, &risk_, &seen_}) each->resize(times.size() + groups);
    for (std::size_t g = 0; g < groups; ++g) takeGroup(g);
  }

  // Values of the functions at event time k of the stratum.
  void functions(std::size_t k, std::span<double> value) const {
    value[0] = own_[k + 1];
    value[1] = 1.0;
    for (std::size_t g = 0; g < gone_.size(); ++g) {
      value[2 + 2 * g] = lost_[g][k];
      value[3 + 2 * g] = weighted_[g][k + 1];
    }
  }

  // Whether a row says anything of this hazard.
  bool concerns(std::size_t row) const {
    return problem_.rows.arrangement.rowStratum[row] == stratum_ ||
           (counted() && gone_[problem_.group[row]] != 0);
  }
  // While it is at risk: what counts from its entry on.
  Numbers atRisk(std::size_t row) const {
    Numbers numbers{};
    const risk::Arrangement& a = problem_.rows.arrangement;
    if (a.rowStratum[row] == stratum_) {
      numbers[0] = -fit_.sums.risk[row];
      numbers[1] = fit_.sums.risk[row] * own_[a.firstTime(row) - begin_];
    }
    if (counted()) {
      const std::size_t entry = entryOf(row);
      numbers[1] -= a.weight[row] * upTo_[entry];
      numbers[2] = -a.weight[row];
      numbers[3] = a.weight[row] * before_[entry];
    }
    return numbers;
  }
  // From its end on.
  Numbers ended(std::size_t row) const {
    Numbers numbers{};
    const risk::Arrangement& a = problem_.rows.arrangement;
    const std::size_t g = problem_.group[row];
    if (a.rowStratum[row] == stratum_) {
      const double risk = fit_.sums.risk[row];
      const std::size_t end = a.end[row] - begin_;
      numbers[1] = -risk * (own_[end] - own_[a.firstTime(row) - begin_]);
      if (a.event[row] != 0) numbers[1] += a.weight[row] / fit_.sums.total[begin_ + end - 1];
      const auto other = std::lower_bound(problem_.other.begin(), problem_.other.end(), row);
      if (other != problem_.other.end() && *other == row) {
        const double stays =
            risk * problem_.since[static_cast<std::size_t>(other - problem_.other.begin())];
        numbers[1] += stays * weighted_[g][end];
        numbers[3] -= stays;
      }
    }
    if (counted()) addCensoring(row, g, numbers);
    return numbers;
  }

  std::size_t times() const { return times_; }
  // The first event times behind its entry, and at or behind its exit.
  std::size_t entersAt(std::size_t row) const {
    const risk::Arrangement& a = problem_.rows.arrangement;
    return a.entryCode.empty() ? 0 : placeOf(a.entryCode[row] + 1);
  }
  std::size_t endsAt(std::size_t row) const {
    return placeOf(problem_.rows.arrangement.exitCode[row]);
  }

 private:
  bool counted() const { return fit_.errors == Errors::kEstimatedWeights; }
  double step(std::size_t k) const {
    return fit_.sums.increment[begin_ + k] / fit_.sums.total[begin_ + k];
  }
  // Of the sample's times there is one more for each group: sums before the times, and the whole.
  std::size_t entryOf(std::size_t row) const {
    return problem_.curves.sample().entryOf(sampleRow_[row], problem_.group[row]) +
           problem_.group[row];
  }
  std::size_t placeOf(std::uint32_t code) const {
    const auto& codes = problem_.rows.arrangement.timeCode;
    const auto from = codes.begin() + static_cast<std::ptrdiff_t>(begin_);
    const auto to = from + static_cast<std::ptrdiff_t>(times_);
    return static_cast<std::size_t>(std::lower_bound(from, to, code) - from);
  }

  // With R the risks of those that failed of another cause, Q the integral of G H dL / S0 and c of n
  // censored: sums of R c / n^2 and of that times Q, over the group's times.
  void takeGroup(std::size_t g) {
    const risk::Arrangement& a = problem_.rows.arrangement;
    const curves::Sample& sample = problem_.curves.sample();
    std::vector<double>& weighted = weighted_[g];
    weighted.push_back(0.0);
    RunningSum sum, risks, before, upTo;
    for (std::size_t k = 0; k < times_; ++k) {
      weighted.push_back(sum.add(problem_.weightAt(g, begin_ + k) * step(k)));
    }
    lost_[g].assign(times_, 0.0);
    auto next =
        std::lower_bound(problem_.other.begin(), problem_.other.end(), a.stratumRow[stratum_]);
    const auto stop = std::lower_bound(next, problem_.other.end(), a.stratumRow[stratum_ + 1]);
    std::size_t k = 0;
    for (std::size_t m = sample.first[g]; m <= sample.first[g + 1]; ++m) {
      const std::size_t at = m + g;
      const bool last = m == sample.first[g + 1];
      for (; k < times_ && (last || a.time[begin_ + k] < sample.time[m]); ++k) {
        lost_[g][k] = before.value() * weighted[k + 1] - upTo.value();
      }
      before_[at] = before.value();
      upTo_[at] = upTo.value();
      if (last) break;
      for (; next != stop && a.codeTime[a.exitCode[*next]] < sample.time[m]; ++next) {
        if (problem_.group[*next] != g) continue;
        const auto place = static_cast<std::size_t>(next - problem_.other.begin());
        risks.add(fit_.sums.risk[*next] * problem_.since[place]);
        gone_[g] = true;
      }
      risk_[at] = risks.value();
      seen_[at] = weighted[k];
      if (sample.censored[m] > 0.0) {
        const double n = problem_.curves.censorable(m);
        const double share = risks.value() * (sample.censored[m] / n) / n;
        before.add(share);
        upTo.add(share * weighted[k]);
      }
    }
  }

  void addCensoring(std::size_t row, std::size_t g, Numbers& numbers) const {
    const curves::Sample& sample = problem_.curves.sample();
    const std::size_t i = sampleRow_[row];
    const double weight = problem_.rows.arrangement.weight[row];
    const std::size_t at = sample.exitAt[i] + g;
    const std::size_t entry = entryOf(row);
    const bool censored = sample.event[i] == 0;
    const std::size_t until =
        censored || problem_.curves.ties() == CensoringTies::kAtRisk ? at + 1 : at;
    numbers[1] += weight * (upTo_[until] - upTo_[entry]);
    numbers[3] -= weight * (before_[until] - before_[entry]);
    if (!censored) return;
    const double share = weight * risk_[at] / problem_.curves.censorable(sample.exitAt[i]);
    numbers[1] -= share * seen_[at];
    numbers[3] += share;
  }

  const Fit& fit_;
  const Problem& problem_;
  std::size_t stratum_, begin_, times_;
  std::span<const std::uint32_t> sampleRow_;          // of each arranged row
  std::vector<double> own_;                           // times + 1: the integral of dL / S0
  std::vector<std::vector<double>> lost_, weighted_;  // groups x times, x times + 1
  std::vector<char> gone_;                            // whether any of the group is in R
  std::vector<double> before_, upTo_;                 // the sums before each time
  std::vector<double> risk_, seen_;                   // R, and Q before it
};

// Rows by a place, those of each in their order.
struct Buckets {
  Buckets(std::span<const std::uint32_t> place, std::size_t places) : first(places + 2, 0) {
    for (const std::uint32_t each : place) ++first[each + 1];
    for (std::size_t k = 1; k < first.size(); ++k) first[k] += first[k - 1];
    row.resize(place.size());
    std::vector<std::size_t> next(first.begin(), first.end() - 1);
    for (std::uint32_t i = 0; i < place.size(); ++i) row[next[place[i]]++] = i;
  }
  std::vector<std::size_t> first;
  std::vector<std::uint32_t> row;
};

// Calls done(k, values, products) for each event time of the stratum.
template <typename Done>
void overTimesOf(const StratumHazard& hazard, std::size_t rows, Products& products,
                 const Done& done) {
  std::vector<std::uint32_t> enters(rows), ends(rows);
  for (std::size_t i = 0; i < rows; ++i) {
    const bool concerned = hazard.concerns(i);
    enters[i] = static_cast<std::uint32_t>(concerned ? hazard.entersAt(i) : hazard.times());
    ends[i] = static_cast<std::uint32_t>(concerned ? hazard.endsAt(i) : hazard.times());
  }
  const Buckets entering(enters, hazard.times());
  const Buckets ending(ends, hazard.times());
  std::vector<double> value(products.width());
  const Numbers none{};
  for (std::size_t k = 0; k < hazard.times(); ++k) {
    for (std::size_t m = entering.first[k]; m < entering.first[k + 1]; ++m) {
      const std::uint32_t row = entering.row[m];
      if (ends[row] > k) products.change(row, none, hazard.atRisk(row));
    }
    for (std::size_t m = ending.first[k]; m < ending.first[k + 1]; ++m) {
      const std::uint32_t row = ending.row[m];
      products.change(row, enters[row] < k ? hazard.atRisk(row) : none, hazard.ended(row));
    }
    hazard.functions(k, value);
    done(k, value, products);
  }
}

// The arranged rows' places in the sample of the censoring.
std::vector<std::uint32_t> sampleRows(const Problem& problem) {
  const auto& sampled = problem.curves.sample().source;
  const auto& source = problem.rows.arrangement.source;
  std::vector<std::uint32_t> ofSource(problem.rows.sourceRows, 0);
  for (std::uint32_t i = 0; i < sampled.size(); ++i) ofSource[sampled[i]] = i;
  std::vector<std::uint32_t> result;
  for (const std::uint32_t row : source) result.push_back(ofSource[row]);
  return result;
}

}  // namespace

cox::HazardSums hazardSums(const Fit& fit, numerics::Progress& progress) {
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.rows.arrangement;
  const std::size_t p = problem.columns();
  cox::HazardSums sums;
  sums.stratum = a.stratumCode;
  sums.firstTime.assign(a.stratumTime.begin(), a.stratumTime.end());
  sums.time = a.time;
  sums.shift.assign(a.strata(), fit.sums.shift);
  sums.centre = problem.rows.centres;
  sums.coefficients = fit.coefficients;
  sums.column.assign(p, cox::Column::kEstimated);
  sums.covariance = fit.covariance;
  sums.variance.resize(a.times());
  sums.mean.assign(p, std::vector<double>(a.times()));

  progress.at(0.0);
  numerics::BlockedColumns scores = scoreResiduals(problem, fit.sums);
  progress.at(0.1);
  if (fit.errors == Errors::kEstimatedWeights) addCensoring(problem, fit.sums, scores);
  const std::vector<std::uint32_t> sampleRow = sampleRows(problem);
  const numerics::Cholesky factor(fit.covariance);
  std::vector<double> mixed(p), with(p);
  for (std::size_t s = 0; s < a.strata(); ++s) {
    sums.lastTime.push_back(a.codeTime[a.exitCode[a.stratumRow[s + 1] - 1]]);
    const StratumHazard hazard(fit, s, sampleRow);
    Products products(fit, scores);
    RunningSum whole;
    std::vector<RunningSum> means(p);
    overTimesOf(hazard, a.rows(), products, [&](std::size_t at, const auto& value, const auto& of) {
      const std::size_t k = a.stratumTime[s] + at;
      sums.hazard.push_back(whole.add(fit.sums.increment[k]));
      // With c the covariance of the coefficients and the hazard, V that of the coefficients, and d
      // what a change of the coefficients does: d'V d + 2 d'c = (d + V^-1 c)'V (d + V^-1 c) less
      // c'V^-1 c, so that V^-1 c goes with the means, and the rest with the hazard's own variance.
      of.mixed(value, mixed);
      for (std::size_t j = 0; j < p; ++j) {
        with[j] = numerics::dot(fit.inverseInformation.row(j), mixed);
      }
      sums.variance[k] = std::max(0.0, of.squares(value) - factor.quadraticForm(with));
      const std::vector<double> moved = factor.solve(with);
      for (std::size_t j = 0; j < p; ++j) {
        sums.mean[j][k] = means[j].add(fit.sums.increment[k] * fit.sums.mean(k, j)) - moved[j];
      }
      if (k % 1024 == 0) {
        progress.at(0.2 + 0.8 * static_cast<double>(k) / static_cast<double>(a.times()));
      }
    });
  }
  return sums;
}

}  // namespace survmeth::engine::finegray
