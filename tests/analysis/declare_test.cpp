// What every declared analysis has in common, on an analysis that adds a column up.
#include "analysis/declare.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "analysis/digest.h"
#include "report/build.h"
#include "report/json.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)
using engine::Refusal;
using engine::Role;

enum class Rounding { kNone, kDown };
struct SumRequest {
  std::string time, group;
  std::vector<std::string> covariates;
  double scale = 1;
  std::optional<double> floor;
  bool twice = false;
  double pace = 1;
  Rounding rounding = Rounding::kNone;
};
struct Sum {
  double value = 0;
};

Sum fitSum(const frame::Frame& data, const SumRequest& request, numerics::Progress& progress) {
  progress.at(0);
  const auto cells = data.numbers(request.time)->numbers;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (cells[i] == 13) throw Refusal(Role::kTime, i, "13 brings bad luck");
  }
  return {request.scale * std::accumulate(cells.begin(), cells.end(), 0.0)};
}

report::Report describeSum(const Sum& sum, const SumRequest&) {
  report::Report report;
  report.facts = {{"sum", "Sum", report::Kind::kEstimate, sum.value}};
  report.notes = {{"own", "a note of its own", {}}};
  return report;
}

analysis::Declaration sumDeclaration() {
  return analysis::declare<SumRequest, Sum>("sum", "Adds a column up")
      .column("time", &SumRequest::time, Role::kTime, analysis::numbersFrom(0), "Column")
      .required()
      .column("group", &SumRequest::group, Role::kGroup, analysis::labels(), "Groups")
      .columns("covariates", &SumRequest::covariates, Role::kCovariate, analysis::either(), "More")
      .number("scale", &SumRequest::scale, analysis::above(0), "Factor")
      .number("floor", &SumRequest::floor, analysis::anyNumber(), "Least")
      .flag("twice", &SumRequest::twice, "Adds twice")
      .number("pace", &SumRequest::pace, analysis::anyNumber(), "Of the second time")
      .plannedWhere([](const SumRequest& request) { return request.twice; })
      .choice("rounding", &SumRequest::rounding,
              {{"none", Rounding::kNone}, {"down", Rounding::kDown}}, "How to round")
      .leastRows(2)
      .check([](const SumRequest& request) {
        if (request.twice && request.scale == 2) {
          throw analysis::BadOption("twice", "excludes --scale 2");
        }
      })
      .fit(fitSum)
      .describe(describeSum);
}

frame::Frame dataOf(std::vector<double> times) {
  frame::Frame data;
  data.source = "memory";
  data.rows = data.rowsRead = times.size();
  data.columns = {frame::numberColumn("t", std::move(times))};
  return data;
}

SumRequest requestOf(const std::string& time) {
  SumRequest request;
  request.time = time;
  return request;
}

TEST(Analyse, TheReportHoldsPlanDataAndNotes) {
  SumRequest request = requestOf("t");
  request.scale = 0.5;
  request.covariates = {"a", "b"};
  frame::Frame data = dataOf({1, 2, 3});
  data.rowsRead = 5;
  data.columns[0].missing = 2;
  numerics::Progress progress;
  const auto fitted = analysis::analyse(sumDeclaration(), data, &request, progress);
  const report::Report& report = fitted.report;
  EXPECT_EQ(static_cast<const Sum*>(fitted.result.get())->value, 3);
  EXPECT_EQ(report.analysis, "sum");
  EXPECT_EQ(report.data.name, "memory");
  EXPECT_EQ(report.data.rowsRead, 5u);
  EXPECT_EQ(report.data.rowsUsed, 3u);
  EXPECT_EQ(report.data.digest, analysis::digest(data));
  ASSERT_EQ(report.plan.size(), 4u);
  EXPECT_EQ(report.plan[0].name, "time");
  EXPECT_EQ(report.plan[1].name, "covariates");
  EXPECT_EQ(report.plan[2].name, "scale");
  EXPECT_EQ(std::get<double>(report.plan[2].setting), 0.5);
  ASSERT_EQ(report.notes.size(), 2u);
  EXPECT_EQ(report.notes[0].code, "rowsLeftOut");
  EXPECT_EQ(report.notes[0].text, "2 of 5 rows left out: missing in \"t\" (2)");
  EXPECT_EQ(report.notes[0].names, std::vector<std::string>{"t"});
}

