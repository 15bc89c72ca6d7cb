// Tables for people: columns padded with spaces, two spaces apart, text left and numbers right.
//
//     TextTable table({{"group"}, {"n", kRight}, {"median", kRight}});
//     table.row({"placebo", "21", "8"});
//     output += table.text(80);
#ifndef REPORT_TEXT_TABLE_H_
#define REPORT_TEXT_TABLE_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace survmeth::report {

enum Align { kLeft, kRight };

struct Heading {
  std::string text;
  Align align = kLeft;
};

class TextTable {
 public:
  // Control characters are shown as printable() shows them, here and in the cells. Without any
  // text in the headings there is no line of them.
  explicit TextTable(std::vector<Heading> headings);

  // As many cells as there are headings.
  void row(std::vector<std::string> cells);

  // The lines, each ended by a line end and without trailing spaces. A table that is wider than
  // `width` (not 0) becomes several blocks below one another, with an empty line between, each
  // beginning with the first `repeated` columns, or with as many as half the width holds, though
  // at least one; texts and headings that take more than half go on in further lines. Nothing is
  // cut: a line can be wider only where one column and the repeated ones are.
  std::string text(std::size_t width = 0, std::size_t repeated = 1) const;

 private:
  struct Layout;
  void addBlock(const Layout& layout, const std::vector<std::size_t>& columns,
                std::string& out) const;

  std::vector<Heading> headings_;
  std::vector<std::vector<std::string>> rows_;
};

// The title and a line of '-' below it.
std::string underlined(const std::string& title);

}  // namespace survmeth::report

#endif  // REPORT_TEXT_TABLE_H_
