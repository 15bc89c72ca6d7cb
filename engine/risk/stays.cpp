#include "engine/risk/stays.h"

#include <algorithm>
#include <bit>

#include "engine/risk/parts.h"
#include "numerics/largeArray.h"
#include "numerics/runningSum.h"
#include "numerics/sizes.h"

namespace survmeth::engine::risk {

Stays::Stays(const Arrangement& arrangement) : arrangement_(arrangement) {
  if (!arrangement.lateEntry()) return;
  const std::size_t rows = arrangement.rows();
  kind_.assign(rows, kNever);
  chunkRow_.assign((arrangement.times() + kChunk - 1) / kChunk + 1,
                   static_cast<std::uint32_t>(rows));
  std::uint32_t used = 0;
  std::size_t chunk = 0;
  chunkRow_[0] = 0;
  for (std::uint32_t i = 0; i < rows; ++i) {
    const std::uint32_t from = arrangement.first[i];
    if (arrangement.end[i] - arrangement.event[i] <= from) continue;
    if (from == arrangement.stratumTime[arrangement.rowStratum[i]]) {
      kind_[i] = kFromStart;
      fromStart_.push_back(i);
      continue;
    }
    const auto width = static_cast<unsigned>(std::bit_width(from ^ to(i)));
    kind_[i] = static_cast<std::uint8_t>(width == 0 ? unsigned{kOnce} : kAcross + width - 1);
    if (width > 0) used |= std::uint32_t{1} << (width - 1);
    while (chunk < to(i) / kChunk) chunkRow_[++chunk] = i;
  }
  for (unsigned place = 0; place < 32; ++place) {
    if ((used >> place & 1U) != 0) places_.push_back(place);
  }
}

// Room for the sums of the times around those that the rows have come to: of the lower places for
// one chunk, of the higher ones for the block of times that a row may be split in.
class Stays::Windows {
 public:
  Windows(const Stays& stays, std::size_t columns, double filler)
      : places_(stays.places_), times_(stays.arrangement_.times()), columns_(columns) {
    std::size_t size = kSpare;
    for (const unsigned place : places_) {
      offset_[kAcross + place] = size;
      mask_[kAcross + place] = std::max(kChunk, block(place)) - 1;
      size += std::min(times_, mask_[kAcross + place] + 1);
    }
    values_.resize(numerics::product(size, columns), 0.0);
    std::fill_n(values_.begin(), kSpare * columns, filler);
  }

  // Where rows of a kind have time k; of those that are not split, one of the spare places.
  double* at(std::size_t kind, std::size_t k) {
    return values_.data() + (offset_[kind] + (k & mask_[kind])) * columns_;
  }

  // Calls work(block's first time, its count of times, half the length it can have, its window) for
  // the blocks that a row may be split in, place after place: of lower places those in the chunk, of
  // higher ones the one that the chunk is in, if it begins there or `all` is said, or, for
  // `ending`, ends there.
  template <typename Work>
  void forBlocks(std::size_t chunk, bool ending, bool all, const Work& work) {
    const std::size_t begin = chunk * kChunk;
    const std::size_t end = std::min(begin + kChunk, times_);
    for (const unsigned place : places_) {
      const std::size_t length = block(place);
      std::size_t from = begin / length * length;
      const std::size_t stop = std::min(from + length, times_);
      if (length > kChunk && !all && (ending ? stop != end : from != begin)) continue;
      for (; from < end; from += length) {
        const std::size_t count = std::min(length, times_ - from);
        // Else there is nothing to be split.
        if (count > length / 2) work(from, count, length / 2, at(kAcross + place, from));
      }
    }
  }

 private:
  static constexpr std::size_t kSpare = 8;
  static std::size_t block(unsigned place) { return std::size_t{2} << place; }

