#include "engine/risk/arrangement.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "engine/risk/parts.h"

namespace survmeth::engine::risk {
namespace {

// Rows by stratum, the order within a stratum kept; rows of weight 0 left out. `starts` gets the
// first position of every stratum code and, behind them, the count of all.
std::vector<std::uint32_t> byStratum(std::vector<std::uint32_t> order, const Rows& rows,
                                     std::vector<std::uint32_t>& starts) {
  if (rows.stratum.empty() && rows.weight.empty()) {
    starts = {0, static_cast<std::uint32_t>(order.size())};
    return order;
  }
  const auto takesPart = [&](std::uint32_t row) {
    return rows.weight.empty() || rows.weight[row] > 0.0;
  };
  const std::size_t strata = rows.stratum.empty() ? 1 : rows.strata;
  const auto code = [&](std::uint32_t row) {
    return rows.stratum.empty() ? 0U : rows.stratum[row];
  };
  starts.assign(strata + 1, 0);
  for (const std::uint32_t row : order) {
    if (takesPart(row)) ++starts[code(row) + 1];
  }
  for (std::size_t s = 0; s < strata; ++s) starts[s + 1] += starts[s];
  std::vector<std::uint32_t> next(starts.begin(), starts.end() - 1);
  std::vector<std::uint32_t> sorted(starts.back());
  for (const std::uint32_t row : order) {
    if (takesPart(row)) sorted[next[code(row)]++] = row;
  }
  return sorted;
}

}  // namespace

Arrangement::Arrangement(const Response& response, const Rows& rows, double tieTolerance) {
  TimeCodes codes(response, tieTolerance);
  std::vector<std::uint32_t> starts;
  codes.entryOrder = {};
  source = byStratum(std::move(codes.exitOrder), rows, starts);
  const std::size_t n = source.size();

  exitCode.resize(n);
  inParts(n, [&](std::size_t i) { exitCode[i] = codes.exit[source[i]]; });
  codes.exit = {};
  eventsFirst(response, starts);

  weight.resize(n, 1.0);
  event.resize(n);
  end.resize(n);
  rowStratum.resize(n);
  inParts(n, [&](std::size_t i) { event[i] = response.event[source[i]] != 0 ? 1 : 0; });
  if (!rows.weight.empty()) {
    inParts(n, [&](std::size_t i) { weight[i] = rows.weight[source[i]]; });
    weighted = std::any_of(weight.begin(), weight.end(), [](double w) { return w != 1.0; });
  }
  if (!rows.offset.empty()) {
    offset.resize(n);
    inParts(n, [&](std::size_t i) { offset[i] = rows.offset[source[i]]; });
  }
  reserveTimes(codes.time.size(), starts.size() - 1);
  for (std::size_t s = 0; s + 1 < starts.size(); ++s) {
    if (starts[s] == starts[s + 1]) continue;
    const auto stratum = static_cast<std::uint32_t>(stratumCode.size());
    stratumCode.push_back(static_cast<std::uint32_t>(s));
    stratumRow.push_back(starts[s]);
    stratumTime.push_back(static_cast<std::uint32_t>(time.size()));
    for (std::uint32_t i = starts[s]; i < starts[s + 1]; ++i) {
      rowStratum[i] = stratum;
      const std::uint32_t code = exitCode[i];
      if (event[i] != 0) {
        if (time.size() == stratumTime.back() || timeCode.back() != code) {
          time.push_back(codes.time[code]);
          timeCode.push_back(code);
          timeStratum.push_back(stratum);
          firstEvent.push_back(i);
          events.push_back(0);
          eventWeight.push_back(0.0);
        }
        ++events.back();
        eventWeight.back() += weight[i];
      }
      end[i] = static_cast<std::uint32_t>(time.size());
    }
  }
  stratumRow.push_back(static_cast<std::uint32_t>(n));
  stratumTime.push_back(static_cast<std::uint32_t>(time.size()));

  codeTime = std::move(codes.time);
  if (response.entry.empty()) return;
  entryCode.resize(n);
  inParts(n, [&](std::size_t i) { entryCode[i] = codes.entry[source[i]]; });
  codes.entry = {};
  findFirst();
}

// Of each row the first event time behind its entry.
void Arrangement::findFirst() {
  first.resize(rows());
  std::vector<std::uint32_t> table;
  std::vector<std::uint8_t> late(strata(), 0);
  for (std::size_t s = 0; s < strata(); ++s) {
    const std::uint32_t begin = stratumTime[s];
    const std::uint32_t stop = stratumTime[s + 1];
    const std::size_t count = stratumRow[s + 1] - stratumRow[s];
    const auto find = [&](std::size_t i, std::uint32_t k) {
      // A row between two event times is never at risk.
      first[i] = std::min(k, end[i]);
      return k > begin;
    };
    if (count < codeTime.size() / 8) {
      for (std::size_t i = stratumRow[s]; i < stratumRow[s + 1]; ++i) {
        const auto behind =
            std::upper_bound(timeCode.begin() + begin, timeCode.begin() + stop, entryCode[i]);
        const auto k = static_cast<std::uint32_t>(behind - timeCode.begin());
        if (find(i, k)) late[s] = 1;
      }
      continue;
    }
    // Where rows are many, looked up by the entry's code.
    table.resize(codeTime.size());
    std::uint32_t k = begin;
    for (std::uint32_t code = 0; code < table.size(); ++code) {
      while (k < stop && timeCode[k] <= code) ++k;
      table[code] = k;
    }
    std::atomic<bool> any = false;
    inRanges(count, [&](std::size_t from, std::size_t to) {
      bool found = false;
      for (std::size_t i = stratumRow[s] + from; i < stratumRow[s] + to; ++i) {
        found = find(i, table[entryCode[i]]) || found;
      }
      if (found) any = true;
    });
    late[s] = any ? 1 : 0;
  }
  if (std::all_of(late.begin(), late.end(), [](std::uint8_t each) { return each == 0; })) {
    first.clear();
  }
}

// For as many event times as there can be, so that none is moved on the way.
void Arrangement::reserveTimes(std::size_t distinct, std::size_t strataCodes) {
  std::size_t most = 0;
  for (const std::uint8_t one : event) most += one;
  if (strataCodes == 1) most = std::min(most, distinct);
  time.reserve(most);
  timeCode.reserve(most);
  timeStratum.reserve(most);
  firstEvent.reserve(most);
  events.reserve(most);
  eventWeight.reserve(most);
}

// Events before the others of their time and stratum, both in their order.
void Arrangement::eventsFirst(const Response& response, const std::vector<std::uint32_t>& starts) {
  for (std::size_t s = 0; s + 1 < starts.size(); ++s) {
    for (std::size_t i = starts[s]; i < starts[s + 1];) {
      std::size_t stop = i + 1;
      while (stop < starts[s + 1] && exitCode[stop] == exitCode[i]) ++stop;
      if (stop > i + 1) {
        std::stable_partition(source.begin() + static_cast<std::ptrdiff_t>(i),
                              source.begin() + static_cast<std::ptrdiff_t>(stop),
                              [&](std::uint32_t row) { return response.event[row] != 0; });
      }
      i = stop;
    }
  }
}

}  // namespace survmeth::engine::risk
