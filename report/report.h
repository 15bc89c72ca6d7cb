// What an analysis says, described once: facts, tables, figures, methods and notes. The renderers
// (text, JSON, CSV, HTML, pictures, data frames) know nothing of any statistic, and an analysis
// nothing of any renderer.
//
// Keys come from report/keys.h: one spelling for one thing in JSON, CSV headers and data frames.
// A number that does not exist is NaN here, null in JSON, an empty cell in CSV, "-" in text.
#ifndef REPORT_REPORT_H_
#define REPORT_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace survmeth::report {

// What a number is: settles digits, alignment and units in every renderer.
enum class Kind {
  kLabel,        // text
  kCount,        // numbers of rows, subjects, events; sums of weights
  kTime,         // a time, or any value in the units of a data column
  kEstimate,     // coefficients, ratios, differences, limits of those
  kProbability,  // survival, incidence, areas, sensitivities
  kPValue,
  kStatistic,  // z, chi-square, log-likelihood
};

// The numbers of a column: its own, or borrowed from a result, which hold() then keeps.
class Numbers {
 public:
  Numbers() = default;
  Numbers(std::vector<double> own);  // NOLINT(google-explicit-constructor): a column is of numbers
  // Valid as long as whoever has them; with hold(), as long as these.
  static Numbers borrowed(std::span<const double> numbers);
  void hold(std::shared_ptr<const void> owner);

  std::size_t size() const { return numbers_.size(); }
  double operator[](std::size_t i) const { return numbers_[i]; }
  auto begin() const { return numbers_.begin(); }
  auto end() const { return numbers_.end(); }
  operator std::span<const double>() const { return numbers_; }  // NOLINT: what they are

 private:
  std::span<const double> numbers_;
  std::shared_ptr<const void> owner_;
};

// A column holds numbers or labels, one for each row of its table.
struct Column {
  std::string key;
  std::string heading;  // for people: "95% lower"
  Kind kind = Kind::kEstimate;
  std::variant<Numbers, std::vector<std::string>> values;

  std::size_t rows() const;
  bool isLabels() const { return values.index() == 1; }
  const Numbers& numbers() const { return std::get<0>(values); }
  const std::vector<std::string>& labels() const { return std::get<1>(values); }
};

// How much of a table people see without asking. Programs (JSON, CSV) always get all of it.
enum class Display {
  kAlways,
  kFilesOnly,  // rows of the data and other long tables: not in text and HTML
};

struct Table {
  std::string id;       // JSON member and name of the CSV file
  std::string caption;  // for people
  std::vector<Column> columns;
  Display display = Display::kAlways;
  // Key of the label column whose values part the table for people: one block for each run of
  // equal labels, headed by it. Empty: one block.
  std::string partedBy;
  std::vector<std::string> remarks;  // sentences under the table, for people

  std::size_t rows() const;
  const Column* find(std::string_view key) const;  // nullptr where there is none
  // Keeps what columns borrow from.
  void hold(const std::shared_ptr<const void>& owner);
};

// One named value: "n", "logLikelihood". A value that does not exist is std::monostate.
using Value = std::variant<std::monostate, bool, double, std::string>;
struct Fact {
  std::string key;
  std::string label;  // for people: "Log-likelihood"; empty: only for programs
  Kind kind = Kind::kEstimate;
  Value value;
};

// Which method, interval, tie treatment or convention a number used, with where it comes from.
struct Method {
  std::string text;
  std::string reference;  // may be empty
};

// A condition that leaves the analysis valid. Programs read the code: "rowsLeftOut",
// "collinear"; names are what it is about (columns, levels, groups).
struct Note {
  std::string code;
  std::string text;
  std::vector<std::string> names = {};
};

// ---------------------------------------------------------------------------------------------
// Figures: series and meaning, no drawing commands.

// kCloglog: log(-log(1 - p)) of a probability. kProbit: its normal quantile. kCategory: 0, 1, 2
// ..., from the left on x and from the top on y.
enum class Scale { kLinear, kLog, kCloglog, kProbit, kCategory };

