// The sorted windows against the sums over pairs, on random and degenerate samples.
#include <random>

#include "tests/survival/roc/literal.h"
#include "tests/survival/roc/support.h"

namespace {

using namespace survmeth::test::roc;

enum class Weights { unit, whole, fractional, tiny, mixedSigns, extreme, notFinite };

struct Sampler {
  explicit Sampler(unsigned seed) : random(seed) {}

  int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
  double uniform() { return static_cast<double>(random()) / 4294967296.0; }

  // Values with ties, near ties on both sides of 1e-12 and, where asked, what is no usual number.
  double value(bool degenerate) {
    const double base = below(6);
    switch (below(degenerate ? 12 : 8)) {
      case 0:
        return below(5) * 5e-13;  // differences of exactly 1e-12 among them
      case 1:
        return base + below(3) * 1e-12;
      case 2:
        return uniform() * 6;
      case 8:
        return kNaN;
      case 9:
        return kInf;
      case 10:
        return -kInf;
      case 11:
        return kMissing;
      default:
        return base;
    }
  }

  double weight(Weights kind) {
    switch (kind) {
      case Weights::unit:
        return 1.0;
      case Weights::whole:
        return below(5);
      case Weights::fractional:
        return uniform() * 3;
      case Weights::tiny:
        return uniform() < 0.2 ? 1.0 : 1e-6 * std::exp(4 * uniform() - 2);
      case Weights::mixedSigns:
        return uniform() * 4 - 1;
      case Weights::extreme:
        return std::pow(10.0, below(2) == 0 ? 170 : below(2) == 0 ? -170 : 0);
      default:
        return below(6) == 0 ? (below(2) == 0 ? kNaN : kInf) : 1.0;
    }
  }