  const std::vector<unsigned>& places_;
  std::size_t times_, columns_;
  std::size_t offset_[kKinds] = {};
  std::size_t mask_[kKinds] = {kSpare - 1, kSpare - 1, kSpare - 1};
  numerics::LargeArray<double> values_;
};

// The rows that are at risk from the first time on, and those that fail.
template <std::size_t kColumns, typename Value>
void Stays::sumFromStart(const Value& value, double* others, double* failing) const {
  const Arrangement& a = arrangement_;
  std::size_t next = fromStart_.size();
  for (std::size_t s = a.strata(); s-- > 0;) {
    numerics::RunningSum sum[kColumns];
    double current[kColumns] = {};
    for (std::size_t k = a.stratumTime[s + 1]; k-- > a.stratumTime[s];) {
      const std::size_t stop = a.firstEvent[k] + a.events[k];
      for (; next > 0 && fromStart_[next - 1] >= stop; --next) {
        for (std::size_t c = 0; c < kColumns; ++c) {
          current[c] = sum[c].add(value(fromStart_[next - 1], c));
        }
      }
      for (std::size_t c = 0; c < kColumns; ++c) {
        others[k * kColumns + c] = current[c];
        double fail = value(stop - 1, c);
        for (std::size_t row = stop - 1; row > a.firstEvent[k]; --row) fail += value(row - 1, c);
        failing[k * kColumns + c] = fail;
      }
    }
  }
}

namespace {

// Sums of one block from both sides towards the middle's edges; the window is 0 again.
template <std::size_t kColumns>
void takeBlock(std::size_t count, std::size_t half, double* window, double* others) {
  double sum[kColumns] = {};
  const auto take = [&](std::size_t k) {
    for (std::size_t c = 0; c < kColumns; ++c) {
      others[k * kColumns + c] += (sum[c] += window[k * kColumns + c]);
      window[k * kColumns + c] = 0.0;
    }
  };
  for (std::size_t k = 0; k < half; ++k) take(k);
  std::fill_n(sum, kColumns, 0.0);
  for (std::size_t k = count; k-- > half;) take(k);
}

struct Plain {
  const double* value;
  double operator()(std::size_t i, std::size_t) const { return value[i]; }
};

struct Products {
  const double* factor;
  const numerics::BlockedColumns* x;
  std::size_t column;
  double operator()(std::size_t i, std::size_t c) const { return factor[i] * (*x)(i, column + c); }
};

}  // namespace

template <std::size_t kColumns, typename Value>
void Stays::sum(const Value& value, double* others, double* failing) const {
  const Arrangement& a = arrangement_;
  sumFromStart<kColumns>(value, others, failing);
  Windows windows(*this, kColumns, 0.0);
  for (std::size_t chunk = 0; chunk < chunks(); ++chunk) {
    for (std::size_t i = chunkRow_[chunk]; i < chunkRow_[chunk + 1]; ++i) {
      // Addresses, where decisions would be guessed wrong: what does not count goes to a spare
      // place.
      const std::size_t kind = kind_[i];
      double* last = windows.at(kind, to(i));
      double* first = windows.at(kind, a.first[i]);
      first = kind == kOnce ? others + std::size_t{a.first[i]} * kColumns : first;
      for (std::size_t c = 0; c < kColumns; ++c) {
        const double v = value(i, c);
        first[c] += v;
        last[c] += v;
      }
    }
    windows.forBlocks(chunk, true, false,
                      [&](std::size_t from, std::size_t count, std::size_t half, double* window) {
                        takeBlock<kColumns>(count, half, window, others + from * kColumns);
                      });
  }
}

void Stays::overRiskSets(std::span<const double> value, std::span<double> others,
                         std::span<double> failing) const {
  sum<1>(Plain{value.data()}, others.data(), failing.data());
}

void Stays::overRiskSets(std::span<const double> factor, const numerics::BlockedColumns& x,
                         std::size_t column, std::size_t columns, std::span<double> others,
                         std::span<double> failing) const {
  const Products value{factor.data(), &x, column};
  switch (columns) {
    case 1:
      return sum<1>(value, others.data(), failing.data());
    case 2:
      return sum<2>(value, others.data(), failing.data());
    case 3:
      return sum<3>(value, others.data(), failing.data());
    default:
      return sum<4>(value, others.data(), failing.data());
  }
}

void Stays::overTimes(std::span<const double> at, std::span<const double> own,
                      std::span<const double> before, std::span<double> sum) const {
  const Arrangement& a = arrangement_;
  // Each part of the times forms the blocks that it is in anew, so that there are not many parts.
  const std::size_t parts = std::min<std::size_t>(chunks(), 2 * numerics::threads() - 1);
  numerics::inParallel(parts, [&](std::size_t part) {
    const std::size_t firstChunk = part * chunks() / parts;
    const std::size_t lastChunk = (part + 1) * chunks() / parts;
    // Adding -0 changes no number.
    Windows windows(*this, 1, -0.0);
    for (std::size_t chunk = firstChunk; chunk < lastChunk; ++chunk) {
      windows.forBlocks(chunk, false, chunk == firstChunk,
                        [&](std::size_t from, std::size_t count, std::size_t half, double* window) {
                          double running = 0.0;
                          for (std::size_t k = half; k-- > 0;) {
                            window[k] = (running += at[from + k]);
                          }
                          running = 0.0;
                          for (std::size_t k = half; k < count; ++k) {
                            window[k] = (running += at[from + k]);
                          }
                        });
      for (std::size_t i = chunkRow_[chunk]; i < chunkRow_[chunk + 1]; ++i) {
        const std::size_t kind = kind_[i];
        // A time that exists, whatever it is multiplied with; a product, where a decision would be
        // guessed wrong.
        const double mine = own[std::max<std::size_t>(a.end[i], 1) - 1];
        const double* last = windows.at(kind, to(i));
        const double* first = windows.at(kind, a.first[i]);
        first = kind == kOnce ? at.data() + a.first[i] : first;
        sum[i] = static_cast<double>(a.event[i]) * mine;
        sum[i] += *first + *last;
      }
    }
  });
  inParts(fromStart_.size(), [&](std::size_t m) {
    const std::size_t i = fromStart_[m];
    sum[i] += before[a.rowStratum[i] + a.end[i] - std::size_t{a.event[i]}];
  });
}

}  // namespace survmeth::engine::risk
