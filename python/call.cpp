#include "python/call.h"

#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/lastingProgress.h"
#include "frame/choose.h"
#include "frame/expression.h"
#include "python/columns.h"
#include "python/settings.h"

namespace nb = nanobind;

namespace survmeth::python {
namespace {

using analysis::Declaration;
using analysis::Option;
using Clock = std::chrono::steady_clock;

// Input that cannot be analysed, with its place, for Python.
struct Refused {
  std::string option, column, text, expected;
  std::size_t row = engine::Refusal::kNone;
};

[[noreturn]] void raise(const Refused& refused) {
  const nb::object type = nb::module_::import_("survmeth._errors").attr("RefusedInput");
  const nb::object row = refused.row == engine::Refusal::kNone ? nb::none() : nb::cast(refused.row);
  const nb::object made = type(refused.option, refused.column, row, refused.text, refused.expected);
  PyErr_SetObject(type.ptr(), made.ptr());
  throw nb::python_error();
}

// The option that names the column, if only in a formula.
std::string optionOf(const Declaration& declaration, const void* request,
                     const std::string& column) {
  std::string formula;
  for (const Option& option : declaration.options) {
    if (formula.empty() && option.type == analysis::Type::kFormula && option.get(request)) {
      formula = option.name;
    }
    if (option.type != analysis::Type::kColumn && option.type != analysis::Type::kColumns) continue;
    const std::optional<analysis::Setting> setting = option.get(request);
    if (!setting) continue;
    if (const auto* name = std::get_if<std::string>(&*setting)) {
      if (*name == column) return option.name;
    } else if (const auto* names = std::get_if<std::vector<std::string>>(&*setting)) {
      if (std::find(names->begin(), names->end(), column) != names->end()) return option.name;
    }
  }
  return formula;
}

// Looks for interrupts and tells the caller how far the work is, both a few times a second. An
// exception of Python waits until the work has unwound.
class Watched : public numerics::Progress {
 public:
  explicit Watched(nb::object tell) : tell_(std::move(tell)) {}
  bool raised() const { return raised_; }

 private:
  static constexpr std::chrono::milliseconds kEvery{50};

  void show(double done) override { done_ = done; }
  bool stop() override {
    const Clock::time_point now = Clock::now();
    if (now < next_) return false;
    next_ = now + kEvery;
    const nb::gil_scoped_acquire lock;
    raised_ = PyErr_CheckSignals() != 0;
    if (!raised_ && !tell_.is_none()) {
      PyObject* answer = PyObject_CallFunction(tell_.ptr(), "d", done_);
      raised_ = answer == nullptr;
      Py_XDECREF(answer);
    }
    return raised_;
  }

