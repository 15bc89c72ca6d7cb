// A precedence parser over R's operators.
#include "frame/expression.h"

#include <algorithm>
#include <array>
#include <utility>

#include "frame/scanner.h"
#include "text/words.h"

namespace survmeth::frame {
namespace {

constexpr int kNot = 4, kComparison = 5, kMinus = 10, kPower = 11;
constexpr int kDeepest = 200;   // parentheses within parentheses
constexpr int kLongest = 2000;  // operators one after the other: what follows walks down them

// Operators of two arguments with their binding power; '^' and '~' are read in the parser.
struct Operator {
  std::string_view text;
  int power;
};
constexpr std::array<Operator, 17> kOperators = {{{"~", 1},
                                                  {"|", 2},
                                                  {"||", 2},
                                                  {"&", 3},
                                                  {"&&", 3},
                                                  {"==", kComparison},
                                                  {"!=", kComparison},
                                                  {"<=", kComparison},
                                                  {">=", kComparison},
                                                  {"<", kComparison},
                                                  {">", kComparison},
                                                  {"+", 6},
                                                  {"-", 6},
                                                  {"*", 7},
                                                  {"/", 7},
                                                  {"%in%", 8},
                                                  {":", 9}}};

bool isComparison(std::string_view text) {
  return std::any_of(kOperators.begin(), kOperators.end(), [&](const Operator& op) {
    return op.text == text && op.power == kComparison;
  });
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text), scanner_(text) { next(); }

  Expression whole() {
    if (token_.kind == Token::Kind::kEnd) fail(0, "the text is empty; expected an expression");
    Expression expression = parse(0);
    if (at("=")) fail(token_.at, "\"=\" does not fit here; expected == for a comparison");
    if (token_.kind != Token::Kind::kEnd) {
      fail(token_.at, here() + " does not fit here; expected an operator or the end");
    }
    return expression;
  }

 private:
  [[noreturn]] void fail(std::size_t at, const std::string& sentence) const {
    throw ExpressionError(std::string(text_), at, sentence);
  }

  std::string here() const {
    return token_.kind == Token::Kind::kEnd ? "the end of the text" : text::quote(token_.text);
  }

  void next() { token_ = scanner_.next(); }

  bool at(std::string_view symbol) const {
    return token_.kind == Token::Kind::kOperator && token_.text == symbol;
  }

  void expect(std::string_view symbol, std::size_t opened) {
    if (!at(symbol)) {
      fail(token_.kind == Token::Kind::kEnd ? opened : token_.at,
           token_.kind == Token::Kind::kEnd
               ? "the parenthesis that begins here is not closed; expected )"
               : here() + " does not fit here; expected ) or a comma");
    }
    next();
  }

  Expression made(Expression::Kind kind, std::string text, std::size_t at, std::size_t end) const {
    Expression expression;
    expression.kind = kind;
    expression.text = std::move(text);
    expression.at = at;
    expression.end = end;
    return expression;
  }

  Expression unary(std::string text, int power) {
    const std::size_t begin = token_.at;
    next();
    Expression inner = parse(power);
    Expression expression = made(Expression::Kind::kOperator, std::move(text), begin, inner.end);
    expression.arguments.push_back(std::move(inner));
    return expression;
  }

  Expression primary() {
    const Token token = token_;
    switch (token.kind) {
      case Token::Kind::kNumber: {
        next();
        Expression number = made(Expression::Kind::kNumber, token.text, token.at, token.end);
        number.number = token.number;
        return number;
      }
      case Token::Kind::kText:
        next();
        return made(Expression::Kind::kText, token.text, token.at, token.end);
      case Token::Kind::kName:
        next();
        if (at("(") && !token.quoted) return call(token);
        return made(Expression::Kind::kName, token.text, token.at, token.end);
      case Token::Kind::kOperator:
        if (token.text == "(") {
          next();
          Expression inner = parse(0);
          const std::size_t end = token_.end;
          expect(")", token.at);
          Expression group = made(Expression::Kind::kCall, "(", token.at, end);
          group.arguments.push_back(std::move(inner));
          group.argumentNames.emplace_back();
          return group;
        }
        if (token.text == "-" || token.text == "+") return unary(token.text, kMinus);
        if (token.text == "!") return unary("!", kNot);
        if (token.text == "~") return unary("~", 1);
        break;
      case Token::Kind::kEnd:
        break;
    }
    fail(token.at, here() + " does not fit here; expected a name, a number or a parenthesis");
  }

