// Expressions: any text is read or refused with a place in it; what is read can be written and read
// again, and has a value in every row of a frame or is refused.
#include <cstdint>
#include <string>
#include <string_view>

#include "frame/evaluate.h"
#include "frame/expression.h"
#include "tests/fuzz/patients.h"
#include "tests/fuzz/require.h"

using survmeth::frame::AbsentLabel;
using survmeth::frame::Expression;
using survmeth::frame::ExpressionError;
using survmeth::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const survmeth::frame::Frame kPatients = survmeth::fuzz::patients();
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    const Expression expression = survmeth::frame::parseExpression(text);
    require(expression.at <= expression.end && expression.end <= text.size(),
            "an expression stands within its text");
    const std::string written = deparse(expression);
    require(deparse(survmeth::frame::parseExpression(written)) == written,
            "what is written reads as it is written");
    for (const AbsentLabel absent : {AbsentLabel::kRefuse, AbsentLabel::kFalse}) {
      const auto values = evaluate(expression, kPatients, text, absent);
      require(values.numbers.size() == kPatients.rows, "a value for every row");
    }
    const auto where = survmeth::frame::rowsWhere(expression, kPatients, text);
    for (const std::uint32_t row : where.rows) require(row < kPatients.rows, "rows of the frame");
    require(where.rows.size() + where.missing <= kPatients.rows, "each row is counted once");
  } catch (const ExpressionError& error) {
    require(error.at() <= error.text().size(), "a refusal stands within the text");
    require(!error.shown().empty(), "a refusal can be shown");
  }
  return 0;
}
