// One call of an analysis, or of what follows a fit, from Python: settings first, then the columns
// that they ask for.
#ifndef PYTHON_CALL_H_
#define PYTHON_CALL_H_

#include <nanobind/nanobind.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/reading.h"
#include "analysis/savedFit.h"
#include "frame/memory.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::python {

// What a run leaves in Python's hands.
struct Done {
  std::shared_ptr<const report::Report> report;  // without the parts that are still to be described
  std::vector<std::string> tables;               // the ids of those that it may have
  analysis::SavedFit fit;  // what lasts of the result; no declaration where nothing does
  std::string whyNone;     // of an analysis whose results last, why this one does not
  std::function<report::Report()> describe;  // all parts; none where they are described

  // With all parts, which are described at the first call, without the interpreter's lock.
  const report::Report& whole() const;

 private:
  mutable std::shared_ptr<const report::Report> whole_;  // guarded by that lock
};

// What cannot be analysed becomes Python's survmeth.RefusedInput.
class Call {
 public:
  // Options of the analysis, and of reading those that data in memory have: missing, where.
  Call(const std::string& name, const nanobind::dict& settings);
  // Of new data, by a fit.
  Call(const analysis::SavedFit& fit, const nanobind::dict& settings);

  // Of the names of all columns, those that the request asks for.
  std::vector<std::string> wanted(const std::vector<std::string>& names) const;

  // Of the names of columns of new data, those that the request may ask for; `names` as above.
  std::vector<std::string> wantedOfNew(const std::vector<std::string>& names,
                                       const std::vector<std::string>& newNames) const;

  // The new data that an option names.
  void giveNew(const std::string& source, const std::vector<std::string>& names,
               const nanobind::list& columns, std::size_t rows);

  // Runs without the interpreter's lock.
  //
  // In     names     of all columns that the caller has, for messages
  //        columns   the wanted ones, as python/columns.h reads them
  //        tell      is called with the part of the work that is done, or None
  // Throws python_error: a refusal, an interrupt, what `tell` raised
  Done run(const std::string& source, const std::vector<std::string>& names,
           const nanobind::list& columns, std::size_t rows, const nanobind::object& tell) const;

 private:
  void set(const nanobind::dict& settings);
  Done work(const frame::Given& given, numerics::Progress& progress) const;
  void withNew(const analysis::Declaration& followUp, const void* request,
               const std::function<void(const frame::Frame&)>& use) const;

  const analysis::Declaration& declaration_;
  std::shared_ptr<void> request_;
  analysis::Reading reading_;
  std::optional<frame::Given> newData_;
};

}  // namespace survmeth::python

#endif  // PYTHON_CALL_H_