  nb::object tell_;
  double done_ = 0;
  Clock::time_point next_ = Clock::now();
  bool raised_ = false;
};

const Declaration& declarationOf(const std::string& name) {
  const Declaration* found = analysis::findDeclaration(name);
  if (found == nullptr) throw nb::key_error(name.c_str());
  return *found;
}

}  // namespace

const report::Report& Done::whole() const {
  if (!describe) return *report;
  if (!whole_) {
    std::shared_ptr<const report::Report> made;
    {
      const nb::gil_scoped_release unlocked;
      made = std::make_shared<const report::Report>(describe());
    }
    // Another thread may have been first, and somebody have a view into its report.
    if (!whole_) whole_ = std::move(made);
  }
  return *whole_;
}

Call::Call(const std::string& name, const nb::dict& settings)
    : declaration_(declarationOf(name)), request_(declaration_.request()) {
  set(settings);
}

Call::Call(const analysis::SavedFit& fit, const nb::dict& settings)
    : declaration_(fit.declaration->lasting->predict), request_(declaration_.request()) {
  declaration_.follow(request_.get(), fit.lasting);
  set(settings);
}

void Call::set(const nb::dict& settings) {
  try {
    for (const auto& [key, value] : settings) {
      const auto option = nb::cast<std::string>(key);
      if (const Option* own = declaration_.find(option)) {
        own->set(request_.get(), settingOf(*own, value));
      } else if (const Option* shared = analysis::findReadingOption(option)) {
        shared->set(&reading_, settingOf(*shared, value));
      } else {
        throw nb::key_error(option.c_str());
      }
    }
    if (declaration_.check) declaration_.check(request_.get());
  } catch (const analysis::BadOption& bad) {
    raise({bad.option(), {}, bad.what(), {}});
  }
}

std::vector<std::string> Call::wanted(const std::vector<std::string>& names) const {
  std::vector<std::string> wanted;
  try {
    for (const frame::Wanted& want : analysis::wantedColumns(declaration_, request_.get(), names)) {
      wanted.push_back(want.name);
    }
    if (!reading_.where.empty()) {
      const frame::Condition condition = frame::parseCondition(reading_.where);
      for (const std::string& name : namesIn(condition.expression)) wanted.push_back(name);
    }
  } catch (const analysis::BadOption& bad) {
    raise({bad.option(), {}, bad.what(), {}});
  } catch (const frame::ExpressionError& wrong) {
    raise({"where", {}, analysis::withPlace(wrong), {}});
  }
  return wanted;
}

std::vector<std::string> Call::wantedOfNew(const std::vector<std::string>& names,
                                           const std::vector<std::string>& newNames) const {
  std::vector<std::string> may = wanted(names);
  for (const Option& option : declaration_.lasting->predict.options) {
    if (option.type != analysis::Type::kColumn) continue;
    const auto setting =
        declaration_.find(declaration_.newData.nameOf(option.name))->get(request_.get());
    if (setting) may.push_back(std::get<std::string>(*setting));
  }
  std::vector<std::string> wanted;
  for (const std::string& name : newNames) {
    if (std::find(may.begin(), may.end(), name) != may.end()) wanted.push_back(name);
  }
  return wanted;
}

void Call::giveNew(const std::string& source, const std::vector<std::string>& names,
                   const nb::list& columns, std::size_t rows) {
  newData_ = givenOf(source, names, columns, rows);
}

// What is refused of new data is of the option that names them, where no other is at fault.
void Call::withNew(const Declaration& followUp, const void* request,
                   const std::function<void(const frame::Frame&)>& use) const {
  const std::string& newData = declaration_.newData.option;
  if (!newData_) throw analysis::BadOption(newData, "is a text; expected a table of columns");
  try {
    const frame::Frame data = frame::frameOf(
        *newData_, analysis::wantedColumns(followUp, request, newData_->names), reading_.missing);
    try {
      use(data);
    } catch (const engine::Refusal& refusal) {
      const analysis::Place place = analysis::placeOf(followUp, request, refusal);
      const bool isRow = refusal.row() != engine::Refusal::kNone;
      throw Refused{place.option.empty() ? newData : declaration_.newData.nameOf(place.option),
                    place.column, refusal.what(), refusal.expected(),
                    isRow ? data.lines.line(refusal.row()) - 1 : engine::Refusal::kNone};
    }
  } catch (const frame::Unsuitable& bad) {
    throw Refused{newData, bad.column(), bad.text(), bad.expected(), bad.row()};
  }
}

Done Call::run(const std::string& source, const std::vector<std::string>& names,
               const nb::list& columns, std::size_t rows, const nb::object& tell) const {
  const frame::Given given = givenOf(source, names, columns, rows);
  Watched progress(tell);
  std::optional<Refused> refused;
  Done done;
  {
    const nb::gil_scoped_release unlocked;
    try {
      done = work(given, progress);
    } catch (const engine::Refusal& refusal) {
      const analysis::Place place = analysis::placeOf(declaration_, request_.get(), refusal);
      refused = {place.option, place.column, refusal.what(), refusal.expected(), refusal.row()};
    } catch (const Refused& elsewhere) {
      refused = elsewhere;
    } catch (const analysis::BadOption& bad) {
      refused = {bad.option(), {}, bad.what(), {}};
    } catch (const frame::Unsuitable& bad) {
      std::string option = optionOf(declaration_, request_.get(), bad.column());
      if (option.empty()) option = reading_.where.empty() ? "data" : "where";
      refused = {option, bad.column(), bad.text(), bad.expected(), bad.row()};
    } catch (const frame::ExpressionError& wrong) {
      refused = {"where", {}, analysis::withPlace(wrong), {}};
    } catch (const frame::Unreadable& bad) {  // the condition chooses no row
      refused = {"where", {}, bad.what(), {}};
    } catch (const numerics::Cancelled&) {
      // Only where an exception of Python waits.
    }
  }
  if (progress.raised()) throw nb::python_error();
  if (refused) raise(*refused);
  return done;
}

Done Call::work(const frame::Given& given, numerics::Progress& progress) const {
  const frame::Frame data =
      frame::frameOf(given, analysis::wantedColumns(declaration_, request_.get(), given.names),
                     reading_.missing, reading_.where);
  try {
    analysis::LastingProgress parts(progress, declaration_.lasting != nullptr);
    analysis::Fitted fitted = analysis::analyse(
        declaration_, data, request_.get(), parts.run,
        declaration_.outlivesData ? analysis::Parts::onRequest() : analysis::Parts(),
        [this](const std::string&, const Declaration& followUp, const void* request,
               const std::function<void(const frame::Frame&)>& use) {
          withNew(followUp, request, use);
        });
    analysis::echo(reading_, fitted.report);
    Done done;
    if (declaration_.lasting) {
      try {
        done.fit = {&declaration_, declaration_.lasting->of(data, fitted.result.get(),
                                                            request_.get(), parts.lasting)};
      } catch (const analysis::BadOption& bad) {
        done.whyNone = bad.what();
      }
    }
    done.tables = declaration_.tables;
    done.report = std::make_shared<const report::Report>(fitted.report);
    if (declaration_.outlivesData) {
      done.describe = [&declaration = declaration_, request = request_,
                       fitted = std::move(fitted)] {
        return analysis::withRest(declaration, fitted, request.get());
      };
    }
    return done;
  } catch (const engine::Refusal& refusal) {
    if (refusal.row() == engine::Refusal::kNone) throw;
    // Of the caller's rows, not of those that were kept.
    throw engine::Refusal(refusal.role(), data.lines.line(refusal.row()) - 1, refusal.what(),
                          refusal.column(), refusal.expected());
  }
}

}  // namespace survmeth::python
