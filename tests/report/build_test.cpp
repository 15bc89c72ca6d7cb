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

struct Tested {
  Limited area;
  double standardError, z, pValue;
  std::string reason;
};

TEST(Rows, WhatIsTestedHasErrorLimitsTestAndTheReasonWhyNot) {
  const std::vector<Tested> tested = {{{0.5, 0.25, 0.75}, 0.1, 2, 0.04, ""},
                                      {{1, NAN, NAN}, 0, NAN, NAN, "the standard error is 0"}};
  const Table table = rowsOf("areas", "", tested)
                          .tested("area", "AUC", "90%", Kind::kProbability, &Tested::area)
                          .table();
  std::string keys, headings;
  for (const Column& column : table.columns) {
    keys += column.key + " ";
    headings += column.heading + "|";
  }
  EXPECT_EQ(keys, "area standardError lower upper z pValue reason ");
  EXPECT_EQ(headings, "AUC|std error|90% lower|90% upper|z|p-value|why not|");
  EXPECT_EQ(table.columns[0].numbers()[1], 1);
  EXPECT_EQ(table.columns[1].numbers()[0], 0.1);
  EXPECT_EQ(table.columns[3].numbers()[0], 0.75);
  EXPECT_EQ(table.columns[5].numbers()[0], 0.04);
  EXPECT_EQ(table.columns[6].labels()[1], "the standard error is 0");
}

TEST(PartedRows, AreOneTableWhereTheyAreNotParted) {
  const std::vector<std::vector<Limited>> groups = {{{1, 0, 2}, {3, 2, 4}}, {{5, 4, 6}}};
  const auto rows = [&] {
    auto made = partedRowsOf("cuts", "Cuts", labelColumn("group", "", {"a", "b"}), groups);
    return made.column("value", "", Kind::kTime, &Limited::value);
  };
  EXPECT_EQ(rows().table().partedBy, "group");
  const Table whole = rows().unparted();
  EXPECT_EQ(whole.partedBy, "");
  EXPECT_EQ(whole.columns[0].labels(), (std::vector<std::string>{"a", "a", "b"}));
  EXPECT_EQ(whole.columns[1].numbers()[2], 5);
}

TEST(Rows, ALabelStandsAtThePlaceThatTheCellGives) {
  const std::vector<std::string> names = {"a", "b", "c"};
  const std::vector<std::size_t> places = {2, 0};
  const Table table = rowsOf("first", "", places)
                          .label("first", "first", names, [](std::size_t place) { return place; })
                          .table();
  EXPECT_EQ(table.columns[0].labels(), (std::vector<std::string>{"c", "a"}));
}

TEST(PartedRows, AnEstimateHasItsLimitsBesideIt) {
  const std::vector<std::vector<Curve>> groups = {kCurves};
  const Table table = partedRowsOf("areas", "", labelColumn("group", "", {"a"}), groups)
                          .estimated("area", "area", "95%", Kind::kProbability, &Curve::area,
                                     "areaLower", "areaUpper")
                          .table();
  ASSERT_EQ(table.columns.size(), 4u);
  EXPECT_EQ(table.columns[1].numbers()[0], 0.5);
  EXPECT_EQ(table.columns[2].key, "areaLower");
  EXPECT_EQ(table.columns[2].numbers()[0], 0.25);
  EXPECT_EQ(table.columns[3].numbers()[1], 2);
}

TEST(UnitSquare, ShowsProbabilitiesFromNoneToAllAtEqualLengths) {
  const Panel panel = unitSquare("x", "y");
  EXPECT_TRUE(panel.equalUnits);
  EXPECT_EQ(panel.x.least, 0);
  EXPECT_EQ(panel.x.most, 1);
  EXPECT_EQ(panel.y.least, 0);
  EXPECT_EQ(panel.y.most, 1);
}

TEST(Lines, AGuideIsALineToCompareWith) {
  EXPECT_FALSE(lineOf("fit", {0, 1}, {2, 3}).guide);
  const Series guide = guideOf("identity", {0, 1}, {2, 3});
  EXPECT_TRUE(guide.guide);
  EXPECT_EQ(guide.name, "identity");
  EXPECT_EQ(guide.y, (std::vector<double>{2, 3}));
}

TEST(FixedWithLimits, ShowsThemWhereTheyExist) {
  EXPECT_EQ(fixedWithLimits(Limited{0.5, 0.25, 0.75}, "95% limits", 2),
            "0.50 (95% limits 0.25 to 0.75)");
  EXPECT_EQ(fixedWithLimits(Limited{1, NAN, NAN}, "95% limits", 2), "1.00");
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
