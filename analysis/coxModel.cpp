#include "analysis/coxModel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "Dist/Dist"
#include "analysis/checks.h"
#include "analysis/coxChecks.h"
#include "analysis/spread.h"
#include "numerics/elementary.h"
#include "survival/survival.h"

namespace survmeth {

using engine::Role;
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostIterations = 60;
constexpr double kTolerance = 1e-9;  // of the log-likelihood
// Steps beyond convergence, without a tolerance: the entry point's standard errors are those of
// the step before, which by then is the estimate itself; and estimates that run away go on moving.
constexpr int kFurtherSteps = 3;
constexpr double kStandingStill = 1e-4;  // change over those steps, in standard deviations of x

// The entry point's tables have a cell for each stratum and each of the most distinct times in one.
// It holds some 70 bytes for a cell: this many are about 2 GB.
constexpr std::size_t kMostCells = std::size_t{1} << 25;

// The entry points' arrays for one fit.
struct Fit {
  int p = 0, G = 0, S = 1;
  std::vector<double> x;  // standardized columns
  std::vector<double> beta, criteria, tests, table, baseline, mean, residuals, history;
  std::vector<int> order;
  int kept = 0, iterations = 0, steps = 0;
};

class Regression {
 public:
  explicit Regression(const CoxRequest& request) : request_(request) {
    checkRequest();
    sortRows();
    leaveOutConstant();
    listGroups();
    standardize();
  }

  CoxModel fit() {
    CoxModel model;
    model.n = rows_.time.size();
    model.events =
        static_cast<std::size_t>(std::accumulate(rows_.event.begin(), rows_.event.end(), 0.0));
    requireIndependence(rows_);
    requireOverlap(rows_);
    std::vector<std::size_t> columns(rows_.x.size());
    std::iota(columns.begin(), columns.end(), std::size_t{0});
    if (request_.removeAt) columns = select(columns, model);
    const Fit converged = run(columns, kMostIterations, kTolerance, -1, false);
    if (converged.iterations >= kMostIterations) {
      throw NoSuchModel("no convergence in " + std::to_string(kMostIterations) + " iterations");
    }
    Fit fit = run(columns, converged.iterations + kFurtherSteps, 0, -1,
                  request_.baseline || request_.residuals);
    requireStandingStill(columns, converged, fit);
    fit.iterations = converged.iterations;
    describe(columns, fit, model);
    return model;
  }

 private:
  void checkRequest() const {
    const std::size_t n = request_.time.size();
    requireRows(n, 2, Role::kTime, "fewer than two rows");
    require(request_.event.size() == n, Role::kEvent, "as many events as times are needed");
    require(!request_.covariates.empty(), Role::kCovariate, "no covariate");
    require(request_.stratum.empty() || request_.stratum.size() == n, Role::kStrata,
            "as many strata as times are needed");
    for (const CoxCovariate& covariate : request_.covariates) {
      require(covariate.values.size() == n, Role::kCovariate, "as many values as times are needed");
    }
    require(request_.covariates.size() <= (12 * kMostRows / n - 4) / 2, Role::kCovariate,
            "there are too many covariates for so many rows");
    requireAlpha(request_.alpha);
    const double removeAt = request_.removeAt.value_or(0.5);
    require(removeAt > 0 && removeAt < 1, Role::kRemoval,
            "the p-value for removal is not between 0 and 1");
    requireFinite(request_.time, Role::kTime);
    for (const CoxCovariate& covariate : request_.covariates) {
      requireFinite(covariate.values, Role::kCovariate);
    }
    requireCodes(request_.stratum, request_.strata, Role::kStrata, "stratum");
    require(std::any_of(request_.event.begin(), request_.event.end(),
                        [](std::uint8_t event) { return event != 0; }),
            Role::kEvent, "no row is an event");
  }

  std::uint32_t stratumOf(std::size_t i) const {
    return request_.stratum.empty() ? 0 : request_.stratum[i];
  }

