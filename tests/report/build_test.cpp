// Short ways to describe a table.
#include "report/build.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace survmeth::report {
namespace {

struct Limited {
  double value, lower, upper;
};
struct Curve {
  std::string name;
  std::size_t rows;
  Limited area;
};

const std::vector<Curve> kCurves = {{"a", 7, {0.5, 0.25, 0.75}}, {"b", 9, {1, NAN, 2}}};

TEST(Rows, ACellIsATextANumberOrTheValueOfAnEstimate) {
  const Table table = rowsOf("areas", "Areas", kCurves)
                          .column("name", "curve", Kind::kLabel, &Curve::name)
                          .column("rows", "", Kind::kCount, &Curve::rows)
                          .column("area", "", Kind::kProbability, &Curve::area)
                          .column("half", "", Kind::kProbability,
                                  [](const Curve& curve) { return curve.area.value / 2; })
                          .table();
  EXPECT_EQ(table.id, "areas");
  EXPECT_EQ(table.caption, "Areas");
  ASSERT_EQ(table.columns.size(), 4u);
  EXPECT_EQ(table.columns[0].labels(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(table.columns[1].numbers()[1], 9);
  EXPECT_EQ(table.columns[2].numbers()[0], 0.5);
  EXPECT_EQ(table.columns[3].numbers()[0], 0.25);
}

TEST(Rows, LimitsAreTwoColumnsThatNameTheirLevel) {
  const Table table =
      rowsOf("areas", "", kCurves).limits("95%", Kind::kEstimate, &Curve::area).table();
  ASSERT_EQ(table.columns.size(), 2u);
  EXPECT_EQ(table.columns[0].key, "lower");
  EXPECT_EQ(table.columns[0].heading, "95% lower");
  EXPECT_EQ(table.columns[0].numbers()[0], 0.25);
  EXPECT_TRUE(std::isnan(table.columns[0].numbers()[1]));
  EXPECT_EQ(table.columns[1].key, "upper");
  EXPECT_EQ(table.columns[1].heading, "95% upper");
  EXPECT_EQ(table.columns[1].numbers()[1], 2);
}

TEST(Numbers, BorrowedOnesAreNotCopiedAndKeepWhatIsHeld) {
  auto owner = std::make_shared<const std::vector<double>>(3, 0.5);
  Table table;
  table.columns = {borrowedColumn("borrowed", "", Kind::kEstimate, *owner),
                   numberColumn("own", "", Kind::kEstimate, *owner)};
  EXPECT_EQ(&*table.columns[0].numbers().begin(), owner->data());
  EXPECT_NE(&*table.columns[1].numbers().begin(), owner->data());
  table.hold(owner);
  EXPECT_EQ(owner.use_count(), 2);  // and that of the borrowed column, not of the other
  const Table copy = table;
  EXPECT_EQ(owner.use_count(), 3);
}

}  // namespace
}  // namespace survmeth::report
