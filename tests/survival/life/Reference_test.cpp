// Whole analyses of public data against the results of another program, and the numbers that the
// documentation's worked example shows.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "tests/support/csv.h"
#include "tests/support/page.h"
#include "tests/survival/life/life_calls.h"

namespace {

using survmeth::test::Csv;
using survmeth::test::kMissingMark;
using survmeth::test::kYes;
using survmeth::test::LifeCall;
using survmeth::test::LifeTables;
using survmeth::test::Page;
using survmeth::test::prepare;
using survmeth::test::Prepared;
using survmeth::test::runLife;
using survmeth::test::Sheet;
using Values = std::vector<double>;

struct Stratum {
  LifeTables tables;
  int rows = 0;  // of the data
  double cut = 0.0;
  Values mean = Values(4, 0.0);
  Sheet quartiles = Sheet(3, 4);
};

struct Analysis {
  std::map<std::string, Stratum> strata;
  Sheet tests = Sheet(3, 4);
};

// Groups are numbered in the order in which they first appear.
Analysis analyse(const std::string& file, const std::string& time, const std::string& status,
                 const std::string& group) {
  const Csv data(std::string(SURVMETH_DATA) + "/" + file);
  std::vector<std::string> names;
  Values codes, sizes;
  for (const std::string& name : data.texts(group)) {
    std::size_t j = 0;
    while (j < names.size() && names[j] != name) ++j;
    if (j == names.size()) {
      names.push_back(name);
      sizes.push_back(0.0);
    }
    codes.push_back(static_cast<double>(j) + 1.0);
    sizes[j] += 1.0;
  }
  const Prepared prepared = prepare(data.numbers(time), data.numbers(status), codes, sizes);
  EXPECT_EQ(prepared.code, 0);

  const int K = static_cast<int>(names.size());
  int times = static_cast<int>(prepared.time.size());
  Values pooled = prepared.time;
  Sheet grid(3 * K + 1, times, 0.0);
  LoadKaplanTest(&times, times, K, pooled.data(), grid.data());

  Analysis out;
  Sheet filled(3 * K + 1, times, 0.0);
  LifeCall call;
  call.time = prepared.time;
  call.status = prepared.status;
  call.fill = 0.0;
  call.fillStrata = kYes;
  call.nStrata = K;
  for (int g = 1; g <= times; ++g) call.gridTimes.push_back(grid.at(1, g));
  for (int j = 1; j <= K; ++j) {
    call.stratum = j;
    call.m = static_cast<int>(sizes[static_cast<std::size_t>(j) - 1]);
    Stratum stratum{runLife(call), call.m};
    ComputeKaplanMeanMedian(stratum.tables.table.data(), call.m, 0.05, call.m, stratum.tables.nRows,
                            &stratum.cut, stratum.mean.data(), stratum.quartiles.data());
    for (int g = 1; g <= times; ++g) {
      filled.at(1, g) = stratum.tables.grid.at(1, g);
      // The stratum's last row covers the grid only up to its own last time.
      const bool past = filled.at(1, g) > stratum.tables.table.at(stratum.tables.nRows + 1, 1);
      for (int row = 3 * j - 1; row <= 3 * j + 1; ++row) {
        filled.at(row, g) = past ? 0.0 : stratum.tables.grid.at(row, g);
      }
    }
    call.offset += call.m;
    out.strata.emplace(names[static_cast<std::size_t>(j) - 1], std::move(stratum));
  }
  ComputeLifeTests(filled.data(), times, times, K, 0.05, out.tests.data());
  return out;
}

void expectReferenceTables(const Analysis& analysis, const std::string& file) {
  const Csv reference(std::string(SURVMETH_REFERENCE) + "/" + file);
  std::map<std::string, int> rows;
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    const std::string& group = reference.text("group", i);
    const Sheet& table = analysis.strata.at(group).tables.table;
    const int row = ++rows[group] + 1;
    EXPECT_EQ(table.at(row, 1), reference.number("time", i));
    EXPECT_EQ(table.at(row, 3), reference.number("n.risk", i));
    EXPECT_EQ(table.at(row, 4), reference.number("n.event", i));
    EXPECT_EQ(table.at(row, 5), reference.number("n.censor", i));
    const double survival = reference.number("survival", i);
    EXPECT_NEAR(table.at(row, 8), survival, 1e-10);
    if (survival == 0.0) {
      // Where the curve reaches zero the sum has no finite value there, and a carried one here.
      EXPECT_EQ(table.at(row, 11), table.at(row - 1, 11));
      continue;
    }
    EXPECT_NEAR(table.at(row, 11), reference.number("greenwood.sum", i), 1e-10);
    EXPECT_NEAR(table.at(row, 8) * std::sqrt(table.at(row, 11)), reference.number("std.err", i),
                1e-10);
  }
  for (const auto& [name, stratum] : analysis.strata) EXPECT_EQ(stratum.tables.nRows, rows[name]);
}

