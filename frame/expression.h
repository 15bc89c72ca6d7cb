// Expressions as people write them about the columns of a frame: the text of --where and the pieces
// of a formula. Parsing knows no column; evaluation reads a frame.
//
//     age > 40 & sex == "f"        log(bili)        status %in% c("dead", "tx")
//
// Precedence as in R, from tight to loose: ^ (right to left), unary minus, ':', %in%, * /, + -,
// comparisons, !, &, |, ~. Names with other characters than letters, digits, '.' and '_' stand in
// backticks, texts in single or double quotes.
#ifndef FRAME_EXPRESSION_H_
#define FRAME_EXPRESSION_H_

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace survmeth::frame {

// A node: what it is, its text (name, literal, operator or function), its arguments, and where it
// stands in the whole.
struct Expression {
  enum class Kind { kNumber, kText, kName, kCall, kOperator };
  Kind kind = Kind::kNumber;
  std::string text;
  double number = 0;
  std::vector<Expression> arguments;
  std::vector<std::string> argumentNames;  // of calls; empty where an argument has none
  std::size_t at = 0;                      // first character in the whole text
  std::size_t end = 0;                     // one behind the last

  bool isOperator(std::string_view name) const { return kind == Kind::kOperator && text == name; }
  bool isCall(std::string_view name) const { return kind == Kind::kCall && text == name; }
};

// A text that is no expression, or one that cannot be evaluated. what() is the sentence; shown()
// the text, a caret under the place, and the sentence, for a terminal.
class ExpressionError : public std::invalid_argument {
 public:
  ExpressionError(std::string text, std::size_t at, const std::string& sentence)
      : std::invalid_argument(sentence), text_(std::move(text)), at_(at) {}
  const std::string& text() const { return text_; }
  std::size_t at() const { return at_; }
  std::string shown() const;
  // The text and, on a second line, the caret under the place.
  std::string marked() const;

 private:
  std::string text_;
  std::size_t at_;
};

// Reads the whole text. Throws ExpressionError.
Expression parseExpression(std::string_view text);

// The expression as R would deparse it: one blank around + - and comparisons, none around ^ and
// ':', backticks where a name needs them. Names the columns of a design.
std::string deparse(const Expression& expression);

// The names of columns in it, each once, in order of first use.
std::vector<std::string> namesIn(const Expression& expression);

}  // namespace survmeth::frame

#endif  // FRAME_EXPRESSION_H_
