// Where output goes: whole or not at all. A command collects everything here while it works; the
// shell writes it once the command has returned, each file under a temporary name beside its
// place and then renamed. If anything cannot be written nothing is left behind.
//
//     output.text() += "...";                          // standard output
//     output.file(dir + "/summary.csv", contents);
#ifndef CLI_SHELL_OUTPUT_H_
#define CLI_SHELL_OUTPUT_H_

#include <string>
#include <utility>
#include <vector>

#include "report/csv.h"

namespace cli {

using survmeth::report::CsvWriter;

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

}  // namespace cli

#endif  // CLI_SHELL_OUTPUT_H_
