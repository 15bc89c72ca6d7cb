// The encodings that tables come in, all turned into UTF-8.
#ifndef FRAME_ENCODING_H_
#define FRAME_ENCODING_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "frame/frame.h"
#include "frame/place.h"

namespace survmeth::frame {

enum class Encoding { kUnmarked, kUtf8, kUtf16Little, kUtf16Big };

struct Start {
  Encoding encoding = Encoding::kUnmarked;
  std::size_t mark = 0;  // bytes of the byte-order mark
  bool isGuess = false;  // no mark, but every other byte is zero
};

// What the first bytes of a text say. UTF-16 without a mark is taken for that where one byte of
// each pair is never zero and the other is in at least half of them, as in any table with a header
// in Latin letters. Throws Damage: UTF-32, archives and workbooks, by their names.
Start startOf(std::string_view bytes);

// UTF-16 in pieces of any length as UTF-8.
class Utf16Decoder {
 public:
  explicit Utf16Decoder(bool isBig) : isBig_(isBig) {}
  // Appends to `text` what stands before half of a surrogate pair; then that throws Damage, so that
  // the reader knows its line.
  void decode(std::string_view bytes, std::string& text);
  // Throws Damage, also where the text ends within a character.
  void finish() const;

 private:
  // False: half of a pair.
  bool unit(unsigned value, std::string& text);
  void requireWhole() const;

  bool isBig_;
  std::optional<unsigned char> half_;  // of a unit
  unsigned high_ = 0;                  // of a surrogate pair
  bool isBroken_ = false;
};

// Names and labels of a file that does not say its encoding. Where they are not UTF-8 they are
// Windows-1252, of which Latin-1 is a part; a file is one of the two throughout.
class CellEncoding {
 public:
  void mustBeUtf8() { mustBeUtf8_ = true; }

  // `cell` as UTF-8; `what` is "cell" or "column name". Throws Unreadable with the place: a file of
  // both encodings, and what is neither.
  std::string utf8(std::string_view cell, const Place& place, std::string_view what);

  // Says what was converted, if anything was.
  std::optional<Remark> remark() const;

 private:
  struct Seen {
    std::string text;  // empty: none
    std::size_t line = 0;
  };
  bool mustBeUtf8_ = false;
  Seen asUtf8_, converted_;
};

}  // namespace survmeth::frame

#endif  // FRAME_ENCODING_H_