void expectReferenceLogRank(const Analysis& analysis, const std::string& name) {
  const Csv reference(std::string(SURVMETH_REFERENCE) + "/logrank.csv");
  for (std::size_t i = 0; i < reference.rows(); ++i) {
    if (reference.text("data", i) != name) continue;
    EXPECT_NEAR(analysis.tests.at(1, 1), reference.number("chisq", i), 1e-10);
    EXPECT_EQ(analysis.strata.size(), 1 + static_cast<std::size_t>(reference.number("df", i)));
    return;
  }
  FAIL() << name;
}

TEST(LifeReference, LeukaemiaByTreatment) {
  const Analysis analysis = analyse("leukemia.csv", "weeks", "relapse", "treatment");
  expectReferenceTables(analysis, "km_leukemia.csv");
  expectReferenceLogRank(analysis, "leukemia by treatment");
}

TEST(LifeReference, LungCancerBySex) {
  const Analysis analysis = analyse("lung.csv", "time", "status", "sex");
  expectReferenceTables(analysis, "km_lung.csv");
  expectReferenceLogRank(analysis, "lung by sex");
}

TEST(LifeReference, VeteransByCellType) {
  const Analysis analysis = analyse("veteran.csv", "time", "status", "celltype");
  expectReferenceTables(analysis, "km_veteran.csv");
  expectReferenceLogRank(analysis, "veteran by celltype");
}