  // By stratum, then time. Strata without rows are left out.
  void sortRows() {
    const std::size_t n = request_.time.size();
    place_.resize(n);
    std::iota(place_.begin(), place_.end(), std::size_t{0});
    std::stable_sort(place_.begin(), place_.end(), [this](std::size_t a, std::size_t b) {
      const std::uint32_t first = stratumOf(a), second = stratumOf(b);
      return first != second ? first < second : request_.time[a] < request_.time[b];
    });
    for (std::size_t i = 0; i < n; ++i) {
      if (i == 0 || stratumOf(place_[i]) != stratumOf(place_[i - 1])) rows_.starts.push_back(i);
      rows_.time.push_back(request_.time[place_[i]]);
      rows_.event.push_back(request_.event[place_[i]] != 0 ? 1 : 0);
    }
    rows_.starts.push_back(n);
    for (const CoxCovariate& covariate : request_.covariates) {
      rows_.names.push_back(covariate.name);
      std::vector<double> column(n);
      for (std::size_t i = 0; i < n; ++i) column[i] = covariate.values[place_[i]];
      rows_.x.push_back(std::move(column));
    }
  }

  // The model is that of the covariates that vary. Without any, all stay for the checks to name.
  void leaveOutConstant() {
    const std::vector<bool> vary = varyWithinStrata(rows_);
    constant_.assign(vary.size(), false);
    if (std::find(vary.begin(), vary.end(), true) == vary.end()) return;
    std::size_t left = 0;
    for (std::size_t j = 0; j < vary.size(); ++j) {
      constant_[j] = !vary[j];
      if (constant_[j]) continue;
      std::swap(rows_.names[left], rows_.names[j]);
      std::swap(rows_.x[left], rows_.x[j]);
      ++left;
    }
    rows_.names.resize(left);
    rows_.x.resize(left);
  }

  // The tables that Cpp_ReorganizeDataCox would make, without its room for as many distinct times
  // in every stratum as there are rows.
  void listGroups() {
    const std::size_t S = rows_.starts.size() - 1;
    std::size_t most = 0;
    for (std::size_t s = 0; s < S; ++s) {
      const auto first = rows_.time.begin() + static_cast<std::ptrdiff_t>(rows_.starts[s]);
      const auto last = rows_.time.begin() + static_cast<std::ptrdiff_t>(rows_.starts[s + 1]);
      std::size_t groups = 1;
      for (auto at = first + 1; at < last; ++at) groups += *at != *(at - 1) ? 1 : 0;
      distinct_.push_back(static_cast<int>(groups));
      sizes_.push_back(static_cast<double>(last - first));
      most = std::max(most, groups);
    }
    require(most <= kMostCells / S, Role::kStrata,
            "there are too many strata for so many distinct times in one of them");
    groups_ = static_cast<int>(most);
    for (auto* table : {&groupStart_, &groupSize_, &groupEvents_}) table->assign(S * most, 0);
    for (std::size_t s = 0; s < S; ++s) {
      std::size_t cell = s;
      int censored = 0;
      for (std::size_t i = rows_.starts[s]; i < rows_.starts[s + 1]; ++i) {
        if (i > rows_.starts[s] && rows_.time[i] != rows_.time[i - 1]) cell += S;
        if (groupSize_[cell]++ == 0) groupStart_[cell] = static_cast<int>(i) + 1;
        if (rows_.event[i] != 0) {
          ++groupEvents_[cell];
        } else {
          ++censored;
        }
      }
      censored_.push_back(censored);
    }
  }

  // The entry points take exp of the linear predictor and drop small risk sums: columns go in
  // around their means, at unit spread.
  void standardize() {
    for (const std::vector<double>& column : rows_.x) {
      const double n = static_cast<double>(column.size());
      const Spread all = spreadOf(column);
      centre_.push_back(all.mean);
      spread_.push_back(all.sd > 0 ? all.sd * std::sqrt((n - 1) / n) : 1);
      // In a unit in which the difference from the mean cannot overflow.
      const int unit = unitOf(column);
      const double mean = std::ldexp(centre_.back(), -unit);
      const double spread = std::ldexp(spread_.back(), -unit);
      std::vector<double> standard = inUnit(column, unit);
      for (double& value : standard) value = (value - mean) / spread;
      standard_.push_back(std::move(standard));
    }
  }

