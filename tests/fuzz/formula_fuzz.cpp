// Formulas: any text is read or refused with a place in it; of what is read, everything but the
// rows' fitness for it holds: the design has its columns, each with a name, and learning again from
// the same rows gives the same coding.
#include <cstdint>
#include <string>
#include <vector>

#include "frame/select.h"
#include "model/design.h"
#include "model/formula.h"
#include "model/response.h"
#include "tests/fuzz/patients.h"
#include "tests/fuzz/require.h"

using survmeth::frame::ExpressionError;
using survmeth::fuzz::require;
using survmeth::model::Coding;
using survmeth::model::Formula;

namespace {

void learn(const Formula& formula, const survmeth::frame::Frame& all) {
  const auto rows = survmeth::model::completeRows(formula, all);
  const survmeth::frame::Frame data = selectRows(all, rows);
  if (data.rows == 0) return;
  const Coding coding = Coding::learn(formula, data);
  require(coding.variables() == Coding::learn(formula, data).variables(),
          "one coding of one frame");
  const auto made = survmeth::model::modelData(coding, data);
  require(made.design.design.names.size() == made.design.design.size(), "a name for each column");
  require(made.design.design.term.size() == made.design.design.size(), "a term for each column");
  for (const auto& column : made.design.design.columns) {
    require(column.size() == data.rows, "a cell in every row");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const survmeth::frame::Frame kPatients = survmeth::fuzz::patients();
  static const std::vector<std::string> kNames = [] {
    std::vector<std::string> names;
    for (const auto& column : kPatients.columns) names.push_back(column.name);
    return names;
  }();
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    const Formula formula = survmeth::model::parseFormula(text, kNames);
    for (const auto& term : formula.terms) {
      for (const std::size_t variable : term.variables) {
        require(variable < formula.variables.size(), "terms of the formula's variables");
      }
    }
    learn(formula, kPatients);
  } catch (const ExpressionError& error) {
    require(error.at() <= error.text().size(), "a refusal stands within the text");
    require(!error.shown().empty(), "a refusal can be shown");
  } catch (const survmeth::engine::Refusal& refusal) {
    require(*refusal.what() != '\0', "a refusal says why");
  }
  return 0;
}
