#include "analysis/life/run.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/combination.h"
#include "analysis/option.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
using engine::Refusal;
using engine::Role;

constexpr std::size_t kHazardTimes = 101;  // at which the smoothed hazard is given

// Builds the answer part by part.
class Run {
 public:
  Run(const frame::Frame& data, const LifeRequest& request, numerics::Progress& progress)
      : request_(answer_.request), options_(request.curves()), progress_(progress) {
    answer_.request = withColumns(request);
    answer_.rows = lifeRowsOf(data, request_);
  }

  LifeAnswer answer() {
    try {
      find();
    } catch (const Refusal& refused) {
      if (answer_.rows.source.empty()) throw;
      throw refused.of(answer_.rows.source);
    }
    return std::move(answer_);
  }

 private:
  void find() {
    findByTime();
    addReadings();
    addRates();
    addIntervals();
    if (!answer_.comparison.exists()) return;
    answer_.permutation = permuteLife(answer_.rows, request_, progress_);
  }

  // What takes the rows in the order of time, which are sorted once. The tests come first: their
  // memory is free again before the curves take the most.
  void findByTime() {
    const engine::Rows rows = answer_.rows.rows();
    const engine::Response response = answer_.rows.response();
    const curves::Groups groups = answer_.rows.groupCodes();
    std::optional<engine::risk::TimeCodes> codes(
        curves::checkedCodes(response, rows, groups, request_.tolerance(), "Curves"));
    answer_.comparison = compareLife(answer_.rows, request_, *codes);
    if (answer_.comparison.exists()) {
      answer_.combination = combineLife(answer_.rows, request_, *codes);
    }
    const curves::Sample sample(*codes, response, rows, groups);
    codes.reset();
    findCurves(sample, rows);
  }

  void findCurves(const curves::Sample& sample, const engine::Rows& rows) {
    answer_.robust = curves::robust(rows, options_);
    answer_.curves = curves::estimate(sample, rows, options_);
    for (const curves::Curve& curve : answer_.curves) summarise(curve);
    addBands(rows);
    addMeans(sample, rows);
    addHazards(sample, rows);
  }

  void summarise(const curves::Curve& curve) {
    constexpr std::array<double, 3> kQuartiles = {0.25, 0.5, 0.75};
    const auto quartiles = curves::quantiles(curve, kQuartiles, request_.flat);
    answer_.summaries.push_back(
        {quartiles[0], quartiles[1], quartiles[2], curves::followUp(curve, 0.5, request_.flat)});
    answer_.n += curve.n;
    answer_.events += curve.events;
    answer_.censored += curve.censored;
  }

  void addBands(const engine::Rows& rows) {
    if (!request_.band) return;
    if (answer_.robust) {
      throw BadOption("band",
                      "rests on model-based variances, but subjects have several events; expected "
                      "it without");
    }
    for (const curves::Curve& curve : answer_.curves) {
      answer_.bands.push_back(curves::band(curve, rows, options_, *request_.band,
                                           request_.bandFrom.value_or(kNone),
                                           request_.bandTo.value_or(kNone)));
    }
  }

  void addReadings() {
    LifeReadings& readings = answer_.readings;
    for (const curves::Curve& curve : answer_.curves) {
      if (!request_.quantiles.empty()) {
        readings.quantiles.push_back(curves::quantiles(curve, request_.quantiles, request_.flat));
      }
      if (!request_.at.empty()) {
        readings.at.push_back(curves::readings(curve, request_.at, false, options_.scale));
      }
    }
    if (request_.at.empty()) return;
    readings.risk = curves::riskTable(answer_.rows.response(), answer_.rows.rows(),
                                      answer_.rows.groupCodes(), request_.at);
    if (!request_.difference) return;
    readings.contrastAt.resize(readings.at.size());
    for (std::size_t g = 1; g < readings.at.size(); ++g) {
      for (std::size_t i = 0; i < request_.at.size(); ++i) {
        readings.contrastAt[g].push_back(
            curves::compareAt(valueAt(0, i), valueAt(g, i), *request_.difference, options_.level));
      }
    }
  }

