// JSON as a tree with places.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "analysis/jsonTree.h"

namespace survmeth::analysis {
namespace {

using Kind = JsonNode::Kind;

std::string refusalOf(const std::string& text) {
  try {
    parseJson(text);
  } catch (const JsonError& error) {
    return error.what();
  }
  return "none";
}

TEST(JsonTree, HoldsEveryKindInOrder) {
  const JsonNode root = parseJson(R"({"b": [1, true, null, "x"], "a": {"c": false}})");
  ASSERT_EQ(root.members.size(), 2u);
  EXPECT_EQ(root.members[0].name, "b");
  const std::vector<JsonNode>& list = root.find("b")->elements;
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[0].number, 1);
  EXPECT_TRUE(list[1].flag);
  EXPECT_EQ(list[2].kind, Kind::kNull);
  EXPECT_EQ(list[3].text, "x");
  EXPECT_EQ(root.find("a")->find("c")->kind, Kind::kFlag);
  EXPECT_FALSE(root.find("a")->find("c")->flag);
  EXPECT_EQ(root.find("c"), nullptr);
}

TEST(JsonTree, NumbersAreTheNearestDoubles) {
  const JsonNode root = parseJson(
      "[0.1, 1e-320, 9007199254740993, 18446744073709551617, -0.0, 1E5, "
      "179769313486231570000e288]");
  EXPECT_EQ(root.elements[0].number, 0.1);
  EXPECT_EQ(root.elements[1].number, 1e-320);
  EXPECT_EQ(root.elements[2].number, 9007199254740992.0);
  EXPECT_EQ(root.elements[3].number, 18446744073709551616.0);
  EXPECT_TRUE(std::signbit(root.elements[4].number));
  EXPECT_EQ(root.elements[5].number, 100000);
  EXPECT_EQ(root.elements[6].number, 1.7976931348623157e308);
}

TEST(JsonTree, PlacesAreLinesAndCharacters) {
  const JsonNode root = parseJson("{\n  \"\xC3\xA9t\xC3\xA9\": [12,\n\t\"x\"],\"k\"\n:true}");
  EXPECT_EQ(root.place.line, 1u);
  EXPECT_EQ(root.place.column, 1u);
  EXPECT_EQ(root.members[0].place.line, 2u);
  EXPECT_EQ(root.members[0].place.column, 3u);
  const JsonNode& list = root.members[0].value;
  EXPECT_EQ(list.place.column, 10u);
  EXPECT_EQ(list.elements[0].place.column, 11u);
  EXPECT_EQ(list.elements[1].place.line, 3u);
  EXPECT_EQ(list.elements[1].place.column, 2u);
  EXPECT_EQ(root.members[1].place.column, 7u);
  EXPECT_EQ(root.members[1].value.place.line, 4u);
  EXPECT_EQ(root.members[1].value.place.column, 2u);
}

TEST(JsonTree, AByteOrderMarkIsSkipped) {
  const JsonNode root = parseJson("\xEF\xBB\xBF[7]");
  EXPECT_EQ(root.elements[0].number, 7);
  EXPECT_EQ(root.elements[0].place.column, 2u);
}

TEST(JsonTree, ANumberAloneIsADocument) { EXPECT_EQ(parseJson("42").number, 42); }

TEST(JsonTree, WhatIsNoJsonIsRefusedWithItsPlace) {
  EXPECT_EQ(refusalOf("[1,\n 2,,]"),
            "line 2, column 4: syntax error while parsing value - unexpected ','; expected '[', "
            "'{', or a literal");
  EXPECT_EQ(refusalOf("[1] 2"),
            "line 1, column 5: syntax error while parsing value - unexpected number literal; "
            "expected end of input");
  EXPECT_EQ(refusalOf(R"({"a": 1, "a": 2})"), "line 1, column 10: \"a\" stands twice");
  EXPECT_EQ(refusalOf("[\n1e999]"), "line 2, column 5: the number is too large");
}

TEST(JsonTree, AHundredLevelsAreTakenAndNoMore) {
  EXPECT_EQ(refusalOf(std::string(100, '[') + std::string(100, ']')), "none");
  EXPECT_EQ(refusalOf(std::string(101, '[') + std::string(101, ']')),
            "line 1, column 101: values are nested too deeply");
}

}  // namespace
}  // namespace survmeth::analysis
