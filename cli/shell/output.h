// Where output goes: whole or not at all. A command collects everything here while it works; the
// shell writes it once the command has returned, each file under a temporary name beside its
// place and then renamed, standard output last. If a file cannot be written none is left behind
// and nothing is printed; a figure that cannot be drawn takes nothing else with it.
//
//     output.input("trial.csv");                        // before any work: what is read ...
//     output.reserve("--plot", "curves.svg");           // ... and every file that is asked for
//     output.text() += "...";                           // standard output
//     output.folder(dir); output.file(dir + "/summary.csv", contents);
//     output.figure("curves.svg", draw);
#ifndef CLI_SHELL_OUTPUT_H_
#define CLI_SHELL_OUTPUT_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/shell/target.h"

namespace cli {

class Output {
 public:
  // A file that is read, "-" for standard input. Refuses to print into it.
  void input(const std::string& file);

  // A file that `option` asks for. Throws a Problem: it is the input, the file of another option or
  // where standard output goes (kBadInput), or may not be written (kFailed).
  void reserve(const std::string& option, const std::string& path);

  // Standard output, to be appended to.
  std::string& text() { return text_; }

  // A file; each path once. Regular files are replaced and keep their mode, links are followed;
  // devices, FIFOs and open descriptors (/dev/stdout, /dev/fd/N) are written to.
  void file(const std::string& path, std::string contents);

  // A picture, drawn when everything is written. What `draw` throws (std::runtime_error) is said,
  // and nothing else is lost.
  void figure(const std::string& path, std::function<std::string()> draw);

  // Something that was asked for and cannot be had: said at the end, and the program fails.
  void lack(const std::string& message) { lacks_.push_back(message); }

  // A folder that is made, with those above it, unless it is there.
  void folder(const std::string& path);

  // What write could not do although it has written the files.
  struct Shortfall {
    std::vector<std::string> messages;  // figures, readers that went away, standard output
    bool pipeClosed = false;            // nobody reads standard output any more
  };

  // Writes everything. Throws a Problem where a file cannot be written, having left nothing.
  Shortfall write();

 private:
  struct File {
    std::string path, contents;
    std::function<std::string()> draw;  // of a picture
  };
  struct Reserved {
    std::string option, path;
    Target target;
  };
  const Target& targetAt(const std::string& path);

  std::string text_;
  std::vector<File> files_;
  std::vector<std::string> lacks_;
  std::vector<std::string> folders_;
  std::vector<Identity> inputs_;
  std::vector<Reserved> reserved_;
};

// Writes all of `text` into a descriptor, a closed pipe included; 0, or the system's error number.
int writeAll(int descriptor, std::string_view text);

}  // namespace cli

#endif  // CLI_SHELL_OUTPUT_H_
