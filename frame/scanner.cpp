#include "frame/scanner.h"

#include <system_error>
#include <utility>

#include "frame/expression.h"
#include "text/charconv.h"
#include "text/words.h"

namespace survmeth::frame {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

bool isNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isNamePart(char c) { return isNameStart(c) || isDigit(c); }

void Scanner::fail(std::size_t at, const std::string& sentence) const {
  throw ExpressionError(std::string(text_), at, sentence);
}

Token Scanner::next() {
  while (position_ < text_.size() && isBlank(text_[position_])) ++position_;
  Token token;
  token.at = position_;
  if (position_ < text_.size()) scan(token);
  token.end = position_;
  return token;
}

void Scanner::scan(Token& token) {
  const char c = text_[position_];
  if (isDigit(c) || (c == '.' && position_ + 1 < text_.size() && isDigit(text_[position_ + 1]))) {
    return scanNumber(token);
  }
  if (isNameStart(c)) return scanName(token);
  if (c == '"' || c == '\'' || c == '`') return scanQuoted(token, c);
  token.kind = Token::Kind::kOperator;
  for (const std::string_view each :
       {"%in%", "==", "!=", "<=", ">=", "&&", "||", "**", "~", "|", "&", "<",
        ">",    "+",  "-",  "*",  "/",  ":",  "^",  "!",  "(", ")", ",", "="}) {
    if (text_.substr(position_).starts_with(each)) {
      token.text = each == "**" ? "^" : each;
      position_ += each.size();
      return;
    }
  }
  fail(position_, text::quote(text_.substr(position_, 1)) +
                      " is no part of an expression; expected a name, a number or an operator");
}

void Scanner::scanNumber(Token& token) {
  const char* const begin = text_.data() + position_;
  const auto [after, error] = text::from_chars(begin, text_.data() + text_.size(), token.number);
  token.text = std::string(begin, after);
  if (error != std::errc()) {
    fail(position_, text::quote(token.text) + " is out of range; expected a number");
  }
  position_ += token.text.size();
  if (position_ < text_.size() && isNamePart(text_[position_])) {
    fail(position_,
         "a name cannot begin with a digit; expected backticks around it, or an "
         "operator");
  }
  token.kind = Token::Kind::kNumber;
}

void Scanner::scanName(Token& token) {
  const std::size_t begin = position_;
  while (position_ < text_.size() && isNamePart(text_[position_])) ++position_;
  token.kind = Token::Kind::kName;
  token.text = text_.substr(begin, position_ - begin);
}

// In backticks a name is taken as it is; in quotes a backslash escapes the next character.
void Scanner::scanQuoted(Token& token, char quote) {
  const std::size_t begin = position_++;
  std::string content;
  while (position_ < text_.size() && text_[position_] != quote) {
    if (quote != '`' && text_[position_] == '\\' && position_ + 1 < text_.size()) ++position_;
    content += text_[position_++];
  }
  if (position_ == text_.size()) {
    fail(begin, std::string("the quote that begins here is not closed; expected ") + quote);
  }
  ++position_;
  if (quote == '`' && content.empty()) {
    fail(begin, "a name is empty; expected a column's name");
  }
  token.kind = quote == '`' ? Token::Kind::kName : Token::Kind::kText;
  token.quoted = quote == '`';
  token.text = std::move(content);
}

}  // namespace survmeth::frame
