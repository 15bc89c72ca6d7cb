// What the labels of a two-valued column mean.
//
// Without a word from the person, in any case:
//     no    0, F, false, N, no, alive, censored
//     yes   1, T, true, Y, yes, dead, died, death, event
// and in a column of 1 and 2, or of 2 alone, 1 means no and 2 yes. docs/data.md says the same.
#ifndef CLI_SHELL_CODING_H_
#define CLI_SHELL_CODING_H_

#include <cstdint>
#include <string>
#include <vector>

#include "cli/shell/table.h"

namespace cli {

enum class Answer { kNo, kYes, kNone };

// What a label says by itself.
Answer answerOf(const std::string& label);

// The same text, or the same number.
bool sameValue(const std::string& label, const std::string& value);

// What yes and no are, for messages, and the option that names the labels of yes.
struct Meaning {
  const char* yes;
  const char* no;
  const char* option;
};
constexpr Meaning kEvents = {"an event", "censored", "--event-value"};
constexpr Meaning kPositives = {"positive", "negative", "--positive"};

struct YesNo {
  std::vector<bool> labels;        // whether each label of the column means yes
  std::vector<std::uint8_t> rows;  // 1 in the kept rows that hold such a label
  std::string note;                // what was taken for yes, where that is not plain
};

// `yes`: the labels that mean yes, all others no; empty: as above. Refuses a label that says
// neither, with file, line and column, and a value of `yes` that no row holds.
YesNo yesNoOf(const Table& table, const Column& column, const std::vector<std::string>& yes,
              const Meaning& meaning);

// The values in --event-value, none if it is empty.
std::vector<std::string> eventValues(const std::string& list);

}  // namespace cli

#endif  // CLI_SHELL_CODING_H_
