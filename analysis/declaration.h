// A declared analysis, as the faces (command line, plans, Python, browser) take it: its options, its
// run, and what they share. declare.h makes them.
#ifndef ANALYSIS_DECLARATION_H_
#define ANALYSIS_DECLARATION_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/option.h"
#include "frame/frame.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::report {
class JsonWriter;
}

namespace survmeth::analysis {

struct JsonNode;

// What of a report is described at all: a face that shows no figure has none made.
struct Parts {
  bool files = true;  // tables that people only get as files
  bool figures = true;
  bool shown = true;  // such tables that a person asks to see
  bool digest = true;

  static Parts onRequest() { return {.files = false, .figures = false, .digest = false}; }
  // What those leave.
  static Parts rest() { return {.shown = false}; }
};

// What a run leaves: the typed result, for follow-ups and C++ callers, and its description.
struct Fitted {
  std::shared_ptr<const void> result;
  report::Report report;
  std::shared_ptr<const frame::Frame> data = nullptr;  // where their digest is still to be made
};

struct Lasting;
struct Declaration;

// Reads other data than the first, with the columns that a follow-up's request wants, and calls
// `use` with them; what `use` refuses is placed in them.
//
// In   name   as the option says it
using WithData =
    std::function<void(const std::string& name, const Declaration& followUp, const void* request,
                       const std::function<void(const frame::Frame&)>& use)>;

// The option of an analysis that names new data, to which the follow-up of its own result is applied.
struct NewData {
  std::string option;
  // The follow-up's request, of what the analysis' own request says.
  std::function<std::shared_ptr<void>(const frame::Frame& data, const void* result,
                                      const void* request, numerics::Progress&)>
      request;
  // Options and tables of the follow-up that have another name in the analysis: theirs, its.
  std::vector<std::pair<std::string, std::string>> names;

  std::string nameOf(const std::string& followUps) const;
};

struct Declaration {
  std::string name;
  std::string summary;  // one line, for lists
  std::string details;  // sentences for the help: methods, conventions
  std::vector<std::string> examples;
  std::vector<Option> options;
  std::vector<std::string> tables, figures;  // ids of those that it may give

  // A new request with its defaults.
  std::function<std::shared_ptr<void>()> request;
  // Fewer complete rows are refused.
  std::function<std::size_t(const void* request)> leastRows = [](const void*) { return 1; };
  // Refuses options that do not go together; throws BadOption.
  std::function<void(const void* request)> check;
  // Changes what is asked of the columns, or asks for more (those of a formula), of those that
  // there are.
  std::function<void(const void* request, const std::vector<std::string>& header,
                     std::vector<frame::Wanted>& wanted)>
      adjustColumns;
  // The rows that can be analysed, ascending; all of them where it is empty.
  std::function<std::vector<std::uint32_t>(const frame::Frame&, const void* request)> completeRows;
  std::function<Fitted(const frame::Frame&, const void* request, numerics::Progress&, const Parts&)>
      run;
  // Adds parts to the report of a result.
  std::function<void(const std::shared_ptr<const void>& result, const void* request, const Parts&,
                     numerics::Progress&, report::Report&)>
      addParts;
  // Whether the result itself holds all that its parts are made of, so that they may be described
  // when the data are gone or changed.
  bool outlivesData = false;

  // How a result is kept for follow-ups; nullptr: it is not.
  std::shared_ptr<const Lasting> lasting;
  // Of an analysis that takes new data beside its own; no option where it does not.
  NewData newData;
  // Of a follow-up: gives its request what lasts of the result that it follows.
  std::function<void(void* request, std::shared_ptr<const void> lasting)> follow;

  const Option* find(const std::string& option) const;  // or nullptr
};

// What lasts of a result, in a file (savedFit.h), and the analysis of new data that follows from it.
struct Lasting {
  // In   data   those of the result
  // Throws BadOption where nothing can follow from the result, numerics::Cancelled
  std::function<std::shared_ptr<const void>(const frame::Frame& data, const void* result,
                                            const void* request, numerics::Progress&)>
      of;
  std::function<void(const void* lasting, report::JsonWriter&)> write;  // members of an object
  // Throws JsonError.
  std::function<std::shared_ptr<const void>(const JsonNode& model)> read;
  Declaration predict;
};

// The columns that a request asks for, in the order of the options, of those that there are.
// Throws BadOption for a formula that cannot be read.
std::vector<frame::Wanted> wantedColumns(const Declaration& declaration, const void* request,
                                         const std::vector<std::string>& header = {});

// Throws BadOption: a required option that lacks, or options that do not go together.
void requireOptions(const Declaration& declaration, const void* request);

// Checks the request, fits, describes, and completes the report with what all analyses share:
// name, data, plan, rows left out. `data` holds the wanted columns, complete. New data that the
// request names are read by `withData`; what follows of them is added to the report.
// Throws engine::Refusal, BadOption, numerics::Cancelled, and what withData throws.
Fitted analyse(const Declaration& declaration, const frame::Frame& data, const void* request,
               numerics::Progress& progress, const Parts& parts = {},
               const WithData& withData = nullptr);

// The report with all parts of what was analysed with Parts::onRequest(). Of an analysis that
// outlives its data.
report::Report withRest(const Declaration& declaration, const Fitted& fitted, const void* request);

// What the options of other data say, in their order.
std::vector<std::string> otherData(const Declaration& declaration, const void* request);

// Where a refusal stands: the column that the request names for its role, the option where the
// role is no column.
struct Place {
  std::string option;  // "time"
  std::string column;  // "weeks"; empty where the refusal is of no column
};
Place placeOf(const Declaration& declaration, const void* request, const engine::Refusal& refusal);

// Every analysis, in the order of survmeth --help.
const std::vector<Declaration>& declarations();
const Declaration* findDeclaration(const std::string& name);  // or nullptr

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DECLARATION_H_
