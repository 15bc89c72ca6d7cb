// Critical values of simultaneous bands: 30-digit quadrature (tests/reference/curves/make_bridge.py)
// and the printed tables.
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "Dist/Dist"
#include "engine/curves/bands.h"
#include "engine/curves/bridge.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::bridgeQuantile;
using engine::curves::bridgeWithin;
using engine::curves::standardizedBridgeQuantile;
using engine::curves::standardizedBridgeWithin;
using test::Csv;

const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/curves/";

double lengthOf(double a, double b) { return 0.5 * std::log(b * (1 - a) / (a * (1 - b))); }

TEST(Bridge, QuantilesAreThoseOfThirtyDigits) {
  const Csv file(kFolder + "bridge.csv");
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const double level = file.number("level", i);
    const double a = file.number("a", i);
    const double b = file.number("b", i);
    const double expected = file.number("quantile", i);
    const double actual = file.text("kind", i) == "hallWellner"
                              ? bridgeQuantile(level, a, b)
                              : standardizedBridgeQuantile(level, lengthOf(a, b));
    // The probabilities are good to 1e-12, and the densities above 0.1.
    EXPECT_NEAR(actual, expected, 1e-10 * expected) << file.text("kind", i) << " " << a << " " << b;
  }
}

// The tables' last decimal is not always the nearest one.
TEST(Bridge, QuantilesAreThoseOfThePrintedTables) {
  const Csv file(kFolder + "tables.csv");
  for (std::size_t i = 0; i < file.rows(); ++i) {
    const double level = file.number("level", i);
    const double a = file.number("a", i);
    const double b = file.number("b", i);
    EXPECT_NEAR(bridgeQuantile(level, a, b), file.number("critical", i), 1e-4)
        << level << " " << a << " " << b;
  }
}

// Miller & Siegmund, Biometrics 38 (1982) 1011-1016: for large c the probability of a passage is
// phi(c) (4 / c + 2 T (c - 1 / c)) but for a share of the order c^-4, here below 3 c^-4.
TEST(Bridge, RarePassagesAreThoseOfTheApproximationForThem) {
  for (const double c : {4.0, 5.0, 6.0}) {
    for (const double length : {0.5, 2.0}) {
      const double approximation = PDFNormalStd(c) * (4.0 / c + 2.0 * length * (c - 1.0 / c));
      const double passage = 1.0 - standardizedBridgeWithin(c, length);
      EXPECT_NEAR(passage, approximation, 3.0 / (c * c * c * c) * approximation);
    }
  }
}

TEST(Bridge, TheWholeBridgeHasKolmogorovsLaw) {
  for (const double k : {0.3, 0.5, 0.8, 1.2, 1.6, 2.5}) {
    EXPECT_NEAR(bridgeWithin(k, 0.0, 1.0), CDFKolmogorov(k), 1e-14) << k;
  }
}

TEST(Bridge, TimeReversedHasTheSameLaw) {
  for (const double k : {0.5, 1.0, 1.5}) {
    EXPECT_NEAR(bridgeWithin(k, 0.1, 0.4), bridgeWithin(k, 0.6, 0.9), 1e-13) << k;
  }
}

TEST(Bridge, AShortIntervalIsNearlyOnePoint) {
  // With 0.5 +- 1e-9 / 2 the largest deviation differs from one at 1/2 by some 1e-4.
  EXPECT_NEAR(bridgeQuantile(0.95, 0.5, 0.5 + 1e-9), 1.959963984540054 / 2, 2e-4);
  EXPECT_GT(standardizedBridgeWithin(3.0, 1.0 / 1024), standardizedBridgeWithin(3.0, 1.0 / 512));
}

TEST(Bridge, TheStationaryProcessForgets) {
  // Over a long time the probability falls by the same factor in each unit.
  const double p = standardizedBridgeWithin(2.0, 20.0);
  const double q = standardizedBridgeWithin(2.0, 21.0);
  EXPECT_NEAR(standardizedBridgeWithin(2.0, 22.0), q * q / p, 1e-12 * p);
}

}  // namespace
}  // namespace survmeth
