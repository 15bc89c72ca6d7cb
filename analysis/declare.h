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

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/declaration.h"
#include "analysis/declareOptions.h"
#include "frame/frame.h"
#include "numerics/partOfProgress.h"
#include "numerics/progress.h"
#include "report/report.h"

namespace survmeth::analysis {

template <class Request, class Result>
class Declaring : public DeclaringOptions<Declaring<Request, Result>, Request> {
  using DeclaringOptions<Declaring, Request>::made_;

 public:
  using Fit = std::function<Result(const frame::Frame&, const Request&, numerics::Progress&)>;
  template <class Part>
  using Describe = std::function<Part(const Result&, const Request&)>;
  // Of a description that takes long.
  template <class Part>
  using Work = std::function<Part(const Result&, const Request&, numerics::Progress&)>;

  Declaring(std::string name, std::string summary) {
    made_.name = std::move(name);
    made_.summary = std::move(summary);
    made_.request = [] { return std::static_pointer_cast<void>(std::make_shared<Request>()); };
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
    longTables_.push_back({quick(std::move(of)), false, std::move(shown)});
    return tables({id});
  }
  Declaring& longTable(const char* id, Work<std::optional<report::Table>> of) {
    longTables_.push_back({std::move(of), true, nullptr});
    return tables({id});
  }
  // A figure, which is described where one is wanted. There may be none.
  Declaring& figure(const char* id, Describe<std::optional<report::Figure>> of) {
    figures_.push_back({quick(std::move(of)), false});
    return figures({id});
  }
  Declaring& figure(const char* id, Work<std::optional<report::Figure>> of) {
    figures_.push_back({std::move(of), true});
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
  Declaring& save(
      std::function<Saved(const frame::Frame&, const Result&, const Request&, numerics::Progress&)>
          of,
      std::function<void(const Saved&, report::JsonWriter&)> write,
      std::function<Saved(const JsonNode&)> read, Declaration predict) {
    auto lasting = std::make_shared<Lasting>();
    lasting->of = [of = std::move(of)](
                      const frame::Frame& data, const void* result, const void* request,
                      numerics::Progress& progress) -> std::shared_ptr<const void> {
      return std::make_shared<const Saved>(of(data, *static_cast<const Result*>(result),
                                              *static_cast<const Request*>(request), progress));
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
  Declaring& newData(std::function<std::shared_ptr<FollowUp>(const frame::Frame&, const Result&,
                                                             const Request&, numerics::Progress&)>
                         request,
                     std::vector<std::pair<std::string, std::string>> names) {
    made_.newData.option = made_.options.back().name;
    made_.newData.names = std::move(names);
    made_.newData.request = [request = std::move(request)](const frame::Frame& data,
                                                           const void* result, const void* own,
                                                           numerics::Progress& progress) {
      return std::static_pointer_cast<void>(request(data, *static_cast<const Result*>(result),
                                                    *static_cast<const Request*>(own), progress));
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
  // Its result owns all that its parts are made of.
  Declaring& outlivesData() {
    made_.outlivesData = true;
    return *this;
  }
  // Ends the declaration.
  Declaration describe(Describe<report::Report> describe) {
    made_.addParts = [longTables = longTables_, figures = figures_](
                         const std::shared_ptr<const void>& held, const void* request,
                         const Parts& parts, numerics::Progress& progress, report::Report& report) {
      const Request& typed = *static_cast<const Request*>(request);
      const Result& result = *static_cast<const Result*>(held.get());
      const std::size_t works = std::max<std::size_t>(1, worksOf(longTables, figures, parts));
      std::size_t done = 0;
      const auto next = [&](bool isWork) {
        const std::size_t from = done;
        done += isWork ? 1 : 0;
        return numerics::PartOfProgress(progress, from, done, works);
      };
      for (const LongTable& each : longTables) {
        const bool shown = each.shown && each.shown(typed);
        if (shown ? !parts.shown : !parts.files) continue;
        numerics::PartOfProgress part = next(each.isWork);
        std::optional<report::Table> table = each.of(result, typed, part);
        if (!table) continue;
        table->display = shown ? report::Display::kAlways : report::Display::kFilesOnly;
        table->hold(held);
        report.tables.push_back(std::move(*table));
      }
      for (const LongFigure& each : figures) {
        if (!parts.figures) break;
        numerics::PartOfProgress part = next(each.isWork);
        if (auto figure = each.of(result, typed, part)) {
          report.figures.push_back(std::move(*figure));
        }
      }
    };
    made_.run = [fit = std::move(fit_), describe = std::move(describe),
                 longTables = std::move(longTables_), figures = std::move(figures_),
                 addParts = made_.addParts](const frame::Frame& data, const void* request,
                                            numerics::Progress& progress, const Parts& parts) {
      const Request& typed = *static_cast<const Request*>(request);
      // Each part that takes long counts for a quarter of the fit.
      constexpr std::size_t kFit = 4;
      const std::size_t all = kFit + worksOf(longTables, figures, parts);
      numerics::PartOfProgress fitting(progress, 0, kFit, all), adding(progress, kFit, all, all);
      auto result = std::make_shared<const Result>(fit(data, typed, fitting));
      report::Report report = describe(*result, typed);
      for (report::Table& table : report.tables) table.hold(result);
      addParts(result, request, parts, adding, report);
      return Fitted{std::move(result), std::move(report)};
    };
    return std::move(made_);
  }

 private:
  struct LongTable {
    Work<std::optional<report::Table>> of;
    bool isWork;
    std::function<bool(const Request&)> shown;
  };
  struct LongFigure {
    Work<std::optional<report::Figure>> of;
    bool isWork;
  };

  template <class Part>
  static Work<Part> quick(Describe<Part> of) {
    return [of = std::move(of)](const Result& result, const Request& request, numerics::Progress&) {
      return of(result, request);
    };
  }

  // How many of the wanted parts take long.
  static std::size_t worksOf(const std::vector<LongTable>& tables,
                             const std::vector<LongFigure>& figures, const Parts& parts) {
    std::size_t works = 0;
    for (const LongTable& each : tables) works += each.isWork && parts.files ? 1 : 0;
    for (const LongFigure& each : figures) works += each.isWork && parts.figures ? 1 : 0;
    return works;
  }

  Fit fit_;
  std::vector<LongTable> longTables_;
  std::vector<LongFigure> figures_;
};

template <class Request, class Result>
Declaring<Request, Result> declare(std::string name, std::string summary) {
  return Declaring<Request, Result>(std::move(name), std::move(summary));
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DECLARE_H_
