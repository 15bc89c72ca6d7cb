// Whether the input can be analysed at all.
#include <cmath>
#include <string>

#include "engine/risk/arrangement.h"
#include "numerics/hot.h"
#include "numerics/threads.h"

namespace survmeth::engine::risk {
namespace {

// One column of the input: what a refusal names it.
struct Place {
  Role role;
  std::string name;
  std::size_t column = Refusal::kNone;
};

[[noreturn]] void refuse(const Place& place, std::size_t row, const std::string& text,
                         const std::string& expected = {}) {
  throw Refusal(place.role, row, place.name + " " + text, place.column, expected);
}

void sameLength(const Place& place, std::size_t length, std::size_t rows) {
  if (length == rows) return;
  refuse(place, Refusal::kNone,
         "has " + std::to_string(length) + " rows, the response has " + std::to_string(rows));
}

// A sum of x - x is 0 for finite numbers only, and is formed at the speed of memory.
SURVMETH_HOT bool allFinite(const double* values, std::size_t count) {
  constexpr std::size_t kLanes = 8;
  double sum[kLanes] = {};
  const std::size_t whole = count / kLanes * kLanes;
  for (std::size_t i = 0; i < whole; i += kLanes) {
    for (std::size_t m = 0; m < kLanes; ++m) sum[m] += values[i + m] - values[i + m];
  }
  for (std::size_t i = whole; i < count; ++i) sum[0] += values[i] - values[i];
  for (std::size_t m = 1; m < kLanes; ++m) sum[0] += sum[m];
  return sum[0] == 0.0;
}

void finite(const Place& place, std::span<const double> values) {
  if (allFinite(values.data(), values.size())) return;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isfinite(values[i])) refuse(place, i, "is not a finite number", "a finite number");
  }
}

void codes(const Place& place, std::span<const std::uint32_t> values, std::size_t count) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] < count) continue;
    refuse(place, i,
           "code " + std::to_string(values[i]) + " is not below " + std::to_string(count));
  }
}

}  // namespace

void check(const Response& response, const Rows& rows, const Design& design) {
  const std::size_t n = response.rows();
  const Place exit{Role::kTime, "exit"};
  if (n > 0xfffffffeU) refuse(exit, Refusal::kNone, "has more than 2^32 - 2 rows");
  finite(exit, response.exit);
  const Place event{Role::kEvent, "event"};
  sameLength(event, response.event.size(), n);
  codes(event, response.event, std::size_t{response.causes} + 1);
  if (!response.entry.empty()) {
    const Place entry{Role::kEntry, "entry"};
    sameLength(entry, response.entry.size(), n);
    finite(entry, response.entry);
    for (std::size_t i = 0; i < n; ++i) {
      if (!(response.entry[i] < response.exit[i])) refuse(entry, i, "is not before exit");
    }
  }
  if (!rows.weight.empty()) {
    const Place weight{Role::kWeight, "weight"};
    sameLength(weight, rows.weight.size(), n);
    finite(weight, rows.weight);
    for (std::size_t i = 0; i < n; ++i) {
      if (rows.weight[i] < 0.0) refuse(weight, i, "is negative", "0 or more");
    }
  }
  if (!rows.offset.empty()) {
    const Place offset{Role::kOffset, "offset"};
    sameLength(offset, rows.offset.size(), n);
    finite(offset, rows.offset);
  }
  if (!rows.stratum.empty()) {
    const Place stratum{Role::kStrata, "stratum"};
    sameLength(stratum, rows.stratum.size(), n);
    codes(stratum, rows.stratum, rows.strata);
  }
  if (!rows.cluster.empty()) {
    const Place cluster{Role::kCluster, "cluster"};
    sameLength(cluster, rows.cluster.size(), n);
    codes(cluster, rows.cluster, rows.clusters);
  }
  if (design.names.size() != design.size() || design.term.size() != design.size()) {
    refuse({Role::kCovariate, "the design"}, Refusal::kNone,
           "has not as many names or terms as columns");
  }
  numerics::inParallel(design.size(), [&](std::size_t j) {
    const Place column{Role::kCovariate, design.names[j], j};
    sameLength(column, design.columns[j].size(), n);
    finite(column, design.columns[j]);
    if (design.term[j] >= design.termNames.size()) {
      refuse(column, Refusal::kNone, "is of a term without a name");
    }
  });
}

}  // namespace survmeth::engine::risk
