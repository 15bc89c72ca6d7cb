// New data of survmeth finegray: what survmeth predict says of them, and cmprsk; how far a run is.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/savedFit.h"
#include "frame/reader.h"
#include "report/csv.h"
#include "tests/support/csv.h"
#include "tests/support/progress.h"

namespace survmeth::analysis {
namespace {

using Options = std::vector<std::pair<std::string, Setting>>;

const std::string kNew = std::string(SURVMETH_REFERENCE) + "/predict/finegray_new.csv";
const std::string kModel = "Surv(time, status) ~ age + log(bili) + sex";

const Declaration& finegray() {
  static const Declaration kFineGray = finegrayDeclaration();
  return kFineGray;
}

frame::Frame dataOf(const Declaration& declaration, const void* request, const std::string& file) {
  return frame::readFrame(file, [&](const std::vector<std::string>& header) {
    return wantedColumns(declaration, request, header);
  });
}

std::shared_ptr<void> requestOf(const Declaration& declaration, const Options& options) {
  auto request = declaration.request();
  for (const auto& [name, setting] : options) declaration.find(name)->set(request.get(), setting);
  return request;
}

void withFile(const std::string& name, const Declaration& followUp, const void* request,
              const std::function<void(const frame::Frame&)>& use) {
  use(dataOf(followUp, request, name));
}

struct Run {
  report::Report report;
  std::string saved;  // the text of the file
};

// As the command line runs it on data/pbc.csv.
Run runOf(const Options& options) {
  const auto request = requestOf(finegray(), options);
  const frame::Frame data = dataOf(finegray(), request.get(), SURVMETH_DATA "/pbc.csv");
  numerics::Progress progress;
  const Fitted fitted = analyse(finegray(), data, request.get(), progress, {}, withFile);
  const auto lasting = finegray().lasting->of(data, fitted.result.get(), request.get(), progress);
  return {fitted.report, savedFit(finegray(), fitted.report, lasting.get(), "test")};
}

const report::Table& tableOf(const report::Report& report, const std::string& id) {
  return *std::find_if(report.tables.begin(), report.tables.end(),
                       [&](const report::Table& table) { return table.id == id; });
}

TEST(FineGrayNewData, AreToldWhatPredictTellsOfTheSavedFit) {
  for (const std::string& formula :
       {kModel, std::string("Surv(time, status) ~ ns(age, 3) * log(bili) + strata(sex)")}) {
    for (const std::string errors : {"estimated-weights", "sandwich"}) {
      const Options model = {{"formula", formula}, {"errors", errors}};
      const Options wishes = {{"at", std::vector<double>{400, 2000, 9000}},
                              {"conf", std::string("log")},
                              {"curves", true},
                              {"alpha", 0.1}};
      Options all = model;
      all.insert(all.end(), wishes.begin(), wishes.end());
      all.emplace_back("newdata", kNew);
      const report::Report ours = runOf(all).report;

      const SavedFit saved = readSavedFit(runOf(model).saved);
      const Declaration& predict = saved.declaration->lasting->predict;
      const auto request = requestOf(predict, wishes);
      predict.follow(request.get(), saved.lasting);
      numerics::Progress progress;
      const report::Report told =
          analyse(predict, dataOf(predict, request.get(), kNew), request.get(), progress).report;
      ASSERT_EQ(told.tables.size(), 3u);
      for (const report::Table& table : told.tables) {
        const std::string id = table.id == "incidenceAt" ? "predictedIncidenceAt" : table.id;
        EXPECT_EQ(report::toCsv(tableOf(ours, id)), report::toCsv(table)) << formula << " " << id;
      }
      ASSERT_EQ(told.figures.size(), 1u);
      EXPECT_EQ(ours.figures.back().id, "predictedIncidence");
      EXPECT_EQ(ours.figures.back().panels.size(), told.figures.back().panels.size());
    }
  }
}

// Last times of pbc.csv: women have an event 1 at 3092, 2 at 3853, and are followed to 4556; men
// have them at 2033 and 4191, and are followed to 4459.
TEST(FineGrayFigures, PanelsShareTheirAxesAndCurvesEndWithTheirStratum) {
  const report::Report report =
      runOf({{"formula", std::string("Surv(time, status) ~ age + log(bili) + strata(sex)")},
             {"newdata", kNew}})
          .report;
  const std::map<std::string, std::vector<double>> endsOf = {{"incidence", {4556, 4459}},
                                                             {"predictedIncidence", {3853, 4191}}};
  for (const auto& [id, strata] : endsOf) {
    const auto figure = std::find_if(report.figures.begin(), report.figures.end(),
                                     [&](const report::Figure& each) { return each.id == id; });
    ASSERT_NE(figure, report.figures.end()) << id;
    ASSERT_EQ(figure->panels.size(), 2u);
    const report::Panel &first = figure->panels[0], &second = figure->panels[1];
    EXPECT_EQ(first.x.most, std::max(strata[0], strata[1])) << id;
    EXPECT_EQ(first.x.most, second.x.most);
    EXPECT_EQ(first.x.ticks, second.x.ticks);
    EXPECT_EQ(first.y.most, second.y.most);
    ASSERT_TRUE(first.y.most);
    for (std::size_t p = 0; p < 2; ++p) {
      for (const report::Series& each : figure->panels[p].series) {
        for (const double upper : each.upper) EXPECT_FALSE(upper > *first.y.most);
        // Of the fit a panel is a stratum, of the new data the second line is the man.
        const bool ofMan = id == "incidence" ? p == 1 : each.name == "line 3, sex=m";
        EXPECT_EQ(each.x.back(), strata[ofMan ? 1 : 0]) << id << " " << each.name;
      }
    }
  }
}

TEST(FineGrayNewData, HaveTheIncidencesOfCmprsk) {
  const test::Csv expected(std::string(SURVMETH_REFERENCE) + "/predict/finegray_incidence.csv");
  std::vector<double> at = expected.numbers("time");
  std::sort(at.begin(), at.end());
  at.erase(std::unique(at.begin(), at.end()), at.end());
  const report::Report report = runOf({{"formula", kModel}, {"newdata", kNew}, {"at", at}}).report;
  const report::Table& table = tableOf(report, "predictedIncidenceAt");
  const auto column = [&](const char* key) -> const report::Column& { return *table.find(key); };
  std::map<std::tuple<std::string, double, double>, double> found;
  for (std::size_t i = 0; i < table.rows(); ++i) {
    found[{column("event").labels()[i], column("line").numbers()[i], column("time").numbers()[i]}] =
        column("cumulativeIncidence").numbers()[i];
  }
  for (std::size_t i = 0; i < expected.rows(); ++i) {
    const double incidence = expected.number("incidence", i);
    // R's last Newton step leaves some 1e-9 of the coefficients' errors.
    EXPECT_NEAR((found.at({expected.text("status", i), expected.number("line", i),
                           expected.number("time", i)})),
                incidence, 1e-8 * incidence)
        << i;
  }
}

// Everything that takes long: fits of two types of event, tests, hazards, files, figures, new data.
TEST(FineGrayProgress, GoesOnToTheEndAndStopsAtEveryReport) {
  const auto request = requestOf(finegray(), {{"formula", kModel},
                                              {"zph", std::string("rank")},
                                              {"cause-specific", true},
                                              {"at", std::vector<double>{1000}},
                                              {"newdata", kNew}});
  const frame::Frame data = dataOf(finegray(), request.get(), SURVMETH_DATA "/pbc.csv");
  test::expectStops([&](numerics::Progress& progress) {
    analyse(finegray(), data, request.get(), progress, {}, withFile);
  });
}

TEST(FineGrayProgress, HazardsAreMadeOnceAndByWhoeverAsksFirst) {
  const auto request = requestOf(finegray(), {{"formula", kModel}});
  const frame::Frame data = dataOf(finegray(), request.get(), SURVMETH_DATA "/pbc.csv");
  const auto saved = [&](const Fitted& fitted, numerics::Progress& progress) {
    return finegray().lasting->of(data, fitted.result.get(), request.get(), progress);
  };
  numerics::Progress quiet;
  // Without files and figures the saved fit is the first that needs them: it stops, and the next
  // one begins anew.
  const Fitted fitted = analyse(finegray(), data, request.get(), quiet, {false, false});
  test::StoppingProgress stopping(2);
  EXPECT_THROW(saved(fitted, stopping), numerics::Cancelled);
  test::StoppingProgress whole, again;
  saved(fitted, whole);
  EXPECT_GT(whole.said().size(), 2u);
  saved(fitted, again);
  EXPECT_EQ(again.said().size(), 0u);
  const Fitted described = analyse(finegray(), data, request.get(), quiet);
  saved(described, again);
  EXPECT_EQ(again.said().size(), 0u);
}

TEST(FineGrayNewData, TheirCurvesAloneAreRefused) {
  const auto request = requestOf(finegray(), {{"formula", kModel}, {"curves", true}});
  try {
    finegray().check(request.get());
    FAIL();
  } catch (const BadOption& bad) {
    EXPECT_EQ(bad.option(), "curves");
    EXPECT_STREQ(bad.what(), "stands without --newdata; expected both or none");
  }
}

}  // namespace
}  // namespace survmeth::analysis