  Expression call(const Token& name) {
    const std::size_t opened = token_.at;
    next();
    Expression expression = made(Expression::Kind::kCall, name.text, name.at, name.end);
    if (!at(")")) {
      for (;;) {
        std::string argument;
        Expression value = parse(0);
        if (at("=")) {
          if (value.kind != Expression::Kind::kName) {
            fail(token_.at, "\"=\" does not fit here; expected == for a comparison");
          }
          argument = value.text;
          next();
          value = parse(0);
        }
        expression.arguments.push_back(std::move(value));
        expression.argumentNames.push_back(std::move(argument));
        if (!at(",")) break;
        next();
      }
    }
    expression.end = token_.end;
    expect(")", opened);
    return expression;
  }

  Expression parse(int least) {
    if (++depth_ > kDeepest) fail(token_.at, "the expression is nested too deeply");
    Expression left = primary();
    int length = 0;
    while (token_.kind == Token::Kind::kOperator) {
      if (++length > kLongest) fail(token_.at, "the expression is too long");
      if (token_.text == "^") {
        if (kPower < least) break;
        left = binary(std::move(left), kMinus);  // right to left; a minus may follow
        continue;
      }
      const auto found = std::find_if(kOperators.begin(), kOperators.end(),
                                      [this](const auto& op) { return op.text == token_.text; });
      if (found == kOperators.end() || found->power < least) break;
      if (found->power == kComparison && left.kind == Expression::Kind::kOperator &&
          isComparison(left.text)) {
        fail(token_.at, here() + " does not fit here: comparisons make no chain; expected & " +
                            "between two of them");
      }
      left = binary(std::move(left), found->power + 1);
    }
    --depth_;
    return left;
  }

  Expression binary(Expression left, int power) {
    std::string text = token_.text;
    if (text == "&&" || text == "||") text.pop_back();
    next();
    Expression right = parse(power);
    Expression expression = made(Expression::Kind::kOperator, std::move(text), left.at, right.end);
    expression.arguments.push_back(std::move(left));
    expression.arguments.push_back(std::move(right));
    return expression;
  }

  std::string_view text_;
  Scanner scanner_;
  int depth_ = 0;
  Token token_;
};

bool isPlainName(const std::string& name) {
  return !name.empty() && isNameStart(name[0]) && name[0] != '_' &&
         !(name[0] == '.' && name.size() > 1 && isDigit(name[1])) &&
         std::all_of(name.begin(), name.end(), isNamePart);
}

std::string quotedText(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

void collect(const Expression& expression, std::vector<std::string>& names) {
  const bool isConstant = expression.text == "TRUE" || expression.text == "FALSE";
  if (expression.kind == Expression::Kind::kName && !isConstant &&
      std::find(names.begin(), names.end(), expression.text) == names.end()) {
    names.push_back(expression.text);
  }
  for (const Expression& argument : expression.arguments) collect(argument, names);
}

}  // namespace

std::string ExpressionError::shown() const { return marked() + "\n" + what(); }

std::string ExpressionError::marked() const {
  // The caret stands under the character, not under the byte.
  std::size_t cells = 0;
  for (std::size_t i = 0; i < at_ && i < text_.size(); ++i) {
    if ((static_cast<unsigned char>(text_[i]) & 0xC0) != 0x80) ++cells;
  }
  std::string line = text_;
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return line + "\n" + std::string(cells, ' ') + "^";
}

Expression parseExpression(std::string_view text) { return Parser(text).whole(); }

std::string deparse(const Expression& expression) {
  switch (expression.kind) {
    case Expression::Kind::kNumber:
      return expression.text;
    case Expression::Kind::kText:
      return quotedText(expression.text);
    case Expression::Kind::kName:
      return isPlainName(expression.text) ? expression.text : '`' + expression.text + '`';
    case Expression::Kind::kOperator: {
      if (expression.arguments.size() == 1) {
        return expression.text + deparse(expression.arguments[0]);
      }
      const bool tight = expression.text == "^" || expression.text == ":" || expression.text == "/";
      const std::string blank = tight ? "" : " ";
      return deparse(expression.arguments[0]) + blank + expression.text + blank +
             deparse(expression.arguments[1]);
    }
    case Expression::Kind::kCall:
      break;
  }
  std::string text = expression.text == "(" ? "(" : expression.text + "(";
  for (std::size_t i = 0; i < expression.arguments.size(); ++i) {
    if (i > 0) text += ", ";
    if (!expression.argumentNames[i].empty()) text += expression.argumentNames[i] + " = ";
    text += deparse(expression.arguments[i]);
  }
  return text + ")";
}

std::vector<std::string> namesIn(const Expression& expression) {
  std::vector<std::string> names;
  collect(expression, names);
  return names;
}

}  // namespace survmeth::frame
