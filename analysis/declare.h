// An analysis is declared once; the faces (command line, plans, Python, browser) and the reference
// pages are made from the declaration (declaration.h).
//
//     Declaration gray() {
//       return declare<GrayOptions, GrayAnswer>("gray", "Gray's test of ...")
//           .column("time", &GrayOptions::time, Role::kTime, numbersFrom(0), "Column of times")
//           .required()
//           .number("rho", &GrayOptions::rho, anyNumber(), "Weight ...")
//           .example("survmeth gray data/pbc.csv --time time ...")
//           .figure("incidence", figureOf)  // (const GrayAnswer&, const GrayOptions&) -> Figure
//           .fit(fitGray)           // (const Frame&, const GrayOptions&, Progress&) -> GrayAnswer
//           .describe(describeGray);  // (const GrayAnswer&, const GrayOptions&) -> Report
//     }
//
// and one line in analysis/all.cpp.
#ifndef ANALYSIS_DECLARE_H_
#define ANALYSIS_DECLARE_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/option.h"
#include "frame/frame.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::analysis {

inline Range anyNumber() { return {.expected = "a number"}; }
Range above(double least);
Range between(double least, double most);  // both excluded
Range wholeFrom(double least);

inline frame::Wanted numbers() { return {.name = {}, .cells = frame::Cells::kNumbers}; }
inline frame::Wanted numbersFrom(double least) {
  return {.name = {}, .cells = frame::Cells::kNumbers, .least = least};
}
inline frame::Wanted labels() { return {.name = {}, .cells = frame::Cells::kText}; }
inline frame::Wanted either() { return {.name = {}, .cells = frame::Cells::kEither}; }

template <class Request, class Result>
class Declaring {
 public:
  using Fit = std::function<Result(const frame::Frame&, const Request&, numerics::Progress&)>;
  template <class Part>
  using Describe = std::function<Part(const Result&, const Request&)>;

  Declaring(std::string name, std::string summary) {
    made_.name = std::move(name);
    made_.summary = std::move(summary);
    made_.request = [] { return std::static_pointer_cast<void>(std::make_shared<Request>()); };
  }

  Declaring& column(const char* name, std::string Request::*member, engine::Role role,
                    frame::Wanted wanted, const char* help) {
    Option& option = add(name, Type::kColumn, role, "COL", help, member);
    option.wanted = std::move(wanted);
    return *this;
  }
  Declaring& columns(const char* name, std::vector<std::string> Request::*member, engine::Role role,
                     frame::Wanted wanted, const char* help) {
    Option& option = add(name, Type::kColumns, role, "COL,COL", help, member);
    option.wanted = std::move(wanted);
    return *this;
  }
  // Columns of labels whose combinations are meant; one alone is a text in the plan.
  Declaring& crossed(const char* name, std::vector<std::string> Request::*member, engine::Role role,
                     const char* help) {
    columns(name, member, role, analysis::labels(), help);
    made_.options.back().get = [member](const void* request) -> std::optional<Setting> {
      const std::vector<std::string>& names = static_cast<const Request*>(request)->*member;
      if (names.empty()) return std::nullopt;
      return names.size() == 1 ? Setting(names.front()) : Setting(names);
    };
    return *this;
  }
  Declaring& flag(const char* name, bool Request::*member, const char* help) {
    add(name, Type::kFlag, engine::Role::kValue, "", help, member);
    return *this;
  }
  // The level of limits and tests.
  Declaring& alpha(double Request::*member) {
    return number("alpha", member, between(0, 1), "Significance level; intervals have level 1 - A",
                  "A")
        .without("0.05");
  }
  // A flag that asks for the table `table`.
  Declaring& table(const char* name, bool Request::*member, const char* table, const char* help) {
    add(name, Type::kFlag, engine::Role::kValue, "FILE", help, member).table = table;
    return *this;
  }
  Declaring& number(const char* name, double Request::*member, Range range, const char* help,
                    const char* valueName = "X") {
    add(name, Type::kNumber, engine::Role::kValue, valueName, help, member).range =
        std::move(range);
    return *this;
  }
  Declaring& number(const char* name, std::optional<double> Request::*member, Range range,
                    const char* help, const char* valueName = "X") {
    add(name, Type::kNumber, engine::Role::kValue, valueName, help, member).range =
        std::move(range);
    return *this;
  }
  Declaring& numbers(const char* name, std::vector<double> Request::*member, Range range,
                     const char* help, const char* valueName = "A,B,C") {
    add(name, Type::kNumbers, engine::Role::kValue, valueName, help, member).range =
        std::move(range);
    return *this;
  }
  Declaring& text(const char* name, std::string Request::*member, engine::Role role,
                  const char* help, const char* valueName = "TEXT") {
    add(name, Type::kText, role, valueName, help, member);
    return *this;
  }
  // Names columns by itself; the declaration asks for them with adjustColumns().
  Declaring& formula(const char* name, std::string Request::*member, const char* help) {
    add(name, Type::kFormula, engine::Role::kFormula, "FORMULA", help, member);
    return *this;
  }
  // Names other data than the first.
  Declaring& data(const char* name, std::string Request::*member, const char* help) {
    add(name, Type::kData, engine::Role::kValue, "FILE", help, member);
    return *this;
  }
  // Labels of the column that option `of` names: never taken for missing there.
  Declaring& label(const char* name, std::string Request::*member, const char* of, const char* help,
                   const char* valueName = "LABEL") {
    add(name, Type::kText, engine::Role::kLevel, valueName, help, member).labelsOf = of;
    return *this;
  }
  Declaring& labels(const char* name, std::vector<std::string> Request::*member, const char* of,
                    const char* help, const char* valueName = "A,B") {
    add(name, Type::kTexts, engine::Role::kLevel, valueName, help, member).labelsOf = of;
    return *this;
  }
  Declaring& texts(const char* name, std::vector<std::string> Request::*member, engine::Role role,
                   const char* help, const char* valueName = "A,B") {
    add(name, Type::kTexts, role, valueName, help, member);
    return *this;
  }
  // `choices` pairs each word with its value; the member's default is the default.
  template <class Enum>
  Declaring& choice(const char* name, Enum Request::*member,
                    std::vector<std::pair<std::string, Enum>> choices, const char* help) {
    Option& option = push(name, Type::kChoice, engine::Role::kValue, "KIND", help);
    const auto wordOf = [choices](Enum value) {
      for (const auto& [word, its] : choices) {
        if (its == value) return word;
      }
      return std::string();
    };
    const Enum standard = Request{}.*member;
    for (const auto& [word, value] : choices) option.choices.push_back(word);
    option.defaultText = wordOf(standard);
    option.set = [member, choices](void* request, const Setting& setting) {
      for (const auto& [word, value] : choices) {
        if (word == std::get<std::string>(setting)) static_cast<Request*>(request)->*member = value;
      }
    };
    option.get = [member, wordOf](const void* request) -> std::optional<Setting> {
      return Setting(wordOf(static_cast<const Request*>(request)->*member));
    };
    return *this;
  }

