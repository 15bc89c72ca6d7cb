// What the labels of a two-valued column mean.
#include "model/coding.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/model/data.h"

namespace survmeth::model {
namespace {

using Strings = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

TEST(Answer, OfALabelIsThatOfTheTable) {
  for (const char* no :
       {"0", "0.0", "F", "f", "false", "FALSE", "N", "no", "No", "alive", "Censored"}) {
    EXPECT_EQ(answerOf(no), Answer::kNo) << no;
  }
  for (const char* yes :
       {"1", "1.0", "+1", "T", "true", "TRUE", "y", "Yes", "dead", "DIED", "death", "event"}) {
    EXPECT_EQ(answerOf(yes), Answer::kYes) << yes;
  }
  for (const char* none : {"2", "-1", "", "maybe", "yes ", "deadly"}) {
    EXPECT_EQ(answerOf(none), Answer::kNone) << none;
  }
}

TEST(YesNo, IsReadFromLabelsThatSayIt) {
  const YesNo made = yesNoOf(labelled("status", {"dead", "alive", "Dead"}), {}, kEvents);
  EXPECT_EQ(made.rows, (Bytes{1, 0, 1}));
  EXPECT_EQ(made.labels, (Strings{"Dead", "dead"}));
  EXPECT_EQ(made.others, (Strings{"alive"}));
  EXPECT_EQ(made.note, "");
}

TEST(YesNo, IsReadFromZeroAndOneAsNumbers) {
  const YesNo made = yesNoOf(frame::numberColumn("status", {0, 1, 1}), {}, kEvents);
  EXPECT_EQ(made.rows, (Bytes{0, 1, 1}));
  EXPECT_EQ(made.note, "");
}

TEST(YesNo, OfOneAndTwoIsTwoWithANote) {
  const YesNo made = yesNoOf(frame::numberColumn("status", {1, 2, 2}), {}, kEvents);
  EXPECT_EQ(made.rows, (Bytes{0, 1, 1}));
  EXPECT_EQ(made.note, "in \"status\" 2 is taken for an event, 1 for censored");
  EXPECT_EQ(yesNoOf(labelled("ill", {"2", "2"}), {}, kPositives).note,
            "in \"ill\" 2 is taken for positive, 1 for negative");
  EXPECT_EQ(yesNoOf(frame::numberColumn("status", {1, 1}), {}, kEvents).note, "");
  EXPECT_EQ(yesNoOf(frame::numberColumn("status", {1, 1}), {}, kEvents).rows, (Bytes{1, 1}));
}

TEST(YesNo, TakesTheValuesThatItIsTold) {
  const YesNo made =
      yesNoOf(labelled("status", {"tx", "ok", "dead", "1.0"}), {"dead", "tx", "1"}, kEvents);
  EXPECT_EQ(made.rows, (Bytes{1, 0, 1, 1}));
  EXPECT_EQ(made.others, (Strings{"ok"}));
  EXPECT_EQ(made.note, "");
}

TEST(YesNo, RefusesALabelThatSaysNeither) {
  try {
    yesNoOf(labelled("status", {"dead", "tx", "ok", "tx"}), {}, kEvents);
    FAIL();
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kEvent);
    EXPECT_EQ(refusal.row(), 2U);  // labels in their order: "ok" comes before "tx"
    EXPECT_STREQ(refusal.what(), "\"ok\" is neither yes nor no");
    EXPECT_EQ(refusal.expected(),
              "0 and 1, 1 and 2, no and yes, false and true, alive and dead, or what is an event "
              "in --event-value");
  }
}

TEST(YesNo, RefusesAValueThatNoRowHolds) {
  try {
    yesNoOf(labelled("ill", {"a", "b"}), {"c"}, kPositives);
    FAIL();
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kClass);
    EXPECT_EQ(refusal.row(), engine::Refusal::kNone);
    EXPECT_STREQ(refusal.what(), "no row holds \"c\"");
    EXPECT_EQ(refusal.expected(), "one of \"a\", \"b\"");
  }
}

}  // namespace
}  // namespace survmeth::model
