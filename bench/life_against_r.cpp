// One half of life_against_r.sh: makes the data, or times the analysis of them.
//
//   life_against_r make ROWS DAYS FILE   writes the raw columns time, status, group as doubles,
//                                        one column after the other; DAYS 1 for whole days
//   life_against_r run ROWS DAYS         analyses the same data: prints processor seconds, the
//                                        log-rank statistic, the median of group 1 and bytes a
//                                        row
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>

#include "bench/life_job.h"

// Every allocation of the program and of the libraries is counted.
namespace {
std::atomic<std::size_t> heldBytes{0};
std::atomic<std::size_t> peakBytes{0};

void* allocate(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  const std::size_t held = heldBytes += malloc_usable_size(block);
  if (held > peakBytes) peakBytes = held;
  return block;
}

void release(void* block) {
  if (block == nullptr) return;
  heldBytes -= malloc_usable_size(block);
  std::free(block);
}
}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }

namespace {

int make(int rows, bool wholeDays, const char* path) {
  const survmeth::bench::LifeData data = survmeth::bench::makeLifeData(rows, wholeDays);
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) return 1;
  bool written = true;
  for (const auto* column : {&data.time, &data.status, &data.group}) {
    written = written &&
              std::fwrite(column->data(), sizeof(double), column->size(), file) == column->size();
  }
  return std::fclose(file) == 0 && written ? 0 : 1;
}

int run(int rows, bool wholeDays) {
  double best = 0.0;
  double statistic = 0.0;
  double median = 0.0;
  constexpr int repetitions = 5;
  for (int k = 0; k < repetitions; ++k) {
    survmeth::bench::LifeData data = survmeth::bench::makeLifeData(rows, wholeDays);
    survmeth::bench::LifeTables tables;
    peakBytes = heldBytes.load();
    const std::clock_t start = std::clock();
    survmeth::bench::prepare(data);
    survmeth::bench::loadGrid(data, tables);
    survmeth::bench::estimate(data, tables);
    statistic = survmeth::bench::test(tables).logRank();
    const double taken = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    best = k == 0 ? taken : std::min(best, taken);
    median = tables.medians[0];
  }
  std::printf("%.6f %.15g %.15g %.1f\n", best, statistic, median,
              static_cast<double>(peakBytes.load()) / rows);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 3 ? argv[1] : "";
  const int rows = argc > 3 ? std::atoi(argv[2]) : 0;
  const bool wholeDays = argc > 3 && std::string(argv[3]) == "1";
  if (rows > 0 && what == "make" && argc == 5) return make(rows, wholeDays, argv[4]);
  if (rows > 0 && what == "run" && argc == 4) return run(rows, wholeDays);
  std::fprintf(stderr, "usage: life_against_r make ROWS DAYS FILE | run ROWS DAYS\n");
  return 2;
}
