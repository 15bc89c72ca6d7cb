// Saved fits: any text is read or refused, and so is any content under a right checksum; what is
// read is written as the same, and predicts or refuses.
#include <cstdint>
#include <memory>
#include <string>

#include "analysis/cox/predict.h"
#include "analysis/savedFit.h"
#include "frame/expression.h"
#include "tests/fuzz/patients.h"
#include "tests/fuzz/require.h"

using survmeth::analysis::CoxSaved;
using survmeth::analysis::NoSavedFit;
using survmeth::analysis::SavedFit;
using survmeth::fuzz::require;

namespace {

std::string written(const CoxSaved& fit) {
  std::string text;
  survmeth::report::JsonWriter json(text);
  json.beginObject();
  writeCoxSaved(fit, json);
  json.endObject();
  return text;
}

void predict(const CoxSaved& fit) {
  static const survmeth::frame::Frame kPatients = survmeth::fuzz::patients();
  survmeth::analysis::CoxPredictRequest request;
  request.at = {0, 2, 1e9};
  request.quantiles = {0.5};
  request.parts = true;
  try {
    survmeth::numerics::Progress progress;
    const auto made = predictCox(fit, kPatients, request, progress);
    require(made.line.size() == kPatients.rows, "a prediction for each row");
  } catch (const survmeth::engine::Refusal& refusal) {
    require(*refusal.what() != '\0', "a refusal says why");
  } catch (const survmeth::frame::ExpressionError& error) {
    require(*error.what() != '\0', "a refusal says why");
  }
}

void read(const std::string& text) {
  SavedFit fit;
  try {
    fit = survmeth::analysis::readSavedFit(text);
  } catch (const NoSavedFit& none) {
    require(*none.what() != '\0', "a refusal says why");
    return;
  }
  const auto& saved = *std::static_pointer_cast<const CoxSaved>(fit.lasting);
  const std::string once = written(saved);
  require(written(survmeth::analysis::readCoxSaved(survmeth::analysis::parseJson(once))) == once,
          "a fit reads as it is written");
  predict(saved);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  read(text);
  try {
    read(survmeth::analysis::sealed(text));
  } catch (const survmeth::analysis::JsonError& error) {
    require(*error.what() != '\0', "a refusal says why");
  }
  return 0;
}
