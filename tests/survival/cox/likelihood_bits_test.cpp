// The Cox partial likelihood bit for bit against the formulas as plain loops over checked reads.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "tests/support/matrices.h"
#include "tests/survival/cox/cox_case.h"
#include "tests/survival/cox/literal.h"

namespace {

using survmeth::test::CoxArrays;
using survmeth::test::CoxCase;
using survmeth::test::Doubles;
using survmeth::test::Likelihood;
using survmeth::test::LiteralLikelihood;
using survmeth::test::threeEvents;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kBreslow = 0;
constexpr int kEfron = 1;

std::uint64_t bits(double x) {
  std::uint64_t b;
  std::memcpy(&b, &x, sizeof b);
  return b;
}

void expectSameBits(double got, double expected, const char* what) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(got)) << what;
  } else {
    EXPECT_EQ(bits(got), bits(expected)) << what << ": " << got << " " << expected;
  }
}

void expectLiteral(CoxCase* c, int ties, const Doubles& beta) {
  const Likelihood fast(c, ties, beta);
  const LiteralLikelihood literal(c, ties, beta);
  expectSameBits(fast.logLik, literal.logLik, "log-likelihood");
  for (int i = 1; i <= c->p; ++i) {
    expectSameBits(fast.gradient.vbget(i, 1), literal.gradient.vbget(i, 1), "gradient");
    for (int j = 1; j <= c->p; ++j) {
      expectSameBits(fast.hessian.vbget(i, j), literal.hessian.vbget(i, j), "second derivative");
    }
  }
}

struct Random {
  explicit Random(int seed) : engine(static_cast<std::uint64_t>(seed)) {}
  int below(int n) { return static_cast<int>(engine() % static_cast<std::uint64_t>(n)); }
  double normal() { return std::normal_distribution<double>()(engine); }
  std::mt19937_64 engine;
};

CoxArrays randomArrays(Random* random, int n, int p, int S) {
  Doubles time, status{1.0}, labels, sizes(S);
  std::vector<Doubles> columns(p);
  const int ties = 1 + random->below(3) * random->below(n);
  for (int i = 0; i < n; ++i) {
    time.push_back(random->below(1 + n / ties));
    if (i > 0) status.push_back(random->below(4) == 0 ? 0.0 : random->below(9) == 0 ? 0.5 : 1.0);
    labels.push_back(1 + random->below(S));
    ++sizes[static_cast<std::size_t>(labels.back()) - 1];
    for (Doubles& column : columns) column.push_back(random->normal());
  }
  return CoxArrays(time, status, columns, labels, sizes);
}

Doubles randomBeta(Random* random, int p) {
  Doubles beta;
  for (int j = 0; j < p; ++j) beta.push_back(random->below(5) == 0 ? 0.0 : random->normal());
  return beta;
}

TEST(CoxLikelihood, HasTheBitsOfTheFormulas) {
  Random random(1);
  for (int round = 0; round < 300; ++round) {
    const int p = random.below(8);
    CoxCase c(randomArrays(&random, 2 + random.below(90), p, 1 + random.below(3)));
    for (const int ties : {kBreslow, kEfron}) expectLiteral(&c, ties, randomBeta(&random, p));
  }
}

TEST(CoxLikelihood, HasTheBitsOfTheFormulasAtTheLimitsOfExp) {
  Random random(2);
  const Doubles odd{699, 700, 701, 709, 710, -746, 1e308, kInf, -kInf, kNaN, -0.0, 5e-324};
  for (int round = 0; round < 200; ++round) {
    const int p = 1 + random.below(3);
    CoxCase c(randomArrays(&random, 2 + random.below(20), p, 1 + random.below(2)));
    for (int k = 0; k < 3; ++k) {
      c.X.vbset(1 + random.below(c.n), 1 + random.below(p),
                odd[static_cast<std::size_t>(random.below(static_cast<int>(odd.size())))]);
    }
    Doubles beta = randomBeta(&random, p);
    if (round % 2 == 0) beta.assign(static_cast<std::size_t>(p), 1.0);
    for (const int ties : {kBreslow, kEfron}) expectLiteral(&c, ties, beta);
  }
}

TEST(CoxLikelihood, TablesThatPointOutsideReadAsTheContainersDo) {
  Random random(3);
  for (int round = 0; round < 400; ++round) {
    const int p = 1 + random.below(3);
    CoxCase c(randomArrays(&random, 2 + random.below(12), p, 1 + random.below(3)));
    for (int k = 0; k < 1 + random.below(4); ++k) {
      const int s = 1 + random.below(c.S);
      const int group = 1 + random.below(c.G);
      switch (random.below(6)) {
        case 0:
          c.start.vbset(s, group, random.below(4 * c.n) - 2 * c.n);
          break;
        case 1:
          c.size.vbset(s, group, random.below(4 * c.n) - c.n);
          break;
        case 2:
          c.events.vbset(s, group, random.below(9) - 3);
          break;
        case 3:
          c.distinct.vbset(s, 1, random.below(c.G + 6) - 1);
          break;
        case 4:
          c.sizes.vbset(1, s, random.below(4 * c.n) - c.n);
          break;
        default:
          c.S += random.below(3);
          break;
      }
    }
    for (const int ties : {kBreslow, kEfron}) expectLiteral(&c, ties, randomBeta(&random, p));
  }
}

TEST(CoxLikelihood, WildTablesEndAndStayInside) {
  const Doubles columns = threeEvents().columns();
  const int extremes[] = {2147483647, -2147483647 - 1, 100000, -100000};
  for (const int wild : extremes) {
    for (int place = 0; place < 4; ++place) {
      for (const int ties : {kBreslow, kEfron}) {
        CoxCase c = threeEvents();
        matrixInt* tables[] = {&c.start, &c.size, &c.events, &c.distinct};
        tables[place]->vbset(1, 1, wild);
        Likelihood(&c, ties, {0.1});
        EXPECT_EQ(c.columns(), columns);
      }
    }
    CoxCase c = threeEvents();
    c.S = wild;
    Likelihood(&c, kBreslow, {0.1});
    EXPECT_EQ(c.columns(), columns);
    CoxCase sized = threeEvents();
    sized.sizes.vbset(1, 1, wild);
    Likelihood(&sized, kBreslow, {0.1});
  }
  for (const double size : {kNaN, kInf, 1e300}) {
    CoxCase c = threeEvents();
    c.sizes.vbset(1, 1, size);
    Likelihood(&c, kBreslow, {0.1});
  }
}

}  // namespace