  // The survival of a group at a time of --at with the variance of its logarithm.
  curves::SurvivalAt valueAt(std::size_t group, std::size_t i) const {
    const curves::Curve& curve = answer_.curves[group];
    const std::size_t at = curves::indexAt(curve, request_.at[i]);
    const double survival = answer_.readings.at[group][i].survival;
    return {survival, at == curve.time.size() ? 0.0 : curve.logVariance[at]};
  }

  void addMeans(const curves::Sample& sample, const engine::Rows& rows) {
    if (!request_.wantsMeans()) return;
    LifeReadings& readings = answer_.readings;
    const double horizon = request_.tau.value_or(curves::commonHorizon(answer_.curves));
    if (!(horizon > 0)) {
      throw BadOption("means", "a group's last time is 0; expected a later one, or --tau");
    }
    readings.means = curves::restrictedMeans(sample, rows, answer_.curves, options_, horizon);
    for (std::size_t g = 1; g < readings.means.size(); ++g) {
      readings.contrasts.push_back(
          curves::compareMeans(readings.means[0], readings.means[g], options_.level));
    }
  }

  void addHazards(const curves::Sample& sample, const engine::Rows& rows) {
    if (!request_.hazard) return;
    for (std::size_t g = 0; g < answer_.curves.size(); ++g) {
      const curves::Curve& curve = answer_.curves[g];
      std::size_t last = curve.time.size();
      while (last > 0 && !(curve.eventsAt[last - 1] > 0)) --last;
      std::vector<double> times;
      for (std::size_t i = 0; i < kHazardTimes && last > 0; ++i) {
        times.push_back(curve.time[last - 1] * static_cast<double>(i) / (kHazardTimes - 1));
      }
      try {
        answer_.readings.hazards.push_back(
            times.empty()
                ? std::vector<curves::HazardRate>()
                : curves::hazardRates(sample, g, rows, options_, times, *request_.hazard));
      } catch (const Refusal& refused) {
        throw BadOption(
            "hazard",
            refused.what() +
                (answer_.rows.several() ? " of the group " + answer_.labels()[g] : std::string()) +
                "; expected a smaller one");
      }
    }
  }

  void addRates() {
    if (!request_.wantsRates()) return;
    LifeReadings& readings = answer_.readings;
    readings.rates = curves::rates(answer_.rows.response(), answer_.rows.rows(),
                                   answer_.rows.groupCodes(), request_.cuts, options_.level);
    // Time begins at 0.
    for (auto& group : readings.rates) group.front().from = 0;
    if (answer_.robust) {  // exact limits are those of independent counts
      for (auto& group : readings.rates) {
        for (curves::Rate& rate : group) rate.lower = rate.upper = kNone;
      }
      return;
    }
    readings.rateRatios.resize(readings.rates.size());
    for (std::size_t g = 1; g < readings.rates.size(); ++g) {
      for (std::size_t i = 0; i < readings.rates[g].size(); ++i) {
        readings.rateRatios[g].push_back(
            curves::rateRatio(readings.rates[0][i], readings.rates[g][i], options_.level));
      }
    }
  }

  void addIntervals() {
    if (!request_.intervals()) return;
    double last = 0;
    for (const curves::Curve& curve : answer_.curves) last = std::max(last, curve.time.back());
    try {
      const std::vector<double> bounds =
          intervalBounds(request_.width.value_or(0), request_.bounds, last);
      for (const curves::Curve& curve : answer_.curves) {
        answer_.intervals.push_back(actuarialTable(curve, bounds, options_));
      }
    } catch (const Refusal& refused) {
      if (refused.role() != Role::kIntervals) throw;
      throw BadOption(request_.bounds.empty() ? "width" : "bounds", refused.what());
    }
  }

  LifeAnswer answer_;
  const LifeRequest& request_;
  curves::Options options_;
  numerics::Progress& progress_;
};

}  // namespace

LifeAnswer fitLife(const frame::Frame& data, const LifeRequest& request,
                   numerics::Progress& progress) {
  return Run(data, request, progress).answer();
}

}  // namespace survmeth::analysis
