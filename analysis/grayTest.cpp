// The entry point turns a singular variance into statistic 0 and p-value 1, so whether a test
// exists is settled here. The variance of the scores is a sum over groups and times: each event of
// the type, unless all who are at risk have it, and each competing event with an event of the type
// after it, adds d c c' for a vector c that lies in the direction of its own group. Since nobody
// enters late, all groups that are ever at risk at an event of the type are so at the first one;
// K groups need K - 1 such directions.
#include "analysis/grayTest.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "analysis/checks.h"
#include "survival/survival.h"

namespace survmeth {

using engine::Role;
namespace {

void check(const GrayRequest& request) {
  const std::size_t n = request.time.size();
  requireRows(n, 1, Role::kTime, "there are no rows");
  require(request.status.size() == n && request.group.size() == n, Role::kTime,
          "the columns differ in length");
  require(request.event != 0, Role::kEvent, "type 0 is censoring, not an event");
  require(std::isfinite(request.rho), Role::kRho, "rho is not finite");
  requireTimes(request.time);
  requireCodes(request.group, request.groups, Role::kGroup, "group");
}

// What decides whether the variance is singular.
struct Events {
  double first = std::numeric_limits<double>::infinity();  // time of the type's first event
  double last = -1;  // nothing counts after it: no event of the type that finds two groups at risk
  std::vector<std::size_t> atRisk;  // of each group, at the first one
  bool ofAll = true;                // everybody at risk has the event then
  std::size_t competingBefore = 0;  // groups at risk that had competing events before it
};

Events eventsOf(const GrayRequest& request) {
  Events events;
  std::vector<double> end(request.groups, -1);  // of the time that anybody is at risk
  for (std::size_t i = 0; i < request.time.size(); ++i) {
    end[request.group[i]] = std::max(end[request.group[i]], request.time[i]);
    if (request.status[i] != request.event) continue;
    events.first = std::min(events.first, request.time[i]);
    events.last = std::max(events.last, request.time[i]);
  }
  if (request.groups > 1) {
    std::nth_element(end.begin(), end.begin() + 1, end.end(), std::greater<>());
    events.last = std::min(events.last, end[1]);
  }
  events.atRisk.assign(request.groups, 0);
  std::vector<bool> competing(request.groups, false);
  for (std::size_t i = 0; i < request.time.size(); ++i) {
    if (request.time[i] >= events.first) {
      ++events.atRisk[request.group[i]];
      events.ofAll =
          events.ofAll && request.time[i] == events.first && request.status[i] == request.event;
    } else if (request.status[i] != 0) {
      competing[request.group[i]] = true;
    }
  }
  for (std::size_t g = 0; g < request.groups; ++g) {
    events.competingBefore += events.atRisk[g] > 0 && competing[g] ? 1 : 0;
  }
  return events;
}

}  // namespace

GrayResult grayTest(const GrayRequest& request) {
  check(request);
  const Events events = eventsOf(request);
  GrayResult result;
  std::vector<double> codes(request.groups, 0);  // 1 .. groups; 0 has no part
  int groups = 0;
  for (std::size_t g = 0; g < request.groups; ++g) {
    result.included.push_back(events.atRisk[g] > 0);
    if (result.included[g]) codes[g] = ++groups;
  }
  if (groups == 0) {
    result.reason = "there is no event of the type";
    return result;
  }
  if (groups < 2) {
    result.reason = "only one group has anybody at risk when the first event of the type happens";
    return result;
  }
  if (events.ofAll && events.competingBefore + 1 < static_cast<std::size_t>(groups)) {
    result.reason =
        "the variance is singular: all who are at risk have the event together, at its only time";
    return result;
  }

  const std::size_t n = request.time.size();
  std::vector<double> time(request.time.begin(), request.time.end()), status(n), group(n);
  constexpr int kInterest = 1, kCompeting = 2;
  for (std::size_t i = 0; i < n; ++i) {
    // After the last event of the type that finds two groups at risk nothing counts any more, but
    // where the incidence is 1 by then a negative rho would multiply that nothing by infinity.
    if (request.status[i] == 0 || request.time[i] > events.last) {
      status[i] = 0;
    } else {
      status[i] = request.status[i] == request.event ? kInterest : kCompeting;
    }
    group[i] = codes[request.group[i]];
  }
  double chiSquare = 0, degreesOfFreedom = 0, pValue = 0;
  Cpp_GrayTest(static_cast<int>(n), groups, time.data(), status.data(), group.data(), kInterest,
               request.rho, &chiSquare, &degreesOfFreedom, &pValue);
  // Corrected for ties the estimate of the variance can come out negative, and a weight can
  // overflow.
  if (!std::isfinite(chiSquare) || chiSquare < 0) {
    result.reason = "the estimate of the variance is not a positive number";
    return result;
  }
  result.chiSquare = chiSquare;
  result.degreesOfFreedom = degreesOfFreedom;
  result.pValue = pValue;
  return result;
}

}  // namespace survmeth
