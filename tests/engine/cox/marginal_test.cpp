// The exact marginal likelihood against its closed form at 50 digits
// (tests/reference/cox/make_marginal.py).
#include <gtest/gtest.h>

#include "engine/cox/likelihood.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Ties;
using test::Csv;

TEST(MarginalTies, ValueAndDerivativesAreThoseOfTheClosedForm) {
  const std::string folder = std::string(SURVMETH_REFERENCE) + "/cox/";
  const Csv table(folder + "marginal.csv");
  std::size_t compared = 0;
  for (std::size_t line = 0; line < table.rows();) {
    const std::string name = table.text("data", line);
    const auto rows = static_cast<std::size_t>(table.number("rows", line));
    const Csv file(folder + "data/" + name + ".csv");
    test::CoxData data;
    const auto cut = [&](std::vector<double> values) {
      values.resize(rows);
      return values;
    };
    data.exit = cut(file.numbers("time"));
    if (name == "heart") data.entry = cut(file.numbers("start"));
    for (const double event : cut(file.numbers("event"))) data.event.push_back(event != 0.0);
    for (const std::string& column : test::split(table.text("columns", line), ';')) {
      data.columns.push_back(cut(file.numbers(column)));
    }
    const engine::cox::Problem problem(data.response(), data.rows(), data.design(), 0.0);
    std::vector<double> at;
    for (std::size_t i = line; i < table.rows() && table.text("data", i) == name; ++i) {
      if (table.text("item", i) == "at") at.push_back(table.number("value", i));
    }
    engine::cox::Hazards hazards;
    numerics::NewtonPoint point;
    ASSERT_TRUE(evaluate(problem, Ties::kMarginal, at, hazards, point));
    for (; line < table.rows() && table.text("data", line) == name; ++line) {
      const std::string item = table.text("item", line);
      const auto j = static_cast<std::size_t>(table.number("row", line));
      const auto k = static_cast<std::size_t>(table.number("column", line));
      const double expected = table.number("value", line);
      // The rule's own error is below 1e-15; what is left is rounding.
      const double tolerance = 1e-12 * std::max(1.0, std::fabs(expected));
      if (item == "logLikelihood") {
        EXPECT_NEAR(point.value, expected, tolerance) << name;
      }
      if (item == "gradient") {
        EXPECT_NEAR(point.gradient[j], expected, 1e-12 * std::sqrt(point.information(j, j)))
            << name << j;
      }
      if (item == "information") {
        const double scale = std::sqrt(point.information(j, j) * point.information(k, k));
        EXPECT_NEAR(point.information(j, k), expected, 1e-12 * scale) << name << j << k;
      }
      compared += item == "at" ? 0 : 1;
    }
  }
  EXPECT_EQ(compared, 35U);
}

TEST(MarginalTies, TwoTiedEventsAreTheSumOfTheirOrders) {
  // Risks 1, 2 and 3; the first two fail together: 1/6 * 2/5 + 2/6 * 1/4.
  test::CoxData data;
  data.exit = {1, 1, 2};
  data.event = {1, 1, 0};
  data.offset = {0.0, std::log(2.0), std::log(3.0)};
  engine::cox::Options options;
  options.ties = Ties::kMarginal;
  EXPECT_NEAR(data.fit(options).logLikelihood, std::log(1.0 / 15 + 1.0 / 12), 1e-14);
}

TEST(DiscreteTies, TwoTiedEventsAreAmongAllPairs) {
  // Risks 1, 2 and 3: 1 * 2 / (1 * 2 + 1 * 3 + 2 * 3).
  test::CoxData data;
  data.exit = {1, 1, 2};
  data.event = {1, 1, 0};
  data.offset = {0.0, std::log(2.0), std::log(3.0)};
  engine::cox::Options options;
  options.ties = Ties::kDiscrete;
  EXPECT_NEAR(data.fit(options).logLikelihood, std::log(2.0 / 11), 1e-14);
}

TEST(EfronTies, TwoTiedEventsShareTheirRisk) {
  // Risks 1, 2 and 3: 1 / 6 * 2 / (6 - 3 / 2).
  test::CoxData data;
  data.exit = {1, 1, 2};
  data.event = {1, 1, 0};
  data.offset = {0.0, std::log(2.0), std::log(3.0)};
  EXPECT_NEAR(data.fit().logLikelihood, std::log(2.0 / (6.0 * 4.5)), 1e-14);
}

}  // namespace
}  // namespace survmeth