TEST(Analyse, NumbersAndChoicesAreAlwaysPartOfThePlan) {
  const SumRequest request = requestOf("t");
  numerics::Progress progress;
  const auto fitted = analysis::analyse(sumDeclaration(), dataOf({1, 2}), &request, progress);
  ASSERT_EQ(fitted.report.plan.size(), 3u);
  EXPECT_EQ(fitted.report.plan[0].name, "time");
  EXPECT_EQ(fitted.report.plan[1].name, "scale");
  EXPECT_EQ(std::get<double>(fitted.report.plan[1].setting), 1);
  EXPECT_EQ(fitted.report.plan[2].name, "rounding");
  EXPECT_EQ(std::get<std::string>(fitted.report.plan[2].setting), "none");
}

TEST(Analyse, WhatIsAsUsualIsMarkedInThePlan) {
  SumRequest request = requestOf("t");
  request.scale = 0.5;
  numerics::Progress progress;
  const auto fitted = analysis::analyse(sumDeclaration(), dataOf({1, 2}), &request, progress);
  ASSERT_EQ(fitted.report.plan.size(), 3u);
  EXPECT_FALSE(fitted.report.plan[0].usual);  // time
  EXPECT_FALSE(fitted.report.plan[1].usual);  // scale
  EXPECT_TRUE(fitted.report.plan[2].usual);   // rounding
}

TEST(Analyse, WhatIsPlannedForAnotherSettingsSakeIsAsUsualNonetheless) {
  SumRequest request = requestOf("t");
  request.twice = true;
  numerics::Progress progress;
  const auto fitted = analysis::analyse(sumDeclaration(), dataOf({1, 2}), &request, progress);
  ASSERT_EQ(fitted.report.plan.size(), 5u);
  EXPECT_EQ(fitted.report.plan[2].name, "twice");
  EXPECT_FALSE(fitted.report.plan[2].usual);
  EXPECT_EQ(fitted.report.plan[3].name, "pace");
  EXPECT_TRUE(fitted.report.plan[3].usual);
}

// An analysis of a short table, a long one, a figure and, last, another short table.
analysis::Declaration partsDeclaration() {
  const auto table = [](const char* id, const Sum& sum) {
    return report::tableOf(
        id, "", {report::borrowedColumn("value", "", report::Kind::kEstimate, {&sum.value, 1})});
  };
  return analysis::declare<SumRequest, Sum>("parts", "Has all parts")
      .column("time", &SumRequest::time, Role::kTime, analysis::numbers(), "Column")
      .flag("twice", &SumRequest::twice, "Shows the long table")
      .tables({"short"})
      .longTable(
          "long", [table](const Sum& sum, const SumRequest&) { return table("long", sum); },
          [](const SumRequest& request) { return request.twice; })
      .tables({"last"})
      .figure("drawn",
              [](const Sum&, const SumRequest& request) -> std::optional<report::Figure> {
                if (request.scale == 3) return {};
                return report::figureOf("drawn", "", "", {});
              })
      .fit(fitSum)
      .describe([table](const Sum& sum, const SumRequest&) {
        report::Report report;
        report.tables = {table("last", sum), table("short", sum)};
        return report;
      });
}

report::Report partsOf(const SumRequest& request, const analysis::Parts& parts) {
  numerics::Progress progress;
  return analysis::analyse(partsDeclaration(), dataOf({1, 2}), &request, progress, parts).report;
}

std::vector<std::string> idsOf(const report::Report& report) {
  std::vector<std::string> ids;
  for (const report::Table& table : report.tables) ids.push_back(table.id);
  for (const report::Figure& figure : report.figures) ids.push_back(figure.id);
  return ids;
}

using Ids = std::vector<std::string>;

TEST(Parts, TablesStandInTheOrderOfTheirDeclaration) {
  EXPECT_EQ(idsOf(partsOf(requestOf("t"), {})), (Ids{"short", "long", "last", "drawn"}));
}