  Fit run(const std::vector<std::size_t>& columns, int limit, double tolerance, int method,
          bool withCurves) const {
    const int n = static_cast<int>(rows_.time.size());
    Fit fit;
    fit.p = static_cast<int>(columns.size());
    fit.G = groups_;
    fit.S = static_cast<int>(sizes_.size());
    for (const std::size_t j : columns) {
      fit.x.insert(fit.x.end(), standard_[j].begin(), standard_[j].end());
    }
    const std::size_t p = columns.size();
    const std::size_t cells = withCurves ? static_cast<std::size_t>(fit.S) * fit.G : 1;
    fit.beta.assign(p, 0);
    fit.criteria.assign(12, 0);
    fit.tests.assign(9, 0);
    fit.table.assign(9 * p, 0);
    fit.baseline.assign(cells, 0);
    fit.mean.assign(cells, 0);
    fit.residuals.assign(withCurves ? n * (2 * p + 4) : 1, 0);
    fit.history.assign(3 * p, 0);
    fit.order.assign(p, 0);
    fit.iterations = limit;
    // The entry point may sort nothing and change nothing here, but its arguments are not const.
    std::vector<double> time = rows_.time, event = rows_.event, sizes = sizes_;
    std::vector<int> distinct = distinct_, size = groupSize_, events = groupEvents_,
                     censored = censored_, start = groupStart_;
    constexpr int kBreslow = 0, kWald = 0;
    RunCoxReg(
        time.data(), n, fit.p, &fit.kept, event.data(), 0, fit.x.data(), 0, sizes.data(), fit.S,
        &fit.iterations, tolerance, kBreslow, distinct.data(), size.data(), events.data(),
        censored.data(), start.data(), method, kWald, 0, request_.removeAt.value_or(1),
        request_.alpha, fit.G, static_cast<short>(withCurves ? -1 : 0), 0, 0, 0, fit.beta.data(),
        fit.criteria.data(), fit.tests.data(), fit.table.data(), fit.baseline.data(),
        fit.mean.data(), fit.residuals.data(), fit.history.data(), &fit.steps, fit.order.data());
    return fit;
  }

  // Backward removal; the columns that are left.
  std::vector<std::size_t> select(const std::vector<std::size_t>& columns, CoxModel& model) const {
    const Fit fit = run(columns, kMostIterations, kTolerance, 1, false);
    std::vector<std::size_t> left;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      if (fit.order[j] == 0) left.push_back(columns[j]);
    }
    for (int step = 1; step < fit.steps; ++step) {
      const auto gone = std::find(fit.order.begin(), fit.order.end(), step) - fit.order.begin();
      model.removed.push_back({rows_.names[columns[static_cast<std::size_t>(gone)]],
                               fit.history[3 * (step - 1) + 1], fit.history[3 * (step - 1) + 2]});
    }
    return left;
  }