// The numbers that docs/statistics/life.md shows. Tests, medians, quartiles with their bounds and
// restricted areas were computed apart in R, the weighted tests from the hypergeometric moments.
TEST(LifeReference, TheWorkedExampleOfTheDocumentation) {
  const Analysis analysis = analyse("leukemia.csv", "weeks", "relapse", "treatment");
  const Values statistics{16.7929409892, 13.4578520496, 15.1235753019};
  const Values probabilities{4.16880910933e-05, 2.43982921891e-04, 1.00697884424e-04};
  for (int row = 1; row <= 3; ++row) {
    const auto i = static_cast<std::size_t>(row) - 1;
    EXPECT_NEAR(analysis.tests.at(row, 1), statistics[i], 1e-9);
    EXPECT_NEAR(analysis.tests.at(row, 3), probabilities[i], 1e-14);
    EXPECT_NEAR(analysis.tests.at(row, 2), 3.841458820694124, 1e-12);
  }

  const Stratum& placebo = analysis.strata.at("placebo");
  EXPECT_EQ(placebo.cut, 0.0);
  EXPECT_NEAR(placebo.mean[0], 182.0 / 21, 1e-12);  // nobody is censored: the arithmetic mean
  EXPECT_NEAR(placebo.mean[1], 1.41140479383609, 1e-12);
  EXPECT_EQ(placebo.quartiles.row(1, 4), (Values{0.75, 12, 8, 17}));
  EXPECT_EQ(placebo.quartiles.row(2, 4), (Values{0.5, 8, 4, 11}));
  EXPECT_EQ(placebo.quartiles.row(3, 4), (Values{0.25, 4, 2, 8}));

  const Stratum& sixMp = analysis.strata.at("6-MP");
  EXPECT_EQ(sixMp.cut, 34.0);  // the area ends at 32, the last time below the cut
  EXPECT_NEAR(sixMp.mean[0], 21.94285714285714, 1e-12);
  EXPECT_NEAR(sixMp.mean[1], 2.53286889571457, 1e-12);
  const double last = sixMp.tables.table.at(sixMp.tables.nRows + 1, 8);
  EXPECT_NEAR(last, 0.4481792717086834, 1e-15);
  EXPECT_NEAR(sixMp.mean[0] + (35 - 32) * last, 23.287395, 5e-7);
  EXPECT_EQ(sixMp.quartiles.row(1, 4), (Values{0.75, kMissingMark, kMissingMark, kMissingMark}));
  EXPECT_EQ(sixMp.quartiles.row(2, 4), (Values{0.5, 23, 13, kMissingMark}));
  EXPECT_EQ(sixMp.quartiles.row(3, 4), (Values{0.25, 13, 6, 23}));

  // The first rows of the 6-MP table: 18/21, times 16/17, times 14/15.
  const Sheet& table = sixMp.tables.table;
  EXPECT_NEAR(table.at(2, 8), 18.0 / 21, 1e-15);
  EXPECT_NEAR(table.at(3, 8), 18.0 / 21 * 16 / 17, 1e-15);
  EXPECT_NEAR(table.at(4, 8), 18.0 / 21 * 16 / 17, 1e-15);
  EXPECT_NEAR(table.at(5, 8), 18.0 / 21 * 16 / 17 * 14 / 15, 1e-15);

  const Page page("life");
  page.says("weeks in remission of %d children with leukaemia, %d given 6-MP and %d placebo",
            sixMp.rows + placebo.rows, sixMp.rows, placebo.rows);
  page.says("the mean is %.0f weeks / %d", placebo.mean[0] * placebo.rows, placebo.rows);
  const auto curve = [&](int row, const char* fraction) {
    page.says("| %.0f | %.0f | %.0f | %.0f | %.4f |%s |", table.at(row, 1), table.at(row, 3),
              table.at(row, 4), table.at(row, 5), table.at(row, 8), fraction);
  };
  curve(2, " 18/21");
  curve(3, " 18/21 x 16/17");
  curve(4, "");
  curve(5, " 18/21 x 16/17 x 14/15");
  const auto quartile = [](const Stratum& stratum, int row, int column) {
    return stratum.quartiles.at(row, column);
  };
  page.says(
      "| weeks at which survival falls to 0.75 (95 %% interval) | %.0f (%.0f to %.0f) | %.0f (%.0f "
      "to %.0f) |",
      quartile(sixMp, 3, 2), quartile(sixMp, 3, 3), quartile(sixMp, 3, 4), quartile(placebo, 3, 2),
      quartile(placebo, 3, 3), quartile(placebo, 3, 4));
  page.says("| median (95 %% interval) | %.0f (%.0f to none) | %.0f (%.0f to %.0f) |",
            quartile(sixMp, 2, 2), quartile(sixMp, 2, 3), quartile(placebo, 2, 2),
            quartile(placebo, 2, 3), quartile(placebo, 2, 4));
  page.says("| weeks at which survival falls to 0.25 | not reached | %.0f (%.0f to %.0f) |",
            quartile(placebo, 1, 2), quartile(placebo, 1, 3), quartile(placebo, 1, 4));
  page.says("| mean (standard error) | %.3f (%.3f), cut %.0f | %.3f (%.3f) |", sixMp.mean[0],
            sixMp.mean[1], sixMp.cut, placebo.mean[0], placebo.mean[1]);
  page.says("The 6-MP curve ends at %.4f, so", last);
  const int end = sixMp.tables.nRows + 1;
  page.says(
      "The cut is %.0f, but the area stops at %.0f, the last time below the cut. Up to the "
      "last time, %.0f,",
      sixMp.cut, table.at(end - 2, 1), table.at(end, 1));
  page.says("the area is %.3f + 3 x %.4f = %.3f weeks", sixMp.mean[0], last,
            sixMp.mean[0] + 3 * last);
  page.says("| log-rank | %.3f | %s |", analysis.tests.at(1, 1),
            survmeth::test::pText(analysis.tests.at(1, 3)).c_str());
  page.says("| Gehan-Breslow | %.3f | %.6f |", analysis.tests.at(2, 1), analysis.tests.at(2, 3));
  page.says("| Tarone-Ware | %.3f | %.6f |", analysis.tests.at(3, 1), analysis.tests.at(3, 3));
  page.says("The critical value is %.3f (one degree", analysis.tests.at(1, 2));
}

}  // namespace
