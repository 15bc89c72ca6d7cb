// The plain types that go into every statistic of the engine: spans into the caller's columns.
// Nothing is owned, nothing is sorted beforehand, and no value is missing.
#ifndef ENGINE_INPUT_H_
#define ENGINE_INPUT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace survmeth::engine {

// The response of n rows. A row is at risk in (entry, exit]; without entry from the beginning.
struct Response {
  std::span<const double> entry;         // n, entry < exit; or empty: everybody from the beginning
  std::span<const double> exit;          // n, finite
  std::span<const std::uint32_t> event;  // n; 0 censored, 1 the event, or causes 1 .. causes
  std::uint32_t causes = 1;
  std::size_t rows() const { return exit.size(); }
};

enum class WeightKind {
  kFrequencies,  // a row of weight w stands for w rows: model-based variances hold
  kSampling,     // inverse probabilities: only robust variances hold
};

// What a row carries besides its response. Empty spans: weight 1, offset 0, one stratum, every
// row a cluster of its own.
struct Rows {
  std::span<const double> weight;  // n, finite, not negative
  WeightKind weightKind = WeightKind::kFrequencies;
  std::span<const double> offset;          // n, finite
  std::span<const std::uint32_t> stratum;  // n, codes 0 .. strata - 1
  std::size_t strata = 1;
  std::span<const std::uint32_t> cluster;  // n, codes 0 .. clusters - 1
  std::size_t clusters = 0;                // 0: no clusters
};

// The design: columns of n finite numbers, each with its name and its term (the columns of one
// factor or one spline are one term).
struct Design {
  std::vector<std::span<const double>> columns;
  std::vector<std::string> names;  // of the columns
  std::vector<std::size_t> term;   // of each column: index into termNames
  std::vector<std::string> termNames;
  std::size_t rows() const { return columns.empty() ? 0 : columns.front().size(); }
  std::size_t size() const { return columns.size(); }
};

// What a value means: of an option, of a column, of an argument that is refused.
enum class Role {
  kRequest,  // the request as a whole
  kTime,     // exit, or the only time
  kEntry,
  kEvent,  // event, status, cause
  kWeight,
  kOffset,
  kStrata,
  kCluster,
  kSubject,
  kGroup,
  kCovariate,  // a column of the design
  kFirst,      // the two methods of a comparison, the first also where there is only one
  kSecond,
  kClass,  // what a marker is to tell
  kMarker,
  kLevel,      // of a label column: an event value, a reference, the positives
  kFormula,    // names columns by itself
  kAlpha,      // numbers of a request: the significance level
  kIntervals,  // the width or the bounds of intervals
  kPrevalence,
  kCost,
  kRatio,
  kRho,
  kRemoval,
  kValue,  // a number, a choice, a switch: nothing of the data
};

// Input that cannot be analysed. The faces find the place: which role is at fault, for roles of
// several columns which of them, and which row (from 0), where it is one.
class Refusal : public std::invalid_argument {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  Refusal(Role role, std::size_t row, const std::string& text, std::size_t column = kNone,
          std::string expected = {})
      : std::invalid_argument(text),
        role_(role),
        row_(row),
        column_(column),
        expected_(std::move(expected)) {}
  Role role() const { return role_; }
  std::size_t row() const { return row_; }
  std::size_t column() const { return column_; }
  const std::string& expected() const { return expected_; }  // may be empty
  // The same, said of the rows that these come from.
  Refusal of(std::span<const std::uint32_t> rows) const {
    return {role_, row_ == kNone ? kNone : rows[row_], what(), column_, expected_};
  }

 private:
  Role role_;
  std::size_t row_, column_;
  std::string expected_;
};

// Why a result, or a part of it, does not exist: a code for programs, a sentence for people, and
// the names it is about (columns, levels, groups).
struct Outcome {
  std::string code;  // "collinear", "separated", "noEvents", "notConverged"
  std::string text;
  std::vector<std::string> names;
  std::vector<std::uint32_t> strata = {};  // the caller's codes, where it is about some
};

}  // namespace survmeth::engine

#endif  // ENGINE_INPUT_H_
