// The core of survmeth in WebAssembly: runs a declared analysis on the bytes of a file and gives its
// report. What a person calls is made in survmeth.mjs from the declarations; nothing here knows what
// is analysed.
#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/declarationsJson.h"
#include "analysis/jsonTree.h"
#include "analysis/plan.h"
#include "analysis/reading.h"
#include "frame/place.h"
#include "frame/reader.h"
#include "numerics/progress.h"
#include "report/csv.h"
#include "report/html.h"
#include "report/json.h"
#include "report/text.h"

using emscripten::val;

namespace survmeth::web {
namespace {

constexpr const char* kVersion = SURVMETH_VERSION;

// Tells a function of JavaScript how far the work is; one that returns false ends it.
class Told : public numerics::Progress {
 public:
  explicit Told(val tell) : tell_(std::move(tell)) {}

 private:
  void show(double done) override { done_ = done; }
  bool stop() override { return !tell_.isNull() && tell_(done_).isFalse(); }

  val tell_;
  double done_ = 0;
};

// Input that cannot be analysed: the option at fault or that names the column at fault, empty where
// it is neither, and a sentence.
struct Refused {
  std::string option, text;
};

// A request with what a JSON object of options says.
struct Request {
  const analysis::Declaration& declaration;
  std::shared_ptr<void> options = declaration.request();
  analysis::Reading reading = {};

  void set(const std::string& json) {
    const analysis::JsonNode root = analysis::parseJson(json);
    for (const analysis::JsonMember& member : root.asObject("the options")) {
      if (analysis::setOption(declaration, options.get(), reading, member, member.name)) continue;
      throw analysis::BadOption(member.name, "there is no such option");
    }
    analysis::requireOptions(declaration, options.get());
  }
};

// What is refused of data, at its place in them.
Refused refusedIn(const frame::Frame& data, const analysis::Declaration& declaration,
                  const void* options, const engine::Refusal& refusal) {
  const analysis::Place place = analysis::placeOf(declaration, options, refusal);
  const std::size_t line =
      refusal.row() == engine::Refusal::kNone ? 0 : data.lines.line(refusal.row());
  return {place.option,
          frame::placed({data.source, line, place.column}, refusal.what(), refusal.expected())};
}

// The reader of new data beside the first, of the bytes that came along.
analysis::WithData withBytes(const Request& request, const val& bytes) {
  if (!bytes.isString()) return nullptr;
  return
      [&request, bytes](const std::string& name, const analysis::Declaration& followUp,
                        const void* options, const std::function<void(const frame::Frame&)>& use) {
        frame::Reading reading = request.reading.frame();
        reading.where.clear();
        const std::string text = bytes.as<std::string>();
        const frame::Frame data = frame::readText(
            text, name,
            [&](const std::vector<std::string>& header) {
              return analysis::wantedColumns(followUp, options, header);
            },
            reading);
        try {
          use(data);
        } catch (const engine::Refusal& refusal) {
          throw refusedIn(data, followUp, options, refusal);
        }
      };
}

report::Report reportOf(const Request& request, const frame::Frame& data,
                        const analysis::WithData& withData, Told& progress) {
  const void* options = request.options.get();
  try {
    report::Report report =
        analysis::analyse(request.declaration, data, options, progress, {}, withData).report;
    analysis::echo(request.reading, report);
    return report;
  } catch (const engine::Refusal& refusal) {
    throw refusedIn(data, request.declaration, options, refusal);
  }
}

report::Report performed(const std::string& name, const std::string& options,
                         const std::string& source, const std::string& bytes, const val& newBytes,
                         const val& tell) {
  const analysis::Declaration* declaration = analysis::findDeclaration(name);
  if (declaration == nullptr) throw Refused{{}, "there is no analysis " + name};
  Request request{*declaration};
  try {
    request.set(options);
    const frame::Frame data = frame::readText(
        bytes, source,
        [&](const std::vector<std::string>& header) {
          return analysis::wantedColumns(*declaration, request.options.get(), header);
        },
        request.reading.frame());
    Told progress(tell);
    return reportOf(request, data, withBytes(request, newBytes), progress);
  } catch (const analysis::BadOption& bad) {
    throw Refused{bad.option(), bad.option() + ": " + bad.what()};
  } catch (const analysis::JsonError& wrong) {
    throw Refused{{}, wrong.what()};
  } catch (const frame::ExpressionError& wrong) {
    throw Refused{"where", "where: " + analysis::withPlace(wrong)};
  } catch (const frame::Unreadable& bad) {
    throw Refused{{}, bad.what()};
  }
}

// The forms that are wanted; absent members are not.
val formsOf(const report::Report& report, const val& wanted) {
  val forms = val::object();
  const auto wants = [&wanted](const char* form) { return !wanted[form].isUndefined(); };
  const auto number = [&wanted](const char* form, const char* name, int otherwise) {
    const val value = wanted[form][name];
    return value.isNumber() ? value.as<int>() : otherwise;
  };
  if (wants("json")) {
    forms.set("json", report::toJson(report, {.version = kVersion,
                                              .figures = wanted["json"]["figures"].isTrue()}));
  }
  if (wants("text")) {
    const auto width = static_cast<std::size_t>(number("text", "width", 80));
    const bool notes = !wanted["text"]["notes"].isFalse();
    forms.set("text",
              report::toText(report, {.width = width,
                                      .digits = number("text", "digits", report::kEstimateDigits),
                                      .notes = notes}));
  }
  if (wants("html")) {
    forms.set("html", report::toHtml(
                          report, {.version = kVersion,
                                   .digits = number("html", "digits", report::kEstimateDigits)}));
  }
  if (wants("csv")) {
    val files = val::object();
    for (const auto& [name, contents] : report::toCsvFiles(report)) files.set(name, contents);
    forms.set("csv", files);
  }
  return forms;
}

// The forms, or an object whose member says why there are none: `refused`, `cancelled`, `failed`.
// No exception leaves the module.
val run(const std::string& name, const std::string& options, const std::string& source,
        const std::string& bytes, const val& newBytes, const val& wanted, const val& tell) {
  val outcome = val::object();
  try {
    return formsOf(performed(name, options, source, bytes, newBytes, tell), wanted);
  } catch (const Refused& refused) {
    val said = val::object();
    said.set("option", refused.option);
    said.set("text", refused.text);
    outcome.set("refused", said);
  } catch (const numerics::Cancelled&) {
    outcome.set("cancelled", true);
  } catch (const std::exception& failure) {
    outcome.set("failed", std::string(failure.what()));
  }
  return outcome;
}

std::string declarations() { return analysis::declarationsJson(kVersion); }

}  // namespace
}  // namespace survmeth::web

EMSCRIPTEN_BINDINGS(survmeth) {
  emscripten::function("run", &survmeth::web::run);
  emscripten::function("declarations", &survmeth::web::declarations);
}
