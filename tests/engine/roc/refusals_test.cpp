// What has no curve, and options out of their range.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "engine/roc/curves.h"
#include "tests/engine/roc/data.h"
#include "tests/support/role.h"

namespace survmeth::engine::roc {
namespace {

void expectRefusal(const Data& data, const std::string& member,
                   std::optional<std::size_t> index = std::nullopt) {
  try {
    data.run();
    ADD_FAILURE() << "accepted, although " << member << " is wrong";
  } catch (const Refusal& refused) {
    EXPECT_EQ(nameOf(refused.role()), member) << refused.what();
    EXPECT_EQ(indexOf(refused), index);
  }
}

TEST(RocCurve, RefusesWhatHasNoCurve) {
  EXPECT_NO_THROW(byHand().run());
  expectRefusal({}, "positive");
  Data data = byHand();
  data.markers.clear();
  expectRefusal(data, "marker");
  data = byHand();
  data.markers[0].pop_back();
  expectRefusal(data, "positive");
  data = byHand();
  data.markers.push_back(data.markers[0]);
  data.markers[1][2] = kInf;
  expectRefusal(data, "marker", 1);
  data = byHand();
  data.positive.assign(6, 1);
  expectRefusal(data, "marker", 0);
  data = byHand();
  for (const std::size_t i : {0, 2, 4}) data.markers[0][i] = kNan;
  expectRefusal(data, "marker", 0);
  data.markers[0].assign(6, kNan);
  expectRefusal(data, "marker", 0);
}

TEST(RocCurve, RefusesOptionsOutOfTheirRange) {
  for (const double bad : {-1.0, kNan, kInf}) {
    Data data = byHand();
    data.weight = {1, 1, bad, 1, 1, 1};
    expectRefusal(data, "weight", 2);
  }
  Data data = byHand();
  data.weight = {1, 1};
  expectRefusal(data, "weight");
  data.weight.assign(6, 1e308);
  expectRefusal(data, "weight");
  data.weight.assign(6, 0);
  expectRefusal(data, "marker", 0);
  for (const double bad : {0.0, 1.0, -0.5, kNan}) {
    data = byHand();
    data.options.alpha = bad;
    expectRefusal(data, "alpha");
    data = byHand();
    data.options.prevalence = bad;
    expectRefusal(data, "prevalence");
  }
  data = byHand();
  data.options.costs.fn = kInf;
  expectRefusal(data, "cost");
}

TEST(RocCurve, RefusesMoreRowsThanItNumbersWithoutReadingOne) {
  const std::uint8_t positive = 1;
  const double value = 0;
  const std::size_t rows = 0xffffffffU;
  Request request;
  request.positive = {&positive, rows};
  request.markers = {{{&value, rows}, false}};
  try {
    curves(request);
    ADD_FAILURE() << "accepted";
  } catch (const Refusal& refused) {
    EXPECT_EQ(nameOf(refused.role()), "positive");
    EXPECT_STREQ(refused.what(), "there are too many rows");
  }
}

}  // namespace
}  // namespace survmeth::engine::roc