  // Of the option just added.
  Declaring& required() {
    made_.options.back().required = true;
    return *this;
  }
  Declaring& without(const char* text) {  // what holds where it is not given
    made_.options.back().defaultText = text;
    return *this;
  }

  // It is part of the plan only where it has a meaning.
  Declaring& plannedWhere(std::function<bool(const Request&)> has) {
    Option& option = made_.options.back();
    option.get = [has = std::move(has),
                  get = option.get](const void* request) -> std::optional<Setting> {
      return has(*static_cast<const Request*>(request)) ? get(request) : std::nullopt;
    };
    return *this;
  }

  Declaring& details(const char* text) {
    made_.details = text;
    return *this;
  }
  Declaring& example(const char* call) {
    made_.examples.emplace_back(call);
    return *this;
  }
  // The ids of the tables and figures that it may give, in the order of the report.
  Declaring& tables(const std::vector<std::string>& ids) {
    made_.tables.insert(made_.tables.end(), ids.begin(), ids.end());
    return *this;
  }
  Declaring& figures(const std::vector<std::string>& ids) {
    made_.figures.insert(made_.figures.end(), ids.begin(), ids.end());
    return *this;
  }
  // A table as long as the data, which is described where files are wanted or a person asks to see
  // it (`shown`). There may be none.
  Declaring& longTable(const char* id, Describe<std::optional<report::Table>> of,
                       std::function<bool(const Request&)> shown = nullptr) {
    longTables_.push_back({std::move(of), std::move(shown)});
    return tables({id});
  }
  // A figure, which is described where one is wanted. There may be none.
  Declaring& figure(const char* id, Describe<std::optional<report::Figure>> of) {
    figures_.push_back(std::move(of));
    return figures({id});
  }
  Declaring& leastRows(std::size_t rows) {
    return leastRows([rows](const Request&) { return rows; });
  }
  Declaring& leastRows(std::function<std::size_t(const Request&)> rows) {
    made_.leastRows = [rows = std::move(rows)](const void* request) {
      return rows(*static_cast<const Request*>(request));
    };
    return *this;
  }
  Declaring& check(std::function<void(const Request&)> check) {
    made_.check = [check = std::move(check)](const void* request) {
      check(*static_cast<const Request*>(request));
    };
    return *this;
  }
  Declaring& adjustColumns(std::function<void(const Request&, const std::vector<std::string>&,
                                              std::vector<frame::Wanted>&)>
                               adjust) {
    made_.adjustColumns = [adjust = std::move(adjust)](const void* request,
                                                       const std::vector<std::string>& header,
                                                       std::vector<frame::Wanted>& wanted) {
      adjust(*static_cast<const Request*>(request), header, wanted);
    };
    return *this;
  }
  Declaring& completeRows(
      std::function<std::vector<std::uint32_t>(const frame::Frame&, const Request&)> rows) {
    made_.completeRows = [rows = std::move(rows)](const frame::Frame& data, const void* request) {
      return rows(data, *static_cast<const Request*>(request));
    };
    return *this;
  }
  // What lasts of a result, and the follow-up that takes it.
  template <class Saved>
  Declaring& save(std::function<Saved(const frame::Frame&, const Result&, const Request&)> of,
                  std::function<void(const Saved&, report::JsonWriter&)> write,
                  std::function<Saved(const JsonNode&)> read, Declaration predict) {
    auto lasting = std::make_shared<Lasting>();
    lasting->of = [of = std::move(of)](const frame::Frame& data, const void* result,
                                       const void* request) -> std::shared_ptr<const void> {
      return std::make_shared<const Saved>(
          of(data, *static_cast<const Result*>(result), *static_cast<const Request*>(request)));
    };
    lasting->write = [write = std::move(write)](const void* saved, report::JsonWriter& json) {
      write(*static_cast<const Saved*>(saved), json);
    };
    lasting->read = [read = std::move(read)](const JsonNode& model) -> std::shared_ptr<const void> {
      return std::make_shared<const Saved>(read(model));
    };
    lasting->predict = std::move(predict);
    made_.lasting = std::move(lasting);
    return *this;
  }
  // The option just added names new data, to which the follow-up is applied; `request` makes its
  // request, `names` are NewData's.
  template <class FollowUp>
  Declaring& newData(
      std::function<std::shared_ptr<FollowUp>(const frame::Frame&, const Result&, const Request&)>
          request,
      std::vector<std::pair<std::string, std::string>> names) {
    made_.newData.option = made_.options.back().name;
    made_.newData.names = std::move(names);
    made_.newData.request = [request = std::move(request)](const frame::Frame& data,
                                                           const void* result, const void* own) {
      return std::static_pointer_cast<void>(
          request(data, *static_cast<const Result*>(result), *static_cast<const Request*>(own)));
    };
    return *this;
  }
  // Of a follow-up: where its request keeps what lasts.
  template <class Saved>
  Declaring& follows(std::shared_ptr<const Saved> Request::*member) {
    made_.follow = [member](void* request, std::shared_ptr<const void> lasting) {
      static_cast<Request*>(request)->*member =
          std::static_pointer_cast<const Saved>(std::move(lasting));
    };
    return *this;
  }
  Declaring& fit(Fit fit) {
    fit_ = std::move(fit);
    return *this;
  }
  // Ends the declaration.
  Declaration describe(Describe<report::Report> describe) {
    made_.run = [fit = std::move(fit_), describe = std::move(describe),
                 longTables = std::move(longTables_),
                 figures = std::move(figures_)](const frame::Frame& data, const void* request,
                                                numerics::Progress& progress, const Parts& parts) {
      const Request& typed = *static_cast<const Request*>(request);
      auto result = std::make_shared<const Result>(fit(data, typed, progress));
      report::Report report = describe(*result, typed);
      for (const LongTable& each : longTables) {
        const bool shown = each.shown && each.shown(typed);
        if (!shown && !parts.files) continue;
        std::optional<report::Table> table = each.of(*result, typed);
        if (!table) continue;
        table->display = shown ? report::Display::kAlways : report::Display::kFilesOnly;
        report.tables.push_back(std::move(*table));
      }
      for (report::Table& table : report.tables) table.hold(result);
      for (const auto& each : figures) {
        if (!parts.figures) break;
        if (auto figure = each(*result, typed)) report.figures.push_back(std::move(*figure));
      }
      return Fitted{std::move(result), std::move(report)};
    };
    return std::move(made_);
  }

