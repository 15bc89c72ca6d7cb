// Designs held against model.matrix of R, column by column.
#include "model/design.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "tests/model/data.h"
#include "tests/support/csv.h"

namespace survmeth::model {
namespace {

using Strings = std::vector<std::string>;

Coding learnt(const std::string& formula, const frame::Frame& data,
              const CodingOptions& options = {}) {
  return Coding::learn(parseFormula(formula), data, options);
}

std::vector<double> column(const DesignColumns& made, std::size_t j) {
  return {made.design.columns[j].begin(), made.design.columns[j].end()};
}

// R computes the same columns by other roads: an orthogonal factorisation for poly(), B-splines
// summed in another order for ns(). Each value is compared with the largest of its column, which
// is what a coefficient multiplies.
void expectNear(std::span<const double> have, const std::vector<double>& want,
                const std::string& what) {
  constexpr double kBasis = 1e-12;
  double largest = 0;
  for (const double value : want) largest = std::max(largest, std::fabs(value));
  ASSERT_EQ(have.size(), want.size()) << what;
  for (std::size_t i = 0; i < want.size(); ++i) {
    ASSERT_NEAR(have[i], want[i], kBasis * largest) << what << ", row " << i;
  }
}

TEST(Design, IsThatOfR) {
  const frame::Frame all = patients();
  const auto jobs = tabbed("formulas.txt");
  ASSERT_GE(jobs.size(), 80U);
  for (const Strings& job : jobs) {
    const std::string what = job[3] + " on " + job[1] + " rows";
    const frame::Frame data = firstRows(all, std::stoul(job[1]));
    const DesignColumns made = learnt(job[3], data).design(data);
    const test::Csv want(reference("design_" + job[0] + ".csv"));
    EXPECT_EQ(made.design.size(), want.names().size()) << what;
    if (made.design.size() != want.names().size()) continue;
    for (std::size_t j = 0; j < made.design.size(); ++j) {
      const std::vector<double> numbers = want.numbers(want.names()[j]);
      if (job[2] == "coding") {
        EXPECT_EQ(column(made, j), numbers) << what << ", " << made.design.names[j];
      } else {
        expectNear(made.design.columns[j], numbers, what + ", " + made.design.names[j]);
      }
    }
  }
}

}  // namespace
}  // namespace survmeth::model