  void requireStandingStill(const std::vector<std::size_t>& columns, const Fit& before,
                            const Fit& after) const {
    std::size_t worst = 0;
    double largest = 0;
    bool finite = true;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      const double change = std::fabs(after.beta[j] - before.beta[j]);
      finite = finite && std::isfinite(after.beta[j]) && after.table[j + columns.size()] > 0;
      if (change > largest) {
        largest = change;
        worst = j;
      }
    }
    if (finite && largest <= kStandingStill) return;
    throw NoSuchModel("the estimate of \"" + rows_.names[columns[worst]] +
                      "\" runs away: a combination of the covariates separates the events");
  }

  void describe(const std::vector<std::size_t>& columns, const Fit& fit, CoxModel& model) const {
    const std::size_t p = columns.size();
    const double z = InvCDFNormalStd(1 - request_.alpha / 2);
    for (std::size_t j = 0; j < p; ++j) {
      CoxCoefficient c;
      c.name = rows_.names[columns[j]];
      c.coef = fit.beta[j] / spread_[columns[j]];
      c.se = fit.table[p + j] / spread_[columns[j]];
      c.z = fit.beta[j] / fit.table[p + j];
      c.p = fit.table[3 * p + j];
      c.hazardRatio = numerics::exp(c.coef);
      c.lower = numerics::exp(c.coef - z * c.se);
      c.upper = numerics::exp(c.coef + z * c.se);
      model.coefficients.push_back(c);
      model.centre.push_back(centre_[columns[j]]);
    }
    listConstant(columns, model);
    Test* const tests[] = {&model.likelihoodRatio, &model.score, &model.wald};
    for (int t = 0; t < 3; ++t) *tests[t] = {fit.tests[3 + t], fit.tests[t], fit.tests[6 + t]};
    model.logLikNull = -fit.criteria[2] / 2;
    model.logLik = -fit.criteria[8] / 2;
    model.iterations = fit.iterations;

    std::vector<double> score(rows_.time.size(), 0);
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t i = 0; i < score.size(); ++i) {
        score[i] += fit.x[j * score.size() + i] * fit.beta[j];
      }
    }
    model.concordance = concordance(rows_, score);
    if (request_.baseline) describeBaseline(fit, model);
    if (request_.residuals) describeResiduals(columns, fit, model);
  }

  // Puts the covariates that are constant in their places among the coefficients.
  void listConstant(const std::vector<std::size_t>& columns, CoxModel& model) const {
    std::size_t varying = 0, at = 0;
    for (std::size_t j = 0; j < constant_.size(); ++j) {
      if (constant_[j]) {
        const auto place = static_cast<std::ptrdiff_t>(at++);
        model.coefficients.insert(
            model.coefficients.begin() + place,
            {request_.covariates[j].name, true, kNan, kNan, kNan, kNan, kNan, kNan, kNan});
        model.centre.insert(model.centre.begin() + place, kNan);
      } else if (std::find(columns.begin(), columns.end(), varying++) != columns.end()) {
        ++at;
      }
    }
  }

  void describeBaseline(const Fit& fit, CoxModel& model) const {
    for (int s = 0; s < fit.S; ++s) {
      CoxBaseline baseline;
      for (int k = 0; k < distinct_[s]; ++k) {
        const std::size_t cell = s + static_cast<std::size_t>(k) * fit.S;
        const double survival = fit.baseline[cell];
        baseline.time.push_back(rows_.time[groupStart_[cell] - 1]);
        baseline.survival.push_back(survival);
        baseline.cumulativeHazard.push_back(0 - numerics::log(survival));  // not -0
      }
      model.baseline.push_back(std::move(baseline));
    }
  }

  void describeResiduals(const std::vector<std::size_t>& columns, const Fit& fit,
                         CoxModel& model) const {
    const std::size_t n = rows_.time.size();
    model.martingale.assign(n, kNan);
    model.deviance.assign(n, kNan);
    model.schoenfeld.assign(model.coefficients.size(), std::vector<double>(n, kNan));
    std::vector<std::size_t> places;  // of the fitted coefficients
    for (std::size_t j = 0; j < model.coefficients.size(); ++j) {
      if (!model.coefficients[j].constant) places.push_back(j);
    }
    for (std::size_t i = 0; i < n; ++i) {
      const std::size_t row = place_[i];
      const double deviance = fit.residuals[3 * n + i];
      model.martingale[row] = fit.residuals[2 * n + i];
      // No expected events: nothing deviates in a censored row.
      model.deviance[row] = deviance > -1.797e308 ? deviance : rows_.event[i] == 0 ? 0 : INFINITY;
      if (rows_.event[i] == 0) continue;
      for (std::size_t j = 0; j < columns.size(); ++j) {
        model.schoenfeld[places[j]][row] = fit.residuals[(4 + j) * n + i] * spread_[columns[j]];
      }
    }
  }

  const CoxRequest& request_;
  CoxRows rows_;
  std::vector<bool> constant_;      // of each covariate in the request; the others are in rows_.x
  std::vector<std::size_t> place_;  // in the data, of each sorted row
  std::vector<std::vector<double>> standard_;  // columns at mean 0 and standard deviation 1
  std::vector<double> sizes_, centre_, spread_;
  std::vector<int> distinct_, censored_, groupStart_, groupSize_, groupEvents_;
  int groups_ = 0;
};

}  // namespace

CoxModel coxModel(const CoxRequest& request) { return Regression(request).fit(); }

}  // namespace survmeth
