// Makes the data of a job, or times our side of it; `bench/run` calls this beside the same job in
// R.
//
//   bench_jobs list                  a line for each job: its name and the columns of its file
//   bench_jobs make JOB ROWS FILE    writes the raw columns as doubles, one after the other
//   bench_jobs time JOB FILE RUNS    prints "seconds" with the processor time of each run, "peak"
//                                    with the most memory the process had, in bytes, "grown" with
//                                    what of it one analysis took beside its data, and "result" lines
//                                    that R has to agree with
//   bench_jobs threads JOB FILE RUNS prints "one" and "two" with the seconds that passed in each run
//                                    on one thread and on two, in turns
//   bench_jobs command PROGRAM ...   runs a program, its output dropped, and prints the seconds
//                                    that passed, the processor's, and "peak" as above: a small
//                                    process has to start it, because what the starting one holds
//                                    counts as the program's
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/columns.h"
#include "bench/competing_job.h"
#include "bench/cox_job.h"
#include "bench/cuminc_job.h"
#include "bench/curves_job.h"
#include "bench/hazards_job.h"
#include "bench/judge_job.h"
#include "bench/life_job.h"
#include "bench/methcomp_job.h"
#include "bench/param_job.h"
#include "bench/roc_job.h"
#include "bench/tests_job.h"
#include "bench/timing.h"
#include "bench/validation_job.h"

