#include "analysis/incidenceCurves.h"

#include "analysis/checks.h"
#include "numerics/order.h"

namespace survmeth {

using engine::Refusal;
using engine::Role;
namespace {

void check(const IncidenceRequest& request) {
  const std::size_t n = request.time.size();
  requireRows(n, 1, Role::kTime, "there are no rows");
  require(request.status.size() == n && request.group.size() == n, Role::kTime,
          "the columns differ in length");
  require(request.event != 0, Role::kEvent, "type 0 is censoring, not an event");
  requireTimes(request.time);
  requireCodes(request.group, request.groups, Role::kGroup, "group");
}

// `rows` in the order of time.
IncidenceCurve curveOf(const IncidenceRequest& request, const std::vector<std::uint32_t>& rows) {
  IncidenceCurve curve;
  double survival = 1, incidence = 0;
  for (std::size_t i = 0; i < rows.size();) {
    const double time = request.time[rows[i]], atRisk = static_cast<double>(rows.size() - i);
    double events = 0, competing = 0, censored = 0;
    for (; i < rows.size() && request.time[rows[i]] == time; ++i) {
      const std::uint32_t status = request.status[rows[i]];
      (status == 0 ? censored : status == request.event ? events : competing) += 1;
    }
    incidence += survival * events / atRisk;
    survival *= (atRisk - events - competing) / atRisk;
    curve.time.push_back(time);
    curve.atRisk.push_back(atRisk);
    curve.censored.push_back(censored);
    curve.incidence.push_back(incidence);
  }
  return curve;
}

}  // namespace

std::vector<IncidenceCurve> incidenceCurves(const IncidenceRequest& request) {
  check(request);
  std::vector<std::vector<std::uint32_t>> rows(request.groups);
  for (const std::uint32_t row : numerics::ascendingOrder(request.time)) {
    rows[request.group[row]].push_back(row);
  }
  std::vector<IncidenceCurve> curves;
  for (std::size_t g = 0; g < request.groups; ++g) {
    if (rows[g].empty()) throw Refusal(Role::kGroup, Refusal::kNone, "a group has no rows", g);
    curves.push_back(curveOf(request, rows[g]));
  }
  return curves;
}

}  // namespace survmeth