TEST(Parts, WhatNobodyTakesIsNotDescribed) {
  EXPECT_EQ(idsOf(partsOf(requestOf("t"), {.files = false, .figures = false})),
            (Ids{"short", "last"}));
  EXPECT_EQ(idsOf(partsOf(requestOf("t"), {.files = false})), (Ids{"short", "last", "drawn"}));
}

TEST(Parts, ThatAreDescribedLaterMakeTheReportThatHasThemAtOnce) {
  analysis::Declaration declaration = partsDeclaration();
  for (const bool twice : {false, true}) {
    SumRequest request = requestOf("t");
    request.twice = twice;
    numerics::Progress progress;
    const auto early = analysis::analyse(declaration, dataOf({1, 2}), &request, progress,
                                         analysis::Parts::onRequest());
    EXPECT_EQ(idsOf(early.report), twice ? (Ids{"short", "long", "last"}) : (Ids{"short", "last"}));
    EXPECT_TRUE(early.report.data.digest.empty());
    EXPECT_THROW(analysis::withRest(declaration, early, &request), std::logic_error);
    declaration.outlivesData = true;
    EXPECT_EQ(report::toJson(analysis::withRest(declaration, early, &request), {.figures = true}),
              report::toJson(partsOf(request, {}), {.figures = true}));
    declaration.outlivesData = false;
  }
}

TEST(Parts, ALongTableThatIsAskedForIsShown) {
  SumRequest request = requestOf("t");
  EXPECT_EQ(partsOf(request, {}).tables[1].display, report::Display::kFilesOnly);
  request.twice = true;
  const report::Report report = partsOf(request, {.files = false});
  ASSERT_EQ(report.tables.size(), 3u);
  EXPECT_EQ(report.tables[1].display, report::Display::kAlways);
}

TEST(Parts, AFigureMayNotExist) {
  SumRequest request = requestOf("t");
  request.scale = 3;
  EXPECT_TRUE(partsOf(request, {}).figures.empty());
}

TEST(Parts, ATableKeepsTheResultThatItBorrowsFrom) {
  const report::Table table = partsOf(requestOf("t"), {}).tables[1];
  ASSERT_EQ(table.columns[0].numbers().size(), 1u);
  EXPECT_EQ(table.columns[0].numbers()[0], 3);
}

TEST(Parts, WhatIsNotDeclaredIsAMistake) {
  const analysis::Declaration undeclared =
      analysis::declare<SumRequest, Sum>("wrong", "Forgets to declare")
          .fit(fitSum)
          .describe([](const Sum&, const SumRequest&) {
            report::Report report;
            report.tables = {report::tableOf("surprise", "", {})};
            return report;
          });
  const SumRequest request = requestOf("t");
  numerics::Progress progress;
  try {
    analysis::analyse(undeclared, dataOf({1, 2}), &request, progress);
    FAIL() << "was taken";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "wrong does not declare surprise");
  }
}

TEST(Analyse, AMissingRequiredOptionIsNamed) {
  const SumRequest request;
  numerics::Progress progress;
  try {
    analysis::analyse(sumDeclaration(), dataOf({1, 2}), &request, progress);
    FAIL() << "not refused";
  } catch (const analysis::BadOption& bad) {
    EXPECT_EQ(bad.option(), "time");
    EXPECT_STREQ(bad.what(), "is missing; expected COL");
  }
}

TEST(Analyse, OptionsThatDoNotGoTogetherAreRefused) {
  SumRequest request = requestOf("t");
  request.twice = true;
  request.scale = 2;
  numerics::Progress progress;
  EXPECT_THROW(analysis::analyse(sumDeclaration(), dataOf({1, 2}), &request, progress),
               analysis::BadOption);
}

TEST(Analyse, TooFewRowsAreRefusedInWords) {
  const SumRequest request = requestOf("t");
  numerics::Progress progress;
  const auto words = [&](std::vector<double> times) {
    try {
      analysis::analyse(sumDeclaration(), dataOf(std::move(times)), &request, progress);
    } catch (const Refusal& refusal) {
      return std::string(refusal.what()) + "; expected " + refusal.expected();
    }
    return std::string("taken");
  };
  EXPECT_EQ(words({}), "there are no rows of data; expected at least 2 complete rows");
  EXPECT_EQ(words({1}), "there is only 1 row; expected at least 2 complete rows");
}