 private:
  Option& push(const char* name, Type type, engine::Role role, const char* valueName,
               const char* help) {
    Option& option = made_.options.emplace_back();
    option.name = name;
    option.type = type;
    option.role = role;
    option.valueName = valueName;
    option.help = help;
    return option;
  }

  // An option whose member holds the setting as it is. Numbers and choices are always part of the
  // plan; of the others what equals the default is not.
  template <class Value>
  Option& add(const char* name, Type type, engine::Role role, const char* valueName,
              const char* help, Value Request::*member) {
    Option& option = push(name, type, role, valueName, help);
    option.set = [member](void* request, const Setting& setting) {
      static_cast<Request*>(request)->*member = std::get<Plain<Value>>(setting);
    };
    option.get = [member,
                  standard = Request{}.*member](const void* request) -> std::optional<Setting> {
      const Value& value = static_cast<const Request*>(request)->*member;
      if (!std::is_same_v<Value, double> && value == standard) return std::nullopt;
      if constexpr (std::is_same_v<Value, std::optional<double>>) {
        return value ? std::optional<Setting>(*value) : std::nullopt;
      } else {
        return Setting(value);
      }
    };
    return option;
  }
  template <class Value>
  using Plain = std::conditional_t<std::is_same_v<Value, std::optional<double>>, double, Value>;

  struct LongTable {
    Describe<std::optional<report::Table>> of;
    std::function<bool(const Request&)> shown;
  };

  Declaration made_;
  Fit fit_;
  std::vector<LongTable> longTables_;
  std::vector<Describe<std::optional<report::Figure>>> figures_;
};

template <class Request, class Result>
Declaring<Request, Result> declare(std::string name, std::string summary) {
  return Declaring<Request, Result>(std::move(name), std::move(summary));
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DECLARE_H_
