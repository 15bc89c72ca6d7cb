// What `life` says of its result, where the command line's cases do not reach.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "analysis/declare.h"

namespace {

using namespace survmeth;  // NOLINT(google-build-using-namespace)

// Rows of times, events and codes of groups "a", "b" ..., each with weight.
frame::Frame dataOf(std::vector<double> times, const std::vector<std::uint32_t>& events,
                    std::vector<std::uint32_t> groups, std::vector<double> weights) {
  std::vector<std::string> labels;
  for (const std::uint32_t group : groups) {
    while (labels.size() <= group) labels.emplace_back(1, static_cast<char>('a' + labels.size()));
  }
  frame::Frame data;
  data.rows = data.rowsRead = times.size();
  data.columns = {frame::numberColumn("t", std::move(times)),
                  frame::labelColumn("e", frame::Type::kText, events, {"0", "1"}),
                  frame::labelColumn("g", frame::Type::kText, std::move(groups), labels),
                  frame::numberColumn("w", std::move(weights))};
  return data;
}

report::Report reportOf(const frame::Frame& data,
                        const std::vector<std::pair<std::string, report::Setting>>& more = {}) {
  const analysis::Declaration& life = *analysis::findDeclaration("life");
  const auto request = life.request();
  life.find("time")->set(request.get(), std::string("t"));
  life.find("event")->set(request.get(), std::string("e"));
  for (const auto& [name, setting] : more) life.find(name)->set(request.get(), setting);
  numerics::Progress progress;
  return analysis::analyse(life, data, request.get(), progress).report;
}

const report::Table& tableIn(const report::Report& report, const std::string& id) {
  for (const report::Table& table : report.tables) {
    if (table.id == id) return table;
  }
  throw std::out_of_range("there is no table " + id);
}

std::vector<std::string> codesIn(const report::Report& report) {
  std::vector<std::string> codes;
  for (const report::Note& note : report.notes) codes.push_back(note.code);
  return codes;
}

const std::pair<std::string, report::Setting> kByGroup = {"group", std::vector<std::string>{"g"}};
const std::pair<std::string, report::Setting> kWeighted = {"weight", std::string("w")};

TEST(LifeReport, TheSummaryOfManyGroupsLeavesTheMediansToTheTable) {
  const frame::Frame data =
      dataOf({1, 2, 3, 4, 5}, {1, 1, 1, 1, 0}, {0, 1, 2, 3, 4}, {1, 1, 1, 1, 1});
  const std::string summary = reportOf(data, {kByGroup}).summary;
  EXPECT_EQ(summary.substr(0, summary.find("Log-rank")), "4 of 5 had the event. ");
}

TEST(LifeReport, WithoutATestTheSummaryNamesNone) {
  const frame::Frame data = dataOf({5, 5}, {1, 1}, {0, 1}, {1, 1});
  const report::Report report = reportOf(data, {kByGroup});
  EXPECT_EQ(report.summary, "2 of 2 had the event. Median time to it: a 5, b 5.");
  EXPECT_EQ(codesIn(report), (std::vector<std::string>{"noneCensored", "noTest"}));
}

TEST(LifeReport, FilesAlwaysHoldTheKaplanMeierTable) {
  const frame::Frame data = dataOf({1, 2}, {1, 0}, {0, 0}, {1, 1});
  const auto shown = [&](const char* table) {
    return tableIn(reportOf(data, {{"table", std::string(table)}}), "kaplanMeier").display;
  };
  EXPECT_EQ(shown("none"), report::Display::kFilesOnly);
  EXPECT_EQ(shown("km"), report::Display::kAlways);
}

TEST(LifeReport, OneGroupHasNoTests) {
  const frame::Frame data = dataOf({1, 2}, {1, 0}, {0, 0}, {1, 1});
  for (const report::Table& table : reportOf(data).tables) {
    EXPECT_TRUE(table.id == "summary" || table.id == "kaplanMeier" || table.id == "atRisk")
        << table.id;
  }
}

TEST(LifeReport, WeightsThatAreNoFrequenciesAreNoted) {
  const frame::Frame data = dataOf({1, 2, 3}, {1, 0, 1}, {0, 0, 0}, {0.5, 1, 0});
  EXPECT_EQ(codesIn(reportOf(data, {kWeighted})),
            (std::vector<std::string>{"fractionalWeights", "zeroWeights"}));
}

TEST(LifeReport, NoWeightAboveZeroIsRefused) {
  const frame::Frame data = dataOf({1, 2}, {1, 0}, {0, 0}, {0, 0});
  try {
    reportOf(data, {kWeighted});
    FAIL() << "taken";
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kWeight);
    EXPECT_STREQ(refusal.what(), "every weight is 0");
    EXPECT_EQ(refusal.expected(), "at least one above 0");
  }
}

TEST(LifeReport, AGroupOfWeightZeroIsRefused) {
  const frame::Frame data = dataOf({1, 2, 3}, {1, 0, 1}, {0, 0, 1}, {1, 1, 0});
  try {
    reportOf(data, {kByGroup, kWeighted});
    FAIL() << "taken";
  } catch (const engine::Refusal& refusal) {
    EXPECT_EQ(refusal.role(), engine::Role::kGroup);
    EXPECT_STREQ(refusal.what(), "the group \"b\" is empty: its rows have weight 0");
  }
}

}  // namespace