  std::mt19937 random;
};

struct Sample {
  Vector status, values, weights;
};

Sample sampleOf(Sampler& sampler, Weights kind, bool degenerate, bool oddStatuses) {
  Sample sample;
  const int n = 2 + sampler.below(38);
  for (int i = 0; i < n; ++i) {
    double status = sampler.below(2);
    if (oddStatuses) {
      const double odd[] = {0, 1, 2, 0.5, -1, 0.25, 3};
      status = odd[sampler.below(7)];
    }
    sample.status.push_back(status);
    sample.values.push_back(sampler.value(degenerate));
    sample.weights.push_back(sampler.weight(kind));
  }
  return sample;
}

// Whether the library's sums must be those of the loops to the bit: sums of halves and quarters
// are exact in any order.
bool exact(Weights kind) { return kind == Weights::unit || kind == Weights::whole; }

::testing::AssertionResult agree(double library, double literal, Weights kind) {
  return exact(kind) ? same(library, literal) : near(library, literal, 1e-13);
}

void compareCurve(const Sample& sample, Weights kind) {
  const LiteralClasses groups = literalGroups(sample.status, sample.values, sample.weights);
  for (const int rule : {0, 1, 2, 3}) {
    Curve curve(sample.status, sample.values, sample.weights);
    curve.positiveRule = rule;
    const LiteralTable table = literalTable(sample.status, sample.values, sample.weights, rule);
    curve.thresholdCount = static_cast<int>(table.threshold.size());
    curve.run();
    double sum = 0.0;
    for (const double s : sample.status) sum += s;
    const bool refused =
        truncated(sum) == 0 || truncated(sum) == static_cast<int>(sample.status.size());
    ASSERT_EQ(curve.code, refused ? -2 : 0);
    if (refused) return;
    for (std::size_t k = 0; k < table.threshold.size(); ++k) {
      ASSERT_TRUE(same(curve.thresholds[k], table.threshold[k]));
      ASSERT_TRUE(agree(curve.tp[k], table.tp[k], kind));
      ASSERT_TRUE(agree(curve.tn[k], table.tn[k], kind));
      ASSERT_TRUE(agree(curve.fp[k], table.fp[k], kind));
      ASSERT_TRUE(agree(curve.fn[k], table.fn[k], kind));
    }
    ASSERT_TRUE(agree(curve.error(), literalDelong(groups, table.N, table.P), kind));
    curve.aucSeMethod = 1;
    curve.values = sample.values;
    curve.run();
    ASSERT_TRUE(
        agree(curve.error(), literalMannWhitney(groups, table.N, table.P, curve.area()), kind));
  }
}

TEST(RocPairs, UnitWeightsGiveTheSumsOfTheLoops) {
  Sampler sampler(1);
  for (int run = 0; run < 400; ++run) {
    compareCurve(sampleOf(sampler, Weights::unit, false, false), Weights::unit);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, WholeWeightsGiveTheSumsOfTheLoops) {
  Sampler sampler(2);
  for (int run = 0; run < 400; ++run) {
    compareCurve(sampleOf(sampler, Weights::whole, true, false), Weights::whole);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, FractionalWeightsAgreeWithTheLoops) {
  Sampler sampler(3);
  for (int run = 0; run < 400; ++run) {
    compareCurve(sampleOf(sampler, Weights::fractional, true, false), Weights::fractional);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, ValuesThatAreNoUsualNumbersTakePartAsTheComparisonsSeeThem) {
  Sampler sampler(4);
  for (int run = 0; run < 400; ++run) {
    compareCurve(sampleOf(sampler, Weights::unit, true, false), Weights::unit);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, StatusesOtherThanZeroAndOneSplitTheRowsByTheirSum) {
  Sampler sampler(5);
  for (int run = 0; run < 400; ++run) {
    compareCurve(sampleOf(sampler, Weights::unit, true, true), Weights::unit);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, WeightsThatAreNotFiniteSpoilWhatTheLoopsSpoil) {
  Sampler sampler(6);
  for (int run = 0; run < 400; ++run) {
    compareCurve(sampleOf(sampler, Weights::notFinite, true, false), Weights::unit);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, ProductsOfWeightsThatOverflowOrUnderflowAreThoseOfTheLoops) {
  Sampler sampler(7);
  int compared = 0;
  for (int run = 0; run < 400; ++run) {
    const Sample sample = sampleOf(sampler, Weights::extreme, true, false);
    Curve curve(sample.status, sample.values, sample.weights);
    if (curve.run().code != 0) continue;
    ++compared;
    const LiteralTable table = literalTable(sample.status, sample.values, sample.weights, 2);
    const double literal = literalDelong(
        literalGroups(sample.status, sample.values, sample.weights), table.N, table.P);
    ASSERT_TRUE(same(curve.error(), literal) || near(curve.error() / literal, 1.0, 1e-12))
        << "run " << run << ": " << curve.error() << " against " << literal;
  }
  EXPECT_GT(compared, 300);
}

// Each product of weights is 0, their sum times a weight is not: no pair counts, and the error is
// 0.
TEST(RocPairs, ProductsOfWeightsThatVanishCountNothing) {
  Sample sample{{0, 0, 0, 0, 0, 1, 1, 1, 1, 1}, {1, 2, 3, 4, 5, 2, 4, 6, 8, 9}, {}};
  sample.weights.assign(10, 1e-162);
  Curve curve(sample.status, sample.values, sample.weights);
  curve.run();
  EXPECT_EQ(curve.error(), 0.0);
}

// A heavy positive below everything must not cost the light ones their digits.
TEST(RocPairs, AHeavyCaseLeavesTheSumsOfLightOnesTheirDigits) {
  Sampler sampler(9);
  for (int run = 0; run < 50; ++run) {
    Sample sample = sampleOf(sampler, Weights::fractional, false, false);
    sample.status.insert(sample.status.end(), {0, 0, 1, 1, 1});
    sample.values.insert(sample.values.end(), {2, 3, 3.5, 9, -1});
    sample.weights.insert(sample.weights.end(), {1.1, 1.3, 1.2, 1.7, 1e8});
    Curve curve(sample.status, sample.values, sample.weights);
    curve.run();
    const LiteralTable table = literalTable(sample.status, sample.values, sample.weights, 2);
    const double literal = literalDelong(
        literalGroups(sample.status, sample.values, sample.weights), table.N, table.P);
    ASSERT_GT(literal, 0.0);
    ASSERT_NEAR(curve.error() / literal, 1.0, 1e-13) << "run " << run;
  }
}

TEST(RocPairs, LargeSamplesAgreeWithTheLoops) {
  Sampler sampler(8);
  for (const Weights kind : {Weights::unit, Weights::fractional}) {
    Sample sample;
    for (int i = 0; i < 3000; ++i) {
      sample.status.push_back(sampler.below(3) == 0);
      sample.values.push_back(sampler.below(2) == 0 ? sampler.below(300) : 300 * sampler.uniform());
      sample.weights.push_back(sampler.weight(kind));
    }
    compareCurve(sample, kind);
  }
}

// ---- comparisons ----

void compareTests(Sampler& sampler, Weights kind, bool degenerate, bool oddStatuses) {
  constexpr std::size_t k = 3;
  const Sample sample = sampleOf(sampler, kind, degenerate, oddStatuses);
  Comparison comparison;
  comparison.status = sample.status;
  comparison.weights = sample.weights;
  comparison.aucs = {0.7, 0.6, 0.5};
  comparison.tests = {sample.values, sample.values, sample.values};
  for (double& value : comparison.tests[1]) value = sampler.value(degenerate);
  // The third shares the missing rows of the first: with and without such rows of its own every
  // relation between two sets of missing rows occurs.
  for (double& value : comparison.tests[2]) {
    if (!isMissing(value)) value = sampler.value(false);
  }
  comparison.run();
  for (std::size_t i = 1; i <= k; ++i) {
    for (std::size_t j = 1; j <= k; ++j) {
      const std::size_t a = std::min(i, j) - 1;
      const std::size_t b = std::max(i, j) - 1;
      const double literal = literalCovariance(sample.status, comparison.tests[a],
                                               comparison.tests[b], sample.weights);
      ASSERT_TRUE(agree(comparison.at(comparison.covariance, i, j), literal, kind));
    }
    const double variance = comparison.at(comparison.covariance, i, i);
    ASSERT_TRUE(same(comparison.aucVariances[i - 1], std::sqrt(variance)));
  }
}

TEST(RocPairs, CovariancesAreThoseOfTheLoops) {
  Sampler sampler(11);
  for (const Weights kind : {Weights::unit, Weights::whole, Weights::fractional}) {
    for (int run = 0; run < 200; ++run) {
      compareTests(sampler, kind, run % 2 == 0, false);
      if (HasFatalFailure()) FAIL() << "run " << run;
    }
  }
}

TEST(RocPairs, CovariancesWithWeightsThatAreNotFiniteAreThoseOfTheLoops) {
  Sampler sampler(14);
  for (int run = 0; run < 200; ++run) {
    compareTests(sampler, Weights::notFinite, true, false);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

TEST(RocPairs, CovariancesWithOtherStatusesAreThoseOfTheLoops) {
  Sampler sampler(12);
  for (int run = 0; run < 200; ++run) {
    compareTests(sampler, Weights::unit, true, true);
    if (HasFatalFailure()) FAIL() << "run " << run;
  }
}

// Products of weights lie on both sides of 1e-12, above which only a pair counts.
TEST(RocPairs, PairsOfTinyWeightsAreLeftOutAsTheLoopsLeaveThem) {
  Sampler sampler(13);
  for (const Weights kind : {Weights::tiny, Weights::mixedSigns}) {
    for (int run = 0; run < 200; ++run) {
      const Sample sample = sampleOf(sampler, kind, true, false);
      Comparison comparison;
      comparison.status = sample.status;
      comparison.weights = sample.weights;
      comparison.aucs = {0.7};
      comparison.tests = {sample.values};
      comparison.run();
      const double literal =
          literalCovariance(sample.status, sample.values, sample.values, sample.weights);
      // Class sizes near 1 and, with signs, near 0 leave few digits: compare relatively.
      ASSERT_EQ(std::isnan(comparison.covariance[0]), std::isnan(literal)) << "run " << run;
      if (!std::isnan(literal)) {
        ASSERT_NEAR(comparison.covariance[0], literal, 1e-9 * (1 + std::fabs(literal)))
            << "run " << run;
      }
    }
  }
}

}  // namespace
