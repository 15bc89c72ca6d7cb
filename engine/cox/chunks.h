// Rows and times in parts for threads. The parts depend on the data alone, so that sums over them
// are the same for every number of threads.
#ifndef ENGINE_COX_CHUNKS_H_
#define ENGINE_COX_CHUNKS_H_

#include <algorithm>
#include <cstddef>

#include "numerics/gram.h"
#include "numerics/threads.h"

namespace survmeth::engine::cox {

// 0 .. size - 1 in parts of `each`.
class Chunks {
 public:
  Chunks(std::size_t size, std::size_t each) : size_(size), each_(each) {}
  // Blocks of rows: at most 64 parts and none of less than 2048 rows, and fewer of many columns, so
  // that a matrix of columns x columns for each part needs no more memory than the rows do.
  explicit Chunks(const numerics::BlockedColumns& x)
      : Chunks(x.blocks(), std::max({std::size_t{8}, (x.blocks() + 63) / 64, x.columns() / 64})) {}

  std::size_t count() const { return (size_ + each_ - 1) / each_; }
  std::size_t begin(std::size_t chunk) const { return chunk * each_; }
  std::size_t end(std::size_t chunk) const { return std::min(size_, (chunk + 1) * each_); }

  // Calls work(chunk, begin, end) for each, on several threads.
  template <typename Work>
  void inParallel(const Work& work) const {
    numerics::inParallel(count(),
                         [&](std::size_t chunk) { work(chunk, begin(chunk), end(chunk)); });
  }

 private:
  std::size_t size_, each_;
};

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_CHUNKS_H_
