#include "engine/states/history.h"

#include <algorithm>
#include <numeric>
#include <string>

#include "engine/risk/arrangement.h"

namespace survmeth::engine::states {
namespace {

void requireColumns(const Histories& h) {
  const std::size_t n = h.rows();
  const auto refuse = [](Role role, std::size_t row, const std::string& text) {
    throw Refusal(role, row, text);
  };
  if (h.entry.size() != n || h.from.size() != n || h.to.size() != n ||
      (!h.subject.empty() && h.subject.size() != n)) {
    refuse(Role::kTime, Refusal::kNone, "the columns differ in length");
  }
  Rows rows;
  rows.weight = h.weight;
  rows.cluster = h.cluster;
  rows.clusters = h.clusters;
  const std::vector<std::uint32_t> none(n, 0);
  risk::check({h.entry, h.exit, none, 1}, rows, {});
  for (std::size_t i = 0; i < n; ++i) {
    if (h.from[i] >= h.states) refuse(Role::kEvent, i, "a state code is out of range");
    if (h.to[i] == kNowhere) continue;
    if (h.to[i] >= h.states) refuse(Role::kEvent, i, "a state code is out of range");
    if (h.to[i] == h.from[i]) refuse(Role::kEvent, i, "a row leads to the state that it is in");
  }
  for (std::size_t i = 0; i < h.subject.size(); ++i) {
    if (h.subject[i] >= h.subjects) refuse(Role::kSubject, i, "a subject code is out of range");
  }
}

}  // namespace

std::vector<Fault> check(const Histories& histories) {
  requireColumns(histories);
  std::vector<Fault> faults;
  if (histories.subject.empty()) return faults;
  std::vector<std::uint32_t> order(histories.rows());
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    if (histories.subject[a] != histories.subject[b]) {
      return histories.subject[a] < histories.subject[b];
    }
    return histories.entry[a] < histories.entry[b];
  });
  for (std::size_t i = 1; i < order.size(); ++i) {
    const std::uint32_t a = order[i - 1];
    const std::uint32_t b = order[i];
    if (histories.subject[a] != histories.subject[b]) continue;
    if (histories.entry[b] != histories.exit[a]) {
      const bool before = histories.entry[b] < histories.exit[a];
      faults.push_back({before ? Fault::Kind::kOverlap : Fault::Kind::kGap, a, b});
      continue;
    }
    const std::uint32_t next = histories.to[a] == kNowhere ? histories.from[a] : histories.to[a];
    if (histories.from[b] != next) faults.push_back({Fault::Kind::kJump, a, b});
  }
  return faults;
}

}  // namespace survmeth::engine::states
