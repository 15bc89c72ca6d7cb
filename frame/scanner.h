// The words of which expressions are made: names, numbers, texts in quotes, operators.
#ifndef FRAME_SCANNER_H_
#define FRAME_SCANNER_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace survmeth::frame {

struct Token {
  enum class Kind { kEnd, kNumber, kText, kName, kOperator } kind = Kind::kEnd;
  std::string text;
  double number = 0;
  bool quoted = false;  // a name in backticks: never a function
  std::size_t at = 0, end = 0;
};

// Of names: letters, digits, '.' and '_', and every character outside ASCII.
bool isNameStart(char c);
bool isNamePart(char c);
bool isDigit(char c);

class Scanner {
 public:
  // The text must outlive the scanner.
  explicit Scanner(std::string_view text) : text_(text) {}

  // The next word; kEnd behind the last. Throws ExpressionError.
  Token next();

 private:
  [[noreturn]] void fail(std::size_t at, const std::string& sentence) const;
  void scan(Token& token);
  void scanNumber(Token& token);
  void scanName(Token& token);
  void scanQuoted(Token& token, char quote);

  std::string_view text_;
  std::size_t position_ = 0;
};

}  // namespace survmeth::frame

#endif  // FRAME_SCANNER_H_
