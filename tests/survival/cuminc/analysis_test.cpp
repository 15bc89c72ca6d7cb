// The whole way of an analysis: status check, preparation, pooled Kaplan-Meier table, incidence,
// cumulative hazard. Its numbers stand in docs/statistics/cuminc.md.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "survival/calls/cuminc.h"
#include "survival/calls/life.h"
#include "tests/support/csv.h"
#include "tests/support/page.h"
#include "tests/survival/cuminc/tables.h"

namespace {

using survmeth::test::Csv;
using survmeth::test::Incidence;
using survmeth::test::Page;
using survmeth::test::Subjects;
using survmeth::test::Table;
using Vector = std::vector<double>;

// The liver trial prepared in strata of column `stratumName`, or in one.
struct Trial {
  int n;
  Vector time, raw, status, flag, stratum, codes, sizes;
  int types = 0;
  double maxTime = 0.0;

  explicit Trial(const std::string& stratumName = "") {
    const Csv data(SURVMETH_DATA "/pbc.csv");
    time = data.numbers("time");
    raw = data.numbers("status");
    n = static_cast<int>(time.size());
    stratum = stratumName.empty() ? Vector(time.size(), 1.0) : data.numbers(stratumName);
    sizes = {0, 0};
    for (const double label : stratum) ++sizes[label == 1 ? 0 : 1];
    flag.resize(time.size());
    status.resize(time.size());
    codes.resize(time.size());
    EXPECT_EQ(Cpp_CheckStatusFormat(raw.data(), n, codes.data(), &types, 0, status.data()), 0);
    EXPECT_EQ(Cpp_ReorganizeDataCum(time.data(), n, status.data(), flag.data(), stratum.data(),
                                    sizes.data(), stratumName.empty() ? 1 : 2, &maxTime),
              0);
  }

  // Pooled Kaplan-Meier table of a stratum of m rows; r receives its groups.
  Table pooled(int m, int offset, int& r) {
    Vector weight(time.size(), 1.0), intervals((m + 1) * 2);
    double bounds = 0.0, total = 0.0, grid = 0.0;
    Table km(m + 2, 12, 0.0);
    RunLife(n, 1, &offset, 0, 1.0, 0, 1, m, 1, 0, 0, time.data(), flag.data(), weight.data(), 0, 0,
            0, 0, &bounds, intervals.data(), &total, km.data(), &r, &grid);
    return km;
  }

