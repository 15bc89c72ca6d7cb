#include "bench/timing.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "numerics/threads.h"

namespace survmeth::bench {
namespace {

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Of this process now, in bytes.
double residentMemory() {
  double pages = 0.0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%*f %lf", &pages) != 1) pages = 0.0;
    std::fclose(file);
  }
  return pages * static_cast<double>(sysconf(_SC_PAGESIZE));
}

double peakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024.0;
}

// Seconds of one analysis, as the mean of `count` that run one after the other.
double timed(const Job& job, const Columns& raw, int count, Results* results) {
  std::vector<std::unique_ptr<Analysis>> fresh;
  for (int k = 0; k < count; ++k) fresh.push_back(job.prepare(raw));
  const double start = processorSeconds();
  for (const auto& analysis : fresh) analysis->run();
  const double taken = (processorSeconds() - start) / count;
  *results = fresh.back()->results();
  return taken;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

}  // namespace

int timeJob(const Job& job, const std::string& path, int runs) {
  numerics::setThreads(1);
  const Columns raw = readColumns(path, job.columns);
  Results results;
  double held = 0.0;
  double once = 0.0;
  {
    const std::unique_ptr<Analysis> first = job.prepare(raw);
    held = residentMemory();
    const double start = processorSeconds();
    first->run();
    once = processorSeconds() - start;
  }
  const double grown = peakMemory() - held;
  constexpr double atLeast = 0.02;  // seconds, far above the resolution of the clock
  constexpr double most = 2000.0;
  const int count = static_cast<int>(std::clamp(atLeast / std::max(once, 1e-9), 1.0, most));
  std::printf("seconds");
  for (int k = 0; k < runs; ++k) std::printf(" %.9g", timed(job, raw, count, &results));
  std::printf("\npeak %.0f\ngrown %.0f\n", peakMemory(), grown);
  for (const auto& [name, value] : results) std::printf("result %s %.15g\n", name.c_str(), value);
  return 0;
}

int timeThreads(const Job& job, const std::string& path, int runs) {
  const Columns raw = readColumns(path, job.columns);
  std::vector<double> taken[2];
  for (int run = 0; run < runs; ++run) {
    for (const unsigned count : {1U, 2U}) {
      numerics::setThreads(count);
      const std::unique_ptr<Analysis> analysis = job.prepare(raw);
      const auto start = std::chrono::steady_clock::now();
      analysis->run();
      const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
      taken[count - 1].push_back(passed.count());
    }
  }
  for (const int count : {1, 2}) {
    std::printf(count == 1 ? "one" : "two");
    for (const double seconds : taken[count - 1]) std::printf(" %.9g", seconds);
    std::printf("\n");
  }
  return 0;
}

int runCommand(char** command) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int stream : {0, 1, 2}) dup2(nowhere, stream);
    execvp(command[0], command);
    _exit(127);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return 1;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  std::printf("seconds %.9g %.9g\npeak %ld\n", passed.count(),
              seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss * 1024L);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace survmeth::bench
