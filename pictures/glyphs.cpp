#include "pictures/glyphs.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdint>

#include "pictures/pictures.h"
#include "text/utf8.h"
#include "text/words.h"

extern char** environ;

namespace survmeth::pictures {
namespace {

constexpr std::size_t kMostNamed = 8;  // of the characters in a message

bool common(std::uint32_t character) {
  const auto within = [character](std::uint32_t first, std::uint32_t last) {
    return first <= character && character <= last;
  };
  return character < 0x250 || within(0x370, 0x52F) || within(0x2000, 0x22FF) ||
         within(0xFE00, 0xFE0F) || character == 0xFEFF;  // these are not drawn
}

// Whether fontconfig says that no font has the character.
bool lacking(const std::string& character) {
  std::string_view rest = character;
  char code[16] = {};
  std::to_chars(code, code + sizeof code - 1, text::takeCharacter(rest), 16);
  std::string pattern = ":charset=" + std::string(code);
  char program[] = "fc-list", quiet[] = "--quiet";
  char* const arguments[] = {program, quiet, pattern.data(), nullptr};
  pid_t process = 0;
  if (posix_spawnp(&process, program, nullptr, nullptr, arguments, environ) != 0) return false;
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

}  // namespace

void addUncommon(std::string_view text, std::set<std::string>& characters) {
  while (!text.empty()) {
    const std::string_view before = text;
    if (!common(text::takeCharacter(text))) {
      characters.emplace(before.substr(0, before.size() - text.size()));
    }
  }
}

void requireGlyphs(const std::set<std::string>& characters) {
  std::string named;
  std::size_t count = 0;
  for (const std::string& character : characters) {
    if (!lacking(character)) continue;
    if (++count <= kMostNamed) named += (count > 1 ? " " : "") + character;
  }
  if (count == 0) return;
  throw Failure(
      "the plot cannot be drawn: no font here has " + named +
      (count > kMostNamed
           ? " and " + text::counted(count - kMostNamed, "other character", "other characters") +
                 " of its labels"
           : "") +
      "; draw an .svg, or install a font that has " + (count == 1 ? "it" : "them"));
}

}  // namespace survmeth::pictures