  Table incidence(int type, int m, int offset) {
    int r = 0;
    Table km = pooled(m, offset, r);
    Table table(r, 10, 0.0), complement(r, 10, 0.0);
    Cpp_CumIncCalc(r, n, time.data(), status.data(), type, 0.05, m, offset, km.data(), table.data(),
                   complement.data());
    return table;
  }
};

// The last row not after a time.
int rowAt(const Table& table, double time) {
  int row = 0;
  while (row < table.rows() && table(row + 1, 1) <= time) ++row;
  return row;
}

TEST(CompetingRisksAnalysis, TypesAreNumberedAsTheyAppear) {
  const Trial trial;
  EXPECT_EQ(trial.types, 2);
  EXPECT_EQ(trial.codes[0], 2);  // death comes first in the file
  EXPECT_EQ(trial.codes[1], 1);
  EXPECT_EQ(trial.maxTime, 4556);
}

TEST(CompetingRisksAnalysis, EndsWhereTablesMadeFromCountsEnd) {
  const Csv data(SURVMETH_DATA "/pbc.csv");
  const Subjects subjects(data.numbers("time"), data.numbers("status"));
  Trial trial;
  for (const int type : {1, 2}) {
    const Table table = trial.incidence(type, trial.n, 0);
    const Table expected = Incidence(subjects, trial.codes[type - 1]).table;
    ASSERT_EQ(table.rows(), expected.rows());
    EXPECT_EQ(table.values(), expected.values());
  }
}

TEST(CompetingRisksAnalysis, StrataAreThoseOfTheirRowsAlone) {
  Trial trial("trt");
  const Csv data(SURVMETH_DATA "/pbc.csv");
  int offset = 0;
  for (const double treatment : {1.0, 2.0}) {
    Vector time, status;
    for (int i = 0; i < trial.n; ++i) {
      if (data.number("trt", i) != treatment) continue;
      time.push_back(data.number("time", i));
      status.push_back(data.number("status", i));
    }
    const int m = static_cast<int>(time.size());
    const Table table = trial.incidence(1, m, offset);
    const Table expected = Incidence(Subjects(time, status), 2).table;
    EXPECT_EQ(table.values(), expected.values());
    offset += m;
  }
  EXPECT_EQ(offset, trial.n);
}

TEST(CompetingRisksAnalysis, FiveYearsOfTheLiverTrial) {
  Trial trial;
  const Table death = trial.incidence(1, trial.n, 0);
  const Table transplant = trial.incidence(2, trial.n, 0);
  const int row = rowAt(death, 1826);
  const Page page("cuminc");
  page.says("%d patients: death (raw code %.0f, type 1", trial.n, trial.codes[0]);
  page.says("the last time before is day %.0f, with %.0f at risk", death(row, 1), death(row, 2));
  page.says("| death | %.4f | %.4f | %.4f to %.4f |", death(row, 6), death(row, 7), death(row, 8),
            death(row, 9));
  page.says("| transplant | %.4f | %.4f | %.4f to %.4f |", transplant(row, 6), transplant(row, 7),
            transplant(row, 8), transplant(row, 9));

  // Another program's incidences and variances at that time.
  const Csv reference(SURVMETH_REFERENCE "/cuminc_pbc.csv");
  const Vector times = reference.numbers("time");
  std::size_t at = 0;
  while (times[at] != 1810) ++at;
  EXPECT_NEAR(death(row, 6), reference.number("incidence2", at), 1e-13);
  EXPECT_NEAR(transplant(row, 6), reference.number("incidence1", at), 1e-13);
  // Its variance is another estimate, which differs by a part of the number of events.
  EXPECT_NEAR(death(row, 7) / std::sqrt(reference.number("var2", at)), 1, 0.005);
  EXPECT_NEAR(transplant(row, 7) / std::sqrt(reference.number("var1", at)), 1, 0.005);

  int r = 0;
  Table km = trial.pooled(trial.n, 0, r);
  EXPECT_NEAR(km(row + 1, 8), 1 - death(row, 6) - transplant(row, 6), 1e-13);
  page.says("the pooled survival of %.4f", km(row + 1, 8));
  Table hazard(r, 9, 0.0);
  Cpp_TransNelsonAalen(km.data(), hazard.data(), trial.n, r, 0.05, 2, 1);
  page.says("is %.4f (standard error %.4f, log limits %.4f to %.4f), and exp(-%.4f) = %.4f",
            hazard(row, 5), hazard(row, 6), hazard(row, 7), hazard(row, 8), hazard(row, 5),
            hazard(row, 9));
}

TEST(CompetingRisksAnalysis, TreatmentsOfTheLiverTrialByGraysTest) {
  const Csv data(SURVMETH_DATA "/pbc.csv");
  Vector time = data.numbers("time"), status = data.numbers("status"), arm = data.numbers("trt");
  double statistic = 0.0, df = 0.0, pValue = 0.0;
  const int n = static_cast<int>(time.size());
  const Page page("cuminc");
  Cpp_GrayTest(n, 2, time.data(), status.data(), arm.data(), 2, 0.0, &statistic, &df, &pValue);
  page.says("death, statistic %.4f on %.0f degree of freedom, p = %.3f;", statistic, df, pValue);
  Cpp_GrayTest(n, 2, time.data(), status.data(), arm.data(), 1, 0.0, &statistic, &df, &pValue);
  page.says("transplant, %.4f, p = %.3f.", statistic, pValue);
}

}  // namespace
