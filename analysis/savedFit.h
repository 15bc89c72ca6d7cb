// Fits that last: what a follow-up needs of a result, written to a file and read again. The file
// is JSON with every digit, the number of its layout and a checksum of its content, so that a file
// that was cut off, changed or written by another layout is refused.
//
//     {"schema": "survmeth-fit/1", "version": "0.1.0", "checksum": "...",
//      "fit": {"analysis": "cox", ..., "model": {...}}}
#ifndef ANALYSIS_SAVED_FIT_H_
#define ANALYSIS_SAVED_FIT_H_

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/jsonTree.h"
#include "numerics/squareMatrix.h"
#include "report/jsonWriter.h"

namespace survmeth::analysis {

inline constexpr const char* kFitSchema = "survmeth-fit/1";

// A file that is no fit, or not as it was written. what() is a sentence.
class NoSavedFit : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The text of the file. `report` is that of the result, `lasting` what declaration.lasting makes
// of it.
std::string savedFit(const Declaration& declaration, const report::Report& report,
                     const void* lasting, const std::string& version);

// A fit (a JSON object) with layout, the program's version and the fit's checksum around it.
std::string sealed(const std::string& fit, const std::string& version = "");

struct SavedFit {
  const Declaration* declaration = nullptr;
  std::shared_ptr<const void> lasting;
};

// Throws NoSavedFit.
SavedFit readSavedFit(std::string_view text);

// --- For what lasts of an analysis ---------------------------------------------------------------

// Numbers that JSON lacks as "NaN", "inf" and "-inf".
void writeExact(report::JsonWriter& json, const std::vector<double>& numbers);
void writeExact(report::JsonWriter& json, const std::vector<std::vector<double>>& rows);
void writeExact(report::JsonWriter& json, const numerics::SquareMatrix& matrix);

// What these wrote, and lists of other things. Each throws JsonError where the value is another, or
// does not have `size` elements.
inline constexpr std::size_t kAnySize = static_cast<std::size_t>(-1);
std::vector<double> exactNumbers(const JsonNode& node, const std::string& what,
                                 std::size_t size = kAnySize);
std::vector<std::vector<double>> exactRows(const JsonNode& node, const std::string& what,
                                           std::size_t rows, std::size_t size = kAnySize);
numerics::SquareMatrix exactMatrix(const JsonNode& node, const std::string& what, std::size_t size);
std::vector<std::string> textsOf(const JsonNode& node, const std::string& what,
                                 std::size_t size = kAnySize);
// Whole numbers below `end`.
std::vector<std::size_t> indexesOf(const JsonNode& node, const std::string& what, std::size_t end);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_SAVED_FIT_H_
