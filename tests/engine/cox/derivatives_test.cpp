// Likelihood and derivatives against direct sums at 50 digits, where risks differ by many powers of
// ten and where the two parts of the information cancel.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/cox/likelihood.h"
#include "tests/engine/cox/data.h"

namespace survmeth {
namespace {

using engine::cox::Hazards;
using engine::cox::Problem;
using engine::cox::Ties;
using test::Csv;

constexpr std::size_t kColumns = 3;

test::CoxData sample(const std::string& name) {
  const Csv file(std::string(SURVMETH_REFERENCE) + "/cox/derivatives_data.csv");
  test::CoxData data;
  data.columns.resize(kColumns);
  for (std::size_t i = 0; i < file.rows(); ++i) {
    if (file.text("case", i) != name) continue;
    data.entry.push_back(file.number("entry", i));
    data.exit.push_back(file.number("exit", i));
    data.event.push_back(file.number("event", i) != 0.0 ? 1 : 0);
    data.weight.push_back(file.number("weight", i));
    data.offset.push_back(file.number("offset", i));
    for (std::size_t j = 0; j < kColumns; ++j) {
      data.columns[j].push_back(file.number("x" + std::to_string(j + 1), i));
    }
  }
  return data;
}

// Of the gradient in units of the standard errors and of the information relative to its diagonal.
void expectDerivatives(const std::string& name, double tolerance) {
  const Csv expected(std::string(SURVMETH_REFERENCE) + "/cox/derivatives.csv");
  const test::CoxData data = sample(name);
  ASSERT_EQ(data.exit.size(), 80U);
  const Problem problem(data.response(), data.rows(), data.design(), 0.0);
  int cases = 0;
  for (std::size_t row = 0; row < expected.rows(); ++row) {
    if (expected.text("case", row) != name) continue;
    ++cases;
    const std::string ties = expected.text("ties", row);
    const auto number = [&](const std::string& column) { return expected.number(column, row); };
    std::vector<double> beta;
    for (std::size_t j = 1; j <= kColumns; ++j) beta.push_back(number("beta" + std::to_string(j)));
    Hazards hazards;
    numerics::NewtonPoint point;
    ASSERT_TRUE(engine::cox::evaluate(problem, ties == "efron" ? Ties::kEfron : Ties::kBreslow,
                                      beta, hazards, point));
    // The likelihood is a difference of sums of up to 4e4 and of products beta x of up to 1e6.
    EXPECT_NEAR(point.value, number("logLikelihood"), 1e-10) << name << " " << ties;
    const auto diagonal = [&](std::size_t j) {
      const std::string index = std::to_string(j + 1);
      return number("information" + index + index);
    };
    for (std::size_t j = 0; j < kColumns; ++j) {
      EXPECT_NEAR(point.gradient[j], number("gradient" + std::to_string(j + 1)),
                  tolerance * std::sqrt(diagonal(j)))
          << name << " " << ties << " gradient " << j + 1;
      for (std::size_t k = 0; k <= j; ++k) {
        const std::string column = "information" + std::to_string(j + 1) + std::to_string(k + 1);
        EXPECT_NEAR(point.information(j, k), number(column),
                    tolerance * std::sqrt(diagonal(j) * diagonal(k)))
            << name << " " << ties << " " << column;
        EXPECT_EQ(point.information(j, k), point.information(k, j));
      }
    }
  }
  EXPECT_EQ(cases, 2);
}

// Some hundred additions of terms of the sums' own size: 1e-13 is 500 times their rounding.
TEST(CoxDerivatives, LoseNoDigitsWithRisksThatDifferByTwelvePowersOfTen) {
  expectDerivatives("risks", 1e-13);
}

TEST(CoxDerivatives, LoseNoDigitsWithOffsetsOf500EitherWay) {
  expectDerivatives("from start", 1e-13);
}

TEST(CoxDerivatives, LoseNoDigitsWithOffsetsOf500EitherWayAndLateEntry) {
  expectDerivatives("offsets", 1e-13);
}

TEST(CoxDerivatives, LoseNoDigitsWithOffsetsOf2000EitherWay) {
  expectDerivatives("far from start", 1e-13);
}

TEST(CoxDerivatives, LoseNoDigitsWithOffsetsOf2000EitherWayAndLateEntry) {
  expectDerivatives("far", 1e-13);
}

// Covariates of a spread of 1 that lie 1e6 apart have a last digit of 1e-10 themselves; the mean
// that is taken from them leaves half of that.
TEST(CoxDerivatives, LoseNoDigitsWhereRowsOfNoWeightLieFarAway) {
  expectDerivatives("step", 1e-10);
}

TEST(CoxDerivatives, LoseNoDigitsWhereRiskSetsLieFarFromEachOther) {
  expectDerivatives("drift", 1e-10);
}

}  // namespace
}  // namespace survmeth
