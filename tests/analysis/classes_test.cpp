// The classes that a column tells apart.
#include "analysis/classes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "engine/input.h"
#include "tests/model/data.h"

namespace survmeth::analysis {
namespace {

using Strings = std::vector<std::string>;

TEST(Classes, AreALabelAndAllOthers) {
  const Classes classes = classesOf(model::labelled("stage", {"c", "a", "b", "a"}), "a");
  EXPECT_EQ(classes.positive, (std::vector<std::uint8_t>{0, 1, 0, 1}));
  EXPECT_EQ(classes.name(), "a");
  EXPECT_EQ(classes.negatives, (Strings{"b", "c"}));
  ASSERT_EQ(classes.notes.size(), 1u);
  EXPECT_EQ(classes.notes[0].code, "severalNegatives");
  EXPECT_EQ(classes.notes[0].text, "several labels are negative: \"b\", \"c\"");
  EXPECT_EQ(classes.notes[0].names, (Strings{"b", "c"}));
  const std::vector<report::Fact> facts = classes.facts();
  ASSERT_EQ(facts.size(), 2u);
  EXPECT_EQ(facts[0].key, "positive");
  EXPECT_EQ(std::get<std::string>(facts[1].value), "b, c");
}

TEST(Classes, OfMoreThanTwelveNegativesTellTheirNumber) {
  Strings labels;
  for (int i = 0; i < 14; ++i) labels.push_back("label " + std::to_string(i));
  const Classes classes = classesOf(model::labelled("stage", labels), "label 3");
  ASSERT_EQ(classes.notes.size(), 1u);
  EXPECT_EQ(classes.notes[0].text, "13 different labels are negative");
  EXPECT_TRUE(classes.notes[0].names.empty());
}

TEST(Classes, AreTwo) {
  const auto refusal = [](const Strings& labels, const std::string& positive) {
    try {
      classesOf(model::labelled("stage", labels), positive);
    } catch (const engine::Refusal& refused) {
      EXPECT_EQ(refused.role(), engine::Role::kClass);
      EXPECT_EQ(refused.expected(), "positive and negative rows");
      return std::string(refused.what());
    }
    return std::string("accepted");
  };
  EXPECT_EQ(refusal({"a", "a"}, "a"), "every complete row holds \"a\"");
  EXPECT_EQ(refusal({"yes", "yes"}, ""), "every complete row means yes");
  EXPECT_EQ(refusal({"no", "no"}, ""), "no complete row means yes");
}

}  // namespace
}  // namespace survmeth::analysis
