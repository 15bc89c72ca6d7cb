#include "engine/cox/residuals.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/cox/means.h"
#include "engine/risk/parts.h"
#include "numerics/elementary.h"

namespace survmeth::engine::cox {
namespace {

using numerics::BlockedColumns;

Hazards hazardsOf(const Fit& fit) {
  Hazards hazards;
  hazardsAt(*fit.problem, fit.ties, fit.working, hazards);
  return hazards;
}

// Numbers of the arranged rows as the caller has them: by row or by cluster.
std::vector<double> collect(const Problem& problem, const std::vector<double>& value,
                            const ResidualOptions& options) {
  const risk::Arrangement& a = problem.arrangement;
  if (options.byCluster && problem.cluster.empty()) {
    throw Refusal(Role::kCluster, Refusal::kNone, "residuals by cluster need clusters");
  }
  std::vector<double> result(options.byCluster ? problem.clusters : problem.sourceRows,
                             options.byCluster ? 0.0 : kAbsent);
  const auto termOf = [&](std::size_t i) {
    return options.weighted ? a.weight[i] * value[i] : value[i];
  };
  if (options.byCluster) {
    for (std::size_t i = 0; i < a.rows(); ++i) result[problem.cluster[a.source[i]]] += termOf(i);
  } else {
    risk::inParts(a.rows(), [&](std::size_t i) { result[a.source[i]] = termOf(i); });
  }
  return result;
}

std::vector<double> martingaleRows(const Problem& problem, const Hazards& hazards) {
  const risk::Arrangement& a = problem.arrangement;
  std::vector<double> value(a.rows());
  risk::inParts(a.rows(), [&](std::size_t i) {
    value[i] = a.event[i] - hazards.risk[i] / a.weight[i] * hazards.cumulative[i];
  });
  return value;
}

double deviance(double martingale, double events) {
  const double hazard = events - martingale;
  double inside = martingale;
  if (events > 0.0) inside += events * numerics::log(hazard / events);
  const double size = std::sqrt(std::max(0.0, -2.0 * inside));
  return martingale < 0.0 ? -size : size;
}

std::vector<std::vector<double>> collectColumns(const Fit& fit, const BlockedColumns& rows,
                                                const ResidualOptions& options) {
  std::vector<std::vector<double>> result;
  std::vector<double> value(rows.rows());
  for (std::size_t j = 0; j < rows.columns(); ++j) {
    for (std::size_t i = 0; i < rows.rows(); ++i) value[i] = rows(i, j);
    result.push_back(collect(*fit.problem, value, options));
  }
  return result;
}

// columns of `value` times the matrix, which is symmetric.
std::vector<std::vector<double>> timesMatrix(const std::vector<std::vector<double>>& value,
                                             const numerics::SquareMatrix& matrix) {
  const std::size_t p = value.size();
  std::vector<std::vector<double>> result(p);
  for (std::size_t j = 0; j < p; ++j) {
    result[j].assign(value[j].size(), std::isfinite(matrix(j, j)) ? 0.0 : kAbsent);
    for (std::size_t k = 0; k < p; ++k) {
      if (!std::isfinite(matrix(j, k))) continue;
      for (std::size_t i = 0; i < value[j].size(); ++i) {
        result[j][i] += value[k][i] * matrix(k, j);
      }
    }
  }
  return result;
}

}  // namespace

void refuseExactTies(Ties ties, const char* what) {
  if (ties != Ties::kDiscrete && ties != Ties::kMarginal) return;
  throw Refusal(Role::kValue, Refusal::kNone,
                std::string(what) + (ties == Ties::kDiscrete
                                         ? " are not defined under the discrete treatment of ties"
                                         : " are not defined under the exact marginal treatment "
                                           "of ties"));
}

std::vector<double> martingaleResiduals(const Fit& fit, const ResidualOptions& options) {
  refuseExactTies(fit.ties, "martingale residuals");
  return collect(*fit.problem, martingaleRows(*fit.problem, hazardsOf(fit)), options);
}

std::vector<double> devianceResiduals(const Fit& fit, const ResidualOptions& options) {
  refuseExactTies(fit.ties, "deviance residuals");
  const risk::Arrangement& a = fit.problem->arrangement;
  std::vector<double> value = martingaleRows(*fit.problem, hazardsOf(fit));
  if (!options.byCluster) {
    for (std::size_t i = 0; i < a.rows(); ++i) value[i] = deviance(value[i], a.event[i]);
    return collect(*fit.problem, value, options);
  }
  const std::vector<double> events(a.event.begin(), a.event.end());
  std::vector<double> result = collect(*fit.problem, value, options);
  const std::vector<double> observed = collect(*fit.problem, events, options);
  for (std::size_t c = 0; c < result.size(); ++c) result[c] = deviance(result[c], observed[c]);
  return result;
}

std::vector<std::vector<double>> scoreResiduals(const Fit& fit, const ResidualOptions& options) {
  refuseExactTies(fit.ties, "score residuals");
  return collectColumns(fit, scoreRows(*fit.problem, hazardsOf(fit), fit.ties), options);
}

std::vector<std::vector<double>> dfbetaResiduals(const Fit& fit, const ResidualOptions& options) {
  refuseExactTies(fit.ties, "dfbeta residuals");
  return timesMatrix(scoreResiduals(fit, options), fit.covariance);
}

std::vector<std::vector<double>> dfbetasResiduals(const Fit& fit, const ResidualOptions& options) {
  refuseExactTies(fit.ties, "dfbetas residuals");
  std::vector<std::vector<double>> result = dfbetaResiduals(fit, options);
  for (std::size_t j = 0; j < result.size(); ++j) {
    const double error = std::sqrt(fit.covariance(j, j));
    for (double& value : result[j]) value /= error;
  }
  return result;
}

SchoenfeldResiduals schoenfeldResiduals(const Fit& fit, bool weighted) {
  refuseExactTies(fit.ties, "Schoenfeld residuals");
  const Problem& problem = *fit.problem;
  const risk::Arrangement& a = problem.arrangement;
  const Hazards hazards = hazardsOf(fit);
  SchoenfeldResiduals result;
  std::vector<std::uint32_t> events;
  std::vector<TieMoments> moments;
  for (std::size_t k = 0; k < a.times(); ++k) {
    moments.push_back(tieMoments(problem, hazards, fit.ties, k));
    for (std::uint32_t i = 0; i < a.events[k]; ++i) {
      events.push_back(a.firstEvent[k] + i);
      result.row.push_back(a.source[events.back()]);
      result.time.push_back(a.time[k]);
      result.stratum.push_back(a.stratumCode[a.timeStratum[k]]);
    }
  }
  std::vector<double> value(a.rows());
  std::vector<double> others(a.times());
  std::vector<double> failing(a.times());
  for (std::size_t j = 0; j < problem.columns(); ++j) {
    riskTimes(problem, hazards, j, value);
    problem.sums.overRiskSets(value, others, failing, hazards.scales);
    for (std::size_t k = 0; k < a.times(); ++k) {
      const TieMoments& m = moments[k];
      failing[k] = (m.u * others[k] + m.uf * failing[k]) / (hazards.all(k) * a.eventWeight[k]);
    }
    std::vector<double> column;
    for (const std::uint32_t i : events) {
      const double residual = problem.x(i, j) - failing[a.end[i] - std::size_t{1}];
      column.push_back(weighted ? a.weight[i] * residual : residual);
    }
    result.column.push_back(std::move(column));
  }
  return result;
}

SchoenfeldResiduals scaledSchoenfeldResiduals(const Fit& fit, bool weighted) {
  refuseExactTies(fit.ties, "scaled Schoenfeld residuals");
  SchoenfeldResiduals result = schoenfeldResiduals(fit, weighted);
  result.column = timesMatrix(result.column, fit.covariance);
  for (std::size_t j = 0; j < result.column.size(); ++j) {
    for (double& value : result.column[j]) {
      value = value * static_cast<double>(fit.events) + fit.coefficients[j];
    }
  }
  return result;
}

}  // namespace survmeth::engine::cox
