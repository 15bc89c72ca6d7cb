// When rows that enter late are at risk, and sums over them that read the rows once, in their order.
#ifndef ENGINE_RISK_STAYS_H_
#define ENGINE_RISK_STAYS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/risk/arrangement.h"
#include "numerics/gram.h"

namespace survmeth::engine::risk {

// The event times from .. to at which each row is at risk without failing. Rows come in the order
// of their last such time, so that the sums of the neighbouring times which share a place stand
// side by side in a window, and are complete when the rows have passed it.
//
// A byte for a row, and four more for one that is at risk from its stratum's first time on.
class Stays {
 public:
  // Empty where no row enters late.
  explicit Stays(const Arrangement& arrangement);

  // As those of Sums.
  void overRiskSets(std::span<const double> value, std::span<double> others,
                    std::span<double> failing) const;
  void overRiskSets(std::span<const double> factor, const numerics::BlockedColumns& x,
                    std::size_t column, std::size_t columns, std::span<double> others,
                    std::span<double> failing) const;

  // In   before[times + strata]  sums of `at` up to each time from its stratum's first on, with a 0
  //                              before it
  void overTimes(std::span<const double> at, std::span<const double> own,
                 std::span<const double> before, std::span<double> sum) const;

  // Rows that are at risk, without failing, from their stratum's first time on, ascending.
  const std::vector<std::uint32_t>& fromStart() const { return fromStart_; }
  // Calls work(row, time) for the others that are so at one time only.
  template <typename Work>
  void forThoseAtOneTime(const Work& work) const {
    for (std::size_t i = 0; i < kind_.size(); ++i) {
      if (kind_[i] == kOnce) work(i, arrangement_.first[i]);
    }
  }
  // The places of binary digits at which rows are split, ascending.
  const std::vector<unsigned>& places() const { return places_; }
  // Calls work(row, from, to) for the rows that are split at a place.
  template <typename Work>
  void forThoseAcross(unsigned place, const Work& work) const {
    for (std::size_t i = 0; i < kind_.size(); ++i) {
      if (kind_[i] == kAcross + place) work(i, arrangement_.first[i], to(i));
    }
  }

 private:
  // Of a row; what is not at risk without failing has none of the others.
  enum Kind : std::uint8_t { kNever, kFromStart, kOnce, kAcross };  // kAcross + place
  static constexpr std::size_t kKinds = kAcross + 32;
  // Times of which the sums of all lower places are taken together.
  static constexpr unsigned kChunkPlaces = 10;
  static constexpr std::size_t kChunk = std::size_t{1} << kChunkPlaces;

  class Windows;
  template <std::size_t kColumns, typename Value>
  void sum(const Value& value, double* others, double* failing) const;
  template <std::size_t kColumns, typename Value>
  void sumFromStart(const Value& value, double* others, double* failing) const;

  std::uint32_t to(std::size_t i) const { return arrangement_.end[i] - arrangement_.event[i] - 1U; }
  std::size_t chunks() const { return chunkRow_.empty() ? 0 : chunkRow_.size() - 1; }

  const Arrangement& arrangement_;
  std::vector<std::uint8_t> kind_;
  std::vector<std::uint32_t> fromStart_;
  std::vector<unsigned> places_;
  // Of each chunk of times the first row that may end in it; one more: all rows.
  std::vector<std::uint32_t> chunkRow_;
};

}  // namespace survmeth::engine::risk

#endif  // ENGINE_RISK_STAYS_H_
