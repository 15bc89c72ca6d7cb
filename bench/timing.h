// What a job is, and the ways in which it is timed.
#ifndef BENCH_TIMING_H_
#define BENCH_TIMING_H_

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/columns.h"

namespace survmeth::bench {

using Results = std::vector<std::pair<std::string, double>>;

// One analysis of fresh data: entry points sort their arrays, so none runs twice on the same ones.
struct Analysis {
  virtual ~Analysis() = default;
  virtual void run() = 0;
  virtual Results results() const = 0;
};

struct Job {
  std::string name;
  std::size_t columns;
  std::function<Columns(int rows)> make;
  std::function<std::unique_ptr<Analysis>(const Columns&)> prepare;
};

// Print what `bench_jobs time`, `threads` and `command` print; return the exit code.
int timeJob(const Job& job, const std::string& path, int runs);
int timeThreads(const Job& job, const std::string& path, int runs);
int runCommand(char** command);

}  // namespace survmeth::bench

#endif  // BENCH_TIMING_H_
