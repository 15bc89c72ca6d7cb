// Tables for people: columns padded with spaces, two spaces apart, text left and numbers right.
//
//     TextTable table({{"group"}, {"n", kRight}, {"median", kRight}});
//     table.row({"placebo", "21", "8"});
//     output.text() += table.text();
#ifndef CLI_SHELL_TEXT_TABLE_H_
#define CLI_SHELL_TEXT_TABLE_H_

#include <string>
#include <vector>

namespace cli {

enum Align { kLeft, kRight };

struct Heading {
  std::string text;
  Align align = kLeft;
};

class TextTable {
 public:
  explicit TextTable(std::vector<Heading> headings);

  // As many cells as there are headings.
  void row(std::vector<std::string> cells);

  // The lines, each ended by a line end and without trailing spaces.
  std::string text() const;

 private:
  std::vector<Heading> headings_;
  std::vector<std::vector<std::string>> rows_;
};

// Control characters, which would break lines or reach the terminal, as '?'. Tables and underlined
// titles do so with their texts; other names from the data or the arguments need it.
std::string printable(std::string text);

// The title and a line of '-' below it.
std::string underlined(const std::string& title);

}  // namespace cli

#endif  // CLI_SHELL_TEXT_TABLE_H_