namespace {

namespace bench = survmeth::bench;
using bench::Column;
using bench::Columns;

using bench::Analysis;
using bench::Job;
using bench::Results;

template <typename T>
Job job(const std::string& name, std::size_t columns, std::function<Columns(int rows)> make) {
  return {name, columns, std::move(make),
          [](const Columns& raw) { return std::make_unique<T>(raw); }};
}

constexpr int kCovariates = 10;
constexpr int kFewCovariates = 3;

struct Cox : Analysis {
  explicit Cox(const Columns& raw) : fit(dataOf(raw), false) {}
  static bench::CoxData dataOf(const Columns& raw) {
    bench::CoxData data{
        static_cast<int>(raw[0].size()), static_cast<int>(raw.size()) - 2, raw[0], raw[1], {}};
    for (std::size_t j = 2; j < raw.size(); ++j) {
      data.covariates.insert(data.covariates.end(), raw[j].begin(), raw[j].end());
    }
    return data;
  }
  void run() override { fit.run(); }
  Results results() const override {
    return {{"beta", fit.beta[0]}, {"minusTwoLogLik", fit.criteria[8]}};
  }
  bench::CoxFit fit;
};

Columns coxColumns(int rows, int covariates, bool weeks) {
  const bench::CoxData data = bench::makeCoxData(rows, covariates, true, weeks);
  Columns columns{data.time, data.status};
  for (int j = 0; j < covariates; ++j) {
    const auto first = data.covariates.begin() + static_cast<std::ptrdiff_t>(j) * rows;
    columns.emplace_back(first, first + rows);
  }
  return columns;
}

using bench::HazardsPart;
using bench::HazardsShape;

// A job of proportional hazards with so many covariates.
template <HazardsPart kPart, HazardsShape kShape = HazardsShape::kRight>
Job hazards(const std::string& name, int covariates) {
  const std::size_t before = kShape == HazardsShape::kRight ? 2 : 3;
  return job<bench::Hazards<kPart, kShape>>(
      name, before + static_cast<std::size_t>(covariates),
      [covariates](int n) { return bench::hazardsColumns(n, covariates, kShape); });
}

struct ParamFit : Analysis {
  explicit ParamFit(const Columns& raw) : data(raw), fit(data) {}
  void run() override { fit.run(data); }
  Results results() const override { return {{"logLik", fit.logLikOfLogarithms(data)}}; }
  bench::ParamData data;
  bench::ParamFit fit;
};

// One log-likelihood with gradient and second derivatives.
struct ParamEvaluation : Analysis {
  explicit ParamEvaluation(const Columns& raw) : data(raw), model(data, 2) {}
  void run() override { model.valueAndDerivatives(data); }
  Results results() const override { return {}; }
  bench::ParamData data;
  bench::ParamModel model;
};

Columns paramColumns(int rows) {
  const bench::ParamData data(rows, kCovariates);
  Columns columns{Column(data.times.data(), data.times.data() + rows),
                  Column(data.status.data(), data.status.data() + rows)};
  for (int j = 0; j < kCovariates; ++j) {
    const double* first = data.covariates.data() + static_cast<std::size_t>(j) * rows;
    columns.emplace_back(first, first + rows);
  }
  return columns;
}

constexpr int kRiskGroups = 3;

bench::CumIncData cumIncData(const Columns& raw, int groups) {
  bench::CumIncData data(0, false, groups);
  data.n = static_cast<int>(raw[0].size());
  data.time = raw[0];
  data.status = raw[1];
  data.flag.resize(raw[0].size());
  data.group = groups > 1 ? raw[2] : Column(raw[0].size(), 1.0);
  data.sizes.assign(static_cast<std::size_t>(groups), 0.0);
  for (const double group : data.group) data.sizes[static_cast<std::size_t>(group) - 1] += 1.0;
  return data;
}

// Incidence of both types in every group, from raw columns.
double incidences(bench::CumIncData& data, int groups) {
  double last = 0.0;
  data.prepare();
  for (int group = 1; group <= groups; ++group) {
    bench::Pooled pooled(data, group);
    for (const int type : {1, 2}) {
      bench::Incidence incidence(pooled);
      incidence.run(data, pooled, type);
      last = incidence.at(pooled, pooled.groups / 2);
    }
  }
  return last;
}

struct CumInc : Analysis {
  explicit CumInc(const Columns& raw) : data(cumIncData(raw, 1)) {}
  void run() override { halfway = incidences(data, 1); }
  Results results() const override { return {{"incidence", halfway}}; }
  bench::CumIncData data;
  double halfway = 0.0;
};

// Gray's test for both types.
struct GrayTests : Analysis {
  explicit GrayTests(const Columns& raw) : data(cumIncData(raw, kRiskGroups)) {}
  void run() override {
    for (const int type : {1, 2}) {
      double df = 0.0, p = 0.0;
      Cpp_GrayTest(data.n, kRiskGroups, data.time.data(), data.status.data(), data.group.data(),
                   type, 0.0, &statistics[type - 1], &df, &p);
    }
  }
  Results results() const override { return {{"type1", statistics[0]}, {"type2", statistics[1]}}; }
  bench::CumIncData data;
  double statistics[2] = {};
};

// And the incidences of every group as well.
struct GrayWithCurves : GrayTests {
  using GrayTests::GrayTests;
  void run() override {
    GrayTests::run();
    incidences(data, kRiskGroups);
  }
};

Columns riskColumns(int rows, int groups) {
  const bench::CumIncData data(rows, false, groups);
  if (groups == 1) return {data.time, data.status};
  return {data.time, data.status, data.group};
}

struct Roc : Analysis {
  explicit Roc(const Columns& raw) : data(bench::rocData(raw)) {}
  void run() override {
    bench::countThresholds(data);
    bench::RocCurve curve(data);
    curve.run(data, 2);
    area = curve.summary[0];
    error = curve.summary[1];
  }
  Results results() const override { return {{"area", area}, {"error", error}}; }
  bench::RocData data;
  double area = 0.0, error = 0.0;
};

constexpr int kTests = 2;

struct RocPair : Analysis {
  explicit RocPair(const Columns& raw) : data(bench::rocData(raw)), comparison(data, kTests) {}
  void run() override { comparison.run(data); }
  Results results() const override { return {{"covariance", comparison.covariance[kTests]}}; }
  bench::RocData data;
  bench::RocComparison comparison;
};

Columns rocColumns(int rows, bool rounded, int tests) {
  const bench::RocData data = bench::makeRocData(rows, tests, rounded);
  Columns columns{data.status};
  for (int t = 0; t < tests; ++t) {
    const auto first = data.tests.begin() + static_cast<std::ptrdiff_t>(t) * rows;
    columns.emplace_back(first, first + rows);
  }
  return columns;
}

struct Concordance : Analysis {
  explicit Concordance(const Columns& raw) : data(0, false) {
    data.time = raw[0];
    data.status = raw[1];
    for (std::size_t j = 2; j < raw.size(); ++j) {
      data.X.insert(data.X.end(), raw[j].begin(), raw[j].end());
    }
  }
  void run() override { row.run(data); }
  Results results() const override { return {{"concordance", row.table[3]}}; }
  bench::ValidationData data;
  bench::ValidationRow row;
};

Columns validationColumns(int rows) {
  const bench::ValidationData data(rows, false);
  Columns columns{data.time, data.status};
  for (int j = 0; j < 3; ++j) {
    const auto first = data.X.begin() + static_cast<std::ptrdiff_t>(j) * rows;
    columns.emplace_back(first, first + rows);
  }
  return columns;
}

struct Bootstrap : Analysis {
  explicit Bootstrap(const Columns& raw) {
    for (const Column& column : raw) {
      statistics.insert(statistics.end(), column.begin(), column.end());
    }
  }
  void run() override { summary.run(statistics); }
  Results results() const override {
    return {{"mean", summary.summary[0]}, {"lower", summary.summary[10]}};
  }
  Column statistics;
  bench::BootstrapSummary summary;
};

Columns bootstrapColumns(int rows) {
  const Column all = bench::makeBootstrap(rows);
  Columns columns;
  for (int c = 0; c < 5; ++c) {
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(c) * rows;
    columns.emplace_back(first, first + rows);
  }
  return columns;
}

template <void (bench::Methods::*analysis)()>
struct Comparison : Analysis {
  explicit Comparison(const Columns& raw) : methods(raw[0], raw[1]) {}
  void run() override { (methods.*analysis)(); }
  Results results() const override { return {{"first", methods.s[0]}, {"second", methods.s[1]}}; }
  bench::Methods methods;
};

Columns methodColumns(int rows) {
  const bench::Methods methods(rows);
  return {methods.x, methods.y};
}

// The file only says how many subjects there are.
struct Intervals : Analysis {
  explicit Intervals(const Columns& raw) : data(static_cast<int>(raw[0].size())) {}
  void run() override { data.run(); }
  Results results() const override { return {}; }
  bench::Inspections data;
};

const std::vector<Job>& jobs() {
  static const std::vector<Job> all{
      job<bench::Curves>("life_days", 3, [](int n) { return bench::lifeColumns(n, true); }),
      job<bench::Curves>("life_distinct", 3, [](int n) { return bench::lifeColumns(n, false); }),
      job<bench::Curves>("life_entry", 4, bench::entryColumns),
      job<bench::Life>("addin_life_days", 3, [](int n) { return bench::lifeColumns(n, true); }),
      job<bench::Life>("addin_life_distinct", 3,
                       [](int n) { return bench::lifeColumns(n, false); }),
      job<bench::EqualSurvival>("tests_days", 3, [](int n) { return bench::testColumns(n, true); }),
      job<bench::EqualSurvival>("tests_distinct", 3,
                                [](int n) { return bench::testColumns(n, false); }),
      job<Cox>("cox_distinct", 2 + kCovariates,
               [](int n) { return coxColumns(n, kCovariates, false); }),
      job<Cox>("cox_three", 2 + kFewCovariates,
               [](int n) { return coxColumns(n, kFewCovariates, false); }),
      job<Cox>("cox_weeks", 2 + kCovariates,
               [](int n) { return coxColumns(n, kCovariates, true); }),
      hazards<HazardsPart::kFit>("hazards_fit", kCovariates),
      hazards<HazardsPart::kFit>("hazards_hundred", 100),
      hazards<HazardsPart::kAll>("hazards_all", kCovariates),
      hazards<HazardsPart::kRobust>("hazards_robust", kCovariates),
      hazards<HazardsPart::kFit, HazardsShape::kEntry>("hazards_entry", kFewCovariates),
      hazards<HazardsPart::kFit, HazardsShape::kPairs>("hazards_pairs", kFewCovariates),
      hazards<HazardsPart::kFit, HazardsShape::kSets>("hazards_sets", kFewCovariates),
      hazards<HazardsPart::kDiscrete, HazardsShape::kSets>("hazards_discrete", kFewCovariates),
      job<ParamFit>("param_fit", 2 + kCovariates, paramColumns),
      job<ParamEvaluation>("param_iteration", 2 + kCovariates, paramColumns),
      job<CumInc>("incidence", 2, [](int n) { return riskColumns(n, 1); }),
      job<GrayTests>("gray", 3, [](int n) { return riskColumns(n, kRiskGroups); }),
      job<GrayWithCurves>("gray_curves", 3, [](int n) { return riskColumns(n, kRiskGroups); }),
      job<bench::EngineGray>("incidence_engine", 3,
                             [](int n) { return riskColumns(n, kRiskGroups); }),
      job<bench::FineGray>("finegray", 2 + 5, [](int n) { return bench::fineGrayColumns(n, 5); }),
      job<bench::FineGray>("finegray_ten", 2 + 10,
                           [](int n) { return bench::fineGrayColumns(n, 10); }),
      job<bench::States>("states", 5, bench::statesColumns),
      job<Concordance>("concordance", 5, validationColumns),
      job<Bootstrap>("bootstrap", 5, bootstrapColumns),
      job<Roc>("roc_rounded", 3, [](int n) { return rocColumns(n, true, kTests); }),
      job<Roc>("roc_distinct", 3, [](int n) { return rocColumns(n, false, kTests); }),
      job<RocPair>("roc_pair", 3, [](int n) { return rocColumns(n, false, kTests); }),
      job<Comparison<&bench::Methods::blandAltman>>("bland_altman", 2, methodColumns),
      job<Comparison<&bench::Methods::repeatability>>("repeatability", 2, methodColumns),
      job<Comparison<&bench::Methods::passingBablok>>("passing_bablok", 2, methodColumns),
      job<Comparison<&bench::Methods::deming>>("deming", 2, methodColumns),
      job<Intervals>("intervals", 1, [](int n) { return Columns{Column(n, 1.0)}; }),
  };
  return all;
}

int usage() {
  std::fputs(
      "usage: bench_jobs list | make JOB ROWS FILE | time JOB FILE RUNS |\n       bench_jobs "
      "threads JOB FILE RUNS | command ...\n",
      stderr);
  return 2;
}

int run(const std::vector<std::string>& arguments) {
  if (arguments == std::vector<std::string>{"list"}) {
    for (const Job& job : jobs()) std::printf("%s %zu\n", job.name.c_str(), job.columns);
    return 0;
  }
  if (arguments.size() != 4) return usage();
  const auto job = std::find_if(jobs().begin(), jobs().end(),
                                [&](const Job& each) { return each.name == arguments[1]; });
  if (job == jobs().end()) return usage();
  if (arguments[0] == "make" && std::atoi(arguments[2].c_str()) > 0) {
    bench::writeColumns(job->make(std::atoi(arguments[2].c_str())), arguments[3]);
    return 0;
  }
  if (arguments[0] == "time" && std::atoi(arguments[3].c_str()) > 0) {
    return bench::timeJob(*job, arguments[2], std::atoi(arguments[3].c_str()));
  }
  if (arguments[0] == "threads" && std::atoi(arguments[3].c_str()) > 0) {
    return bench::timeThreads(*job, arguments[2], std::atoi(arguments[3].c_str()));
  }
  return usage();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc > 2 && std::string(argv[1]) == "command") return bench::runCommand(argv + 2);
    return run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_jobs: %s\n", error.what());
    return 1;
  }
}
