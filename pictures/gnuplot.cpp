// Running gnuplot. Script, picture and messages pass through unnamed temporary files, which cannot
// fill up and block either side as pipes would.
#include "pictures/gnuplot.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "report/numbers.h"

extern char** environ;

namespace survmeth::pictures {
namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

[[noreturn]] void fail(const std::string& why) {
  throw Failure("the plot cannot be drawn: " + why);
}

File temporary() {
  File file(std::tmpfile());
  if (!file) fail(std::strerror(errno));
  return file;
}

using Take = std::function<void(std::string_view piece, std::size_t whole)>;

// What stands in a file, in pieces.
void read(std::FILE* file, const Take& take) {
  std::fseek(file, 0, SEEK_END);
  const auto whole = static_cast<std::size_t>(std::ftell(file));
  std::rewind(file);
  char buffer[1 << 16];
  std::size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) take({buffer, count}, whole);
}

std::string contents(std::FILE* file) {
  std::string text;
  read(file, [&text](std::string_view piece, std::size_t) { text += piece; });
  return text;
}

class SpawnFiles {
 public:
  SpawnFiles() { posix_spawn_file_actions_init(&actions_); }
  ~SpawnFiles() { posix_spawn_file_actions_destroy(&actions_); }
  SpawnFiles(const SpawnFiles&) = delete;
  SpawnFiles& operator=(const SpawnFiles&) = delete;
  void put(std::FILE* file, int descriptor) {
    posix_spawn_file_actions_adddup2(&actions_, fileno(file), descriptor);
  }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

// The last line that says something; gnuplot repeats the script line and a caret above it.
std::string lastLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  const std::size_t start = text.find_last_of('\n');
  if (start != std::string::npos) text.erase(0, start + 1);
  return text;
}

}  // namespace

std::string gnuplotText(std::string_view text) {
  // Everything but letters, digits and spaces as \0ooo: gnuplot substitutes `commands` and @macros
  // in a line before it looks at quotes, and does not always take a doubled quote for one. Of a
  // number that begins with 0 it reads up to four digits: with three, a digit that follows in the
  // text would be read along.
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      result += ' ';
    } else if (byte < 0x80 && std::isalnum(byte) == 0 && c != ' ') {
      result += '\\';
      for (const int shift : {9, 6, 3, 0}) result += static_cast<char>('0' + ((byte >> shift) & 7));
    } else {
      result += c;
    }
  }
  return result + '"';
}

// The factors make a unit one point in every format: the Cairo terminals count fonts in 96ths of an
// inch, lines and dashes in halves, and markers in thirds of what an SVG's are.
std::string terminalLine(Format format, double width, double height) {
  const auto size = [&](double factor, const char* unit) {
    return "size " + report::exact(width * factor) + unit + "," + report::exact(height * factor) +
           unit;
  };
  switch (format) {
    case Format::kSvg:
      return "set terminal svg noenhanced rounded " + size(1, "") +
             " font 'DejaVu Sans,Helvetica,Arial,sans-serif,12' background '#ffffff'\n";
    case Format::kPng:
      return "set terminal pngcairo noenhanced rounded " + size(2, "") +
             " font 'DejaVu Sans,12' fontscale 1.5 linewidth 2 pointscale 3 dashlength 2\n";
    case Format::kPdf:
      break;
  }
  return "set terminal pdfcairo noenhanced rounded " + size(1.0 / 72, "in") +
         " font 'DejaVu Sans,12' fontscale 0.75 linewidth 2 pointscale 1.5 dashlength 2\n";
}

void runGnuplot(const std::string& script, const Take& take) {
  const File in = temporary(), out = temporary(), messages = temporary();
  if (std::fwrite(script.data(), 1, script.size(), in.get()) != script.size() ||
      std::fflush(in.get()) != 0) {
    fail(std::strerror(errno));
  }
  std::rewind(in.get());

  SpawnFiles files;
  files.put(in.get(), STDIN_FILENO);
  files.put(out.get(), STDOUT_FILENO);
  files.put(messages.get(), STDERR_FILENO);
  // Without the reader's own start-up file, which could change the picture.
  char program[] = "gnuplot", plain[] = "--default-settings", fromInput[] = "-";
  char* const arguments[] = {program, plain, fromInput, nullptr};
  pid_t process = 0;
  const int error = posix_spawnp(&process, program, files.get(), nullptr, arguments, environ);
  if (error == ENOENT) {
    fail("gnuplot is not installed or not on the PATH (Debian: apt-get install gnuplot-nox)");
  }
  if (error != 0) fail(std::string("gnuplot does not start: ") + std::strerror(error));
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) fail(std::strerror(errno));
  }
  std::fseek(out.get(), 0, SEEK_END);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || std::ftell(out.get()) == 0) {
    const std::string said = lastLine(contents(messages.get()));
    fail("gnuplot failed" + (said.empty() ? "" : ": " + said));
  }
  read(out.get(), take);
}

}  // namespace survmeth::pictures
