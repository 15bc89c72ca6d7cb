// Where output goes: whole or not at all. A command collects everything here while it works; the
// shell writes it once the command has returned, each file under a temporary name beside its
// place and then renamed. If anything cannot be written nothing is left behind.
//
//     output.text() += "...";                          // standard output
//     output.file(dir + "/summary.csv", contents);
//     CsvWriter csv({"group", "time"}); csv.cell("a"); csv.cell(1.5); csv.endRow(); csv.text()
#ifndef CLI_SHELL_OUTPUT_H_
#define CLI_SHELL_OUTPUT_H_

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

class Output {
 public:
  // Standard output, to be appended to.
  std::string& text() { return text_; }

  // A file; a later one of the same name replaces an earlier one.
  void file(const std::string& path, std::string contents);

  // A folder that is made, with those above it, unless it is there.
  void folder(const std::string& path);

  // Writes everything; the files get their names last. Throws a Problem with kFailed, having left
  // nothing.
  void write();

 private:
  std::string text_;
  std::vector<std::pair<std::string, std::string>> files_;
  std::vector<std::string> folders_;
};

// CSV as RFC 4180 has it, LF line ends, every digit of every number; a value that does not exist
// is an empty cell.
class CsvWriter {
 public:
  explicit CsvWriter(std::initializer_list<std::string_view> header);

  void cell(std::string_view text);
  void cell(double value);
  void endRow();

  std::string& text() { return text_; }

 private:
  void separate();

  std::string text_;
  bool rowBegun_ = false;
};

}  // namespace cli

#endif  // CLI_SHELL_OUTPUT_H_
