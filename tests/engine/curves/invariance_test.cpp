// What splitting follow-up at any time and repeating rows leave as it was: everything read off the
// curves, rates, ratios, combinations.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/curves/bands.h"
#include "engine/curves/combination.h"
#include "engine/curves/hazardRate.h"
#include "engine/curves/means.h"
#include "engine/curves/quantiles.h"
#include "engine/curves/rates.h"
#include "numerics/random.h"
#include "tests/engine/curves/data.h"

namespace survmeth {
namespace {

using engine::curves::Curve;
using engine::curves::Options;
using test::CurveData;

// 300 rows of two groups with tied times, the risk sets of both never empty.
CurveData sample(bool late) {
  numerics::Random random(31, late ? 1 : 2);
  const auto below = [&](double end) { return std::floor(end * random.uniform()); };
  CurveData data;
  data.groupCount = 2;
  for (std::size_t i = 0; i < 300; ++i) {
    const double entry = late && i >= 20 ? below(15) : 0.0;
    data.entry.push_back(entry);
    data.exit.push_back(i < 20 ? 60.0 : entry + 1 + below(30));
    data.event.push_back(random.uniform() < 0.6 ? 1 : 0);
    data.group.push_back(i % 2);
  }
  return data;
}

CurveData splitAt(const CurveData& whole, double time) {
  CurveData split = whole;
  for (std::size_t i = 0; i < whole.exit.size(); ++i) {
    if (!(whole.entry[i] < time && time < whole.exit[i])) continue;
    split.entry.push_back(whole.entry[i]);
    split.exit.push_back(time);
    split.event.push_back(0);
    split.group.push_back(whole.group[i]);
    split.entry[i] = time;
  }
  return split;
}

// Both with the weights 0 .. 3 of the rows, as weights and as repetition.
CurveData weighted(CurveData data) {
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.weight.push_back(static_cast<double>(i % 4));
  }
  return data;
}

CurveData repeated(const CurveData& data) {
  CurveData result;
  result.groupCount = data.groupCount;
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    for (std::size_t r = 0; r < i % 4; ++r) {
      result.entry.push_back(data.entry[i]);
      result.exit.push_back(data.exit[i]);
      result.event.push_back(data.event[i]);
      result.group.push_back(data.group[i]);
    }
  }
  return result;
}

// Sums of the same terms, or of terms in more pieces.
void expectNear(double a, double b, const char* what) {
  if (std::isnan(a) && std::isnan(b)) return;
  EXPECT_NEAR(a, b, 1e-13 * std::fabs(a)) << what;
}

void expectSame(const CurveData& one, const CurveData& other) {
  const std::vector<double> levels = {0.1, 0.25, 0.5, 0.75, 0.9};
  const std::vector<double> times = {3, 7.5, 12, 20};
  const Options options;
  const auto first = one.curves(), second = other.curves();
  for (std::size_t g = 0; g < 2; ++g) {
    const auto p = engine::curves::quantiles(first[g], levels);
    const auto q = engine::curves::quantiles(second[g], levels);
    for (std::size_t i = 0; i < levels.size(); ++i) {
      EXPECT_EQ(p[i].time, q[i].time);
      EXPECT_TRUE(p[i].lower == q[i].lower || std::isnan(p[i].lower + q[i].lower));
      EXPECT_TRUE(p[i].upper == q[i].upper || std::isnan(p[i].upper + q[i].upper));
    }
    const auto a = engine::curves::readings(first[g], times, false, options.scale);
    const auto b = engine::curves::readings(second[g], times, false, options.scale);
    const auto h = engine::curves::hazardRates(one.sample(), g, one.rows(), options, times, 5);
    const auto k = engine::curves::hazardRates(other.sample(), g, other.rows(), options, times, 5);
    for (std::size_t i = 0; i < times.size(); ++i) {
      EXPECT_EQ(a[i].survival, b[i].survival);
      EXPECT_TRUE(a[i].lower == b[i].lower || std::isnan(a[i].lower + b[i].lower));
      expectNear(h[i].rate, k[i].rate, "hazard");
      expectNear(h[i].standardError, k[i].standardError, "its error");
    }
    const auto kind = engine::curves::BandKind::kEqualPrecision;
    const auto band = engine::curves::band(first[g], one.rows(), options, kind);
    expectNear(band.critical, engine::curves::band(second[g], other.rows(), options, kind).critical,
               "band");
  }
  const auto m = engine::curves::restrictedMeans(one.sample(), one.rows(), first, options, 25);
  const auto n = engine::curves::restrictedMeans(other.sample(), other.rows(), second, options, 25);
  const auto r = engine::curves::rates(one.response(), one.rows(), one.groups(), times, 0.95);
  const auto s = engine::curves::rates(other.response(), other.rows(), other.groups(), times, 0.95);
  for (std::size_t g = 0; g < 2; ++g) {
    expectNear(m[g].mean, n[g].mean, "mean");
    expectNear(m[g].standardError, n[g].standardError, "error of the mean");
    for (std::size_t i = 0; i <= times.size(); ++i) {
      EXPECT_EQ(r[g][i].events, s[g][i].events);
      expectNear(r[g][i].personTime, s[g][i].personTime, "person-time");
    }
  }
  const auto usual = engine::curves::usualCombination();
  const auto c = engine::curves::combine(one.response(), one.rows(), one.groups(), usual);
  const auto d = engine::curves::combine(other.response(), other.rows(), other.groups(), usual);
  // Differences of sums of some 100 terms.
  for (std::size_t i = 0; i < usual.size(); ++i) EXPECT_NEAR(c.z[i], d.z[i], 1e-12);
  EXPECT_NEAR(c.pValue, d.pValue, 1e-12);
  const auto x =
      engine::curves::hazardRatios(one.response(), one.rows(), one.groups(), 0.95).mantelHaenszel;
  const auto y = engine::curves::hazardRatios(other.response(), other.rows(), other.groups(), 0.95)
                     .mantelHaenszel;
  expectNear(x.estimate, y.estimate, "hazard ratio");
  expectNear(x.standardError, y.standardError, "its error");
}

TEST(Invariance, SplittingFollowUpAtAnyTimeChangesNothingThatIsReadOff) {
  for (const bool late : {false, true}) {
    const CurveData whole = sample(late);
    for (const double time : {0.5, 4.0, 7.5, 11.0, 24.0, 30.5}) {
      SCOPED_TRACE(time);
      expectSame(whole, splitAt(whole, time));
      expectSame(whole, splitAt(splitAt(whole, time), time + 2));
    }
  }
}

TEST(Invariance, WeightsAreRepetitionInAllThatIsReadOff) {
  for (const bool late : {false, true}) {
    const CurveData data = sample(late);
    expectSame(repeated(data), weighted(data));
  }
}

}  // namespace
}  // namespace survmeth
