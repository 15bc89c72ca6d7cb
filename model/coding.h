// What the labels of a two-valued column mean.
//
// Without a word from the person, in any case:
//     no    0, F, false, N, no, alive, censored
//     yes   1, T, true, Y, yes, dead, died, death, event
// and in a column of 1 and 2, or of 2 alone, 1 means no and 2 yes. docs/data.md says the same.
#ifndef MODEL_CODING_H_
#define MODEL_CODING_H_

#include <cstdint>
#include <string>
#include <vector>

#include "engine/input.h"
#include "frame/frame.h"

namespace survmeth::model {

enum class Answer { kNo, kYes, kNone };

// What a label says by itself.
Answer answerOf(const std::string& label);

// What yes and no are, for messages, the option that names the labels of yes, and the role of the
// column.
struct Meaning {
  const char* yes;
  const char* no;
  const char* option;
  engine::Role role;
};
inline constexpr Meaning kEvents = {"an event", "censored", "--event-value", engine::Role::kEvent};
inline constexpr Meaning kPositives = {"positive", "negative", "--positive", engine::Role::kClass};

struct YesNo {
  std::vector<std::string> labels;  // those that mean yes, in order
  std::vector<std::string> others;
  std::vector<std::uint8_t> rows;  // 1 in the rows that hold a label of yes
  std::string note;                // what was taken for yes, where that is not plain
};

// In   column   labels or numbers, none missing
//      yes      the labels that mean yes, all others no; empty: as above
// Throws engine::Refusal of the meaning's role: a label that says neither, with the first row that
//        holds it; a value of `yes` that no row holds.
// Cost O(rows)
YesNo yesNoOf(const frame::Column& column, const std::vector<std::string>& yes,
              const Meaning& meaning);

}  // namespace survmeth::model

#endif  // MODEL_CODING_H_