TEST(Analyse, ACancelledRunUnwinds) {
  class Never : public numerics::Progress {
    bool stop() override { return true; }
  };
  const SumRequest request = requestOf("t");
  Never progress;
  EXPECT_THROW(analysis::analyse(sumDeclaration(), dataOf({1, 2}), &request, progress),
               numerics::Cancelled);
}

TEST(PlaceOf, ARefusalIsPlacedByItsRole) {
  SumRequest request = requestOf("weeks");
  request.covariates = {"age", "sex"};
  const analysis::Declaration sum = sumDeclaration();
  const auto time = analysis::placeOf(sum, &request, Refusal(Role::kTime, 3, "bad"));
  EXPECT_EQ(time.option, "time");
  EXPECT_EQ(time.column, "weeks");
  const auto second = analysis::placeOf(sum, &request, Refusal(Role::kCovariate, 3, "bad", 1));
  EXPECT_EQ(second.column, "sex");
  const auto whole = analysis::placeOf(sum, &request, Refusal(Role::kCovariate, 3, "bad"));
  EXPECT_EQ(whole.option, "covariates");
  EXPECT_EQ(whole.column, "");
  const auto unknown = analysis::placeOf(sum, &request, Refusal(Role::kGroup, 3, "bad"));
  EXPECT_EQ(unknown.option, "");
}

TEST(WantedColumns, FollowTheOptionsThatNameColumns) {
  SumRequest request = requestOf("weeks");
  request.covariates = {"age"};
  const auto wanted = analysis::wantedColumns(sumDeclaration(), &request);
  ASSERT_EQ(wanted.size(), 2u);
  EXPECT_EQ(wanted[0].name, "weeks");
  EXPECT_EQ(wanted[0].cells, frame::Cells::kNumbers);
  EXPECT_EQ(wanted[0].least, 0);
  EXPECT_EQ(wanted[1].name, "age");
  EXPECT_EQ(wanted[1].cells, frame::Cells::kEither);
}

TEST(Declaration, AnOptionSetsItsMember) {
  const analysis::Declaration sum = sumDeclaration();
  const auto request = sum.request();
  sum.find("rounding")->set(request.get(), std::string("down"));
  sum.find("floor")->set(request.get(), 2.0);
  sum.find("twice")->set(request.get(), true);
  const auto& typed = *static_cast<const SumRequest*>(request.get());
  EXPECT_EQ(typed.rounding, Rounding::kDown);
  EXPECT_EQ(typed.floor, 2.0);
  EXPECT_TRUE(typed.twice);
  EXPECT_EQ(std::get<std::string>(*sum.find("rounding")->get(request.get())), "down");
  EXPECT_EQ(sum.find("nothing"), nullptr);
}

frame::Frame labelled(std::vector<std::uint32_t> codes, std::vector<std::string> levels) {
  frame::Frame data;
  data.rows = codes.size();
  data.columns = {frame::labelColumn("g", frame::Type::kText, std::move(codes), std::move(levels))};
  return data;
}

TEST(Digest, ReadsContentsNotCodings) {
  EXPECT_EQ(analysis::digest(labelled({0, 1, 0}, {"a", "b"})),
            analysis::digest(labelled({2, 1, 2}, {"c", "b", "a"})));
  EXPECT_NE(analysis::digest(labelled({0, 1, 0}, {"a", "b"})),
            analysis::digest(labelled({0, 1, 1}, {"a", "b"})));
  EXPECT_EQ(analysis::digest(dataOf({0.0, 1})), analysis::digest(dataOf({-0.0, 1})));
  EXPECT_NE(analysis::digest(dataOf({1, 2})), analysis::digest(dataOf({2, 1})));
  EXPECT_EQ(analysis::digest(dataOf({1, 2})).size(), 32u);
}

}  // namespace
