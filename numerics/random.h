// Random numbers that are a function of a seed, a stream and a place in it: the same on every machine
// and for every order in which threads take the streams.
#ifndef NUMERICS_RANDOM_H_
#define NUMERICS_RANDOM_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace survmeth::numerics {

// Philox4x32 with ten rounds: 128 bits of a counter to 128 random bits, under a key of 64.
//
// Source Salmon, Moraes, Dror & Shaw, Parallel random numbers: as easy as 1, 2, 3, Proc. Supercomputing
//      (2011), 16
inline std::array<std::uint32_t, 4> philox(std::array<std::uint32_t, 4> counter,
                                           std::array<std::uint32_t, 2> key) {
  for (int round = 0; round < 10; ++round) {
    const std::uint64_t first = std::uint64_t{0xD2511F53U} * counter[0];
    const std::uint64_t second = std::uint64_t{0xCD9E8D57U} * counter[2];
    counter = {static_cast<std::uint32_t>(second >> 32) ^ counter[1] ^ key[0],
               static_cast<std::uint32_t>(second),
               static_cast<std::uint32_t>(first >> 32) ^ counter[3] ^ key[1],
               static_cast<std::uint32_t>(first)};
    key[0] += 0x9E3779B9U;  // the golden ratio's fraction
    key[1] += 0xBB67AE85U;  // that of the square root of 3
  }
  return counter;
}

// One of 2^64 streams of a seed, each of 2^66 numbers: a replicate takes the stream of its own number.
class Random {
 public:
  explicit Random(std::uint64_t seed, std::uint64_t stream = 0)
      : key_{low(seed), high(seed)}, stream_{low(stream), high(stream)} {}

  std::uint32_t bits32() {
    if (taken_ == 4) {
      words_ = philox({low(block_), high(block_), stream_[0], stream_[1]}, key_);
      ++block_;
      taken_ = 0;
    }
    return words_[taken_++];
  }
  // The first 32 bits drawn are the high ones.
  std::uint64_t bits64() {
    const std::uint64_t first = bits32();
    return first << 32 | bits32();
  }

  // In [0, 1), a multiple of 2^-53.
  double uniform() { return static_cast<double>(bits64() >> 11) * 0x1p-53; }

  // In 0 .. count - 1, each with the same probability.
  //
  // In   count  above 0
  // Source Lemire, ACM Trans. Model. Comput. Simul. 29 (2019) 3
  std::uint32_t below(std::uint32_t count) {
    std::uint64_t product = std::uint64_t{bits32()} * count;
    if (low(product) < count) {
      // The lowest of the 2^32 products that would give some numbers once more than others.
      const std::uint32_t surplus = (0U - count) % count;
      while (low(product) < surplus) product = std::uint64_t{bits32()} * count;
    }
    return high(product);
  }

 private:
  static std::uint32_t low(std::uint64_t bits) { return static_cast<std::uint32_t>(bits); }
  static std::uint32_t high(std::uint64_t bits) { return static_cast<std::uint32_t>(bits >> 32); }

  std::array<std::uint32_t, 2> key_, stream_;
  std::uint64_t block_ = 0;
  std::array<std::uint32_t, 4> words_{};
  std::size_t taken_ = 4;
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_RANDOM_H_