struct Axis {
  std::string label;
  Scale scale = Scale::kLinear;
  std::optional<double> least, most;    // wanted limits; else from the series
  std::vector<double> ticks;            // wanted ticks; else chosen by the renderer
  std::vector<std::string> categories;  // kCategory: label of 0, 1, 2 ...
  bool percent = false;                 // probabilities may be shown as percent
  // kCategory: the group of each category ("treatment" of "placebo"), which heads a run of them;
  // empty: none.
  std::vector<std::string> categoryGroups = {};
};

enum class SeriesKind {
  kStep,      // right-continuous
  kLine,      // straight between the points
  kBand,      // between lower and upper over x; stepped where the series of its name is
  kArea,      // stacked from below
  kPoints,    // markers; with lower and upper error bars in y, with left and right in x
  kSegments,  // from (x, y) to (right, upper)
  kBars,
};

struct Series {
  std::string name;  // legend; empty: none. Series of one name share colour and dash
  SeriesKind kind = SeriesKind::kLine;
  std::vector<double> x, y;  // y empty for bands
  std::vector<double> lower, upper;
  std::vector<double> left, right;
  std::vector<std::string> labels;  // beside points: "0.74 (0.61 to 0.90)"; may be empty
  std::vector<double> ticks;        // x where a censoring tick stands on a step curve
  bool stepped = false;             // of bands
  bool guide = false;               // to compare with (identity, chance): thin, widens no axis
  std::string labelsHeading = {};   // over labels that form a column, as beside categories on y
};

// A line across the panel: horizontal at y or vertical at x.
struct Reference {
  bool vertical = false;
  double at = 0;
  std::string label;  // may be empty
};

struct Panel {
  std::string title;  // of this panel; may be empty
  Axis x, y;
  std::vector<Series> series;
  std::vector<Reference> references;
  bool equalUnits = false;  // one unit as long on x as on y (ROC curves, method comparison)
};

// Numbers under the x axis, aligned with it: rows (groups) by breaks. A row without counts heads
// those below it: "Cumulative events".
struct RiskTable {
  std::string title;  // "At risk"
  std::vector<double> breaks;
  std::vector<std::string> rows;
  std::vector<std::vector<double>> counts;  // counts[row][break]
  bool eachPanel = false;  // row i is of panel i alone, and stands under it; else of the figure
};

struct Figure {
  std::string id;
  std::string title;
  std::string caption;
  std::vector<Panel> panels;
  std::optional<RiskTable> riskTable;
};

// ---------------------------------------------------------------------------------------------

// Where the data came from, as far as it can be repeated.
struct Data {
  std::string name;    // as the caller gave it: a path, "standard input", "data"
  std::string digest;  // of the columns used; the same data give the same in every face
  std::size_t rowsRead = 0, rowsUsed = 0;
};

// The value of one option of a request.
using Setting =
    std::variant<bool, double, std::string, std::vector<double>, std::vector<std::string>>;

// An option of a request and what it is set to. Programs get every one, so that the run can be
// repeated; people read past those that are as `usual`, where nobody says otherwise.
struct Choice {
  std::string name;
  Setting setting;
  bool usual = false;
};

struct Report {
  std::string analysis;  // "life"
  std::string title;     // "Survival by treatment"
  std::string summary;   // a sentence or two in plain words
  Data data;
  std::vector<Choice> plan;  // the normalised request
  std::vector<Fact> facts;
  std::vector<Table> tables;
  std::vector<Figure> figures;
  std::vector<Method> methods;
  std::vector<Note> notes;
};

// Throws std::logic_error where a report is not what the renderers rely on: keys of facts and of a
// table's columns not empty and unique, ids of tables and figures unique and of letters, digits,
// '-' and '_', columns of one length, partedBy the key of labels. A mistake of the analysis, never
// of the data: a key may be made with a name from the data where those are unique.
void requireWellFormed(const Report& report);

}  // namespace survmeth::report

#endif  // REPORT_REPORT_H_
