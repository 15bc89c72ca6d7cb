// What the commands share: options and the head of their JSON.
#include "cli/shell/session.h"

#include <CLI/CLI.hpp>

#include "cli/shell/gnuplot.h"
#include "cli/shell/lists.h"
#include "cli/shell/numbers.h"
#include "cli/shell/problem.h"
#include "cli/version.h"

namespace cli {

Json Session::json(const Table& table) const {
  Json result;
  result["program"] = "survmeth";
  result["version"] = kVersion;
  result["command"] = command_;
  result["file"] = table.source;
  result["rows"] = {{"read", table.rowsRead}, {"used", table.rows}, {"leftOut", table.leftOut()}};
  return result;
}

void addFile(CLI::App& app, Common& common) {
  app.add_option("FILE", common.file, "CSV or TSV file with a header line; - is standard input")
      ->required()
      ->type_name("");
}

void addMissing(CLI::App& app, Common& common) {
  app.add_option_function<std::string>(
         "--missing",
         [&common](const std::string& list) {
           common.missing = Missing(listItems("--missing", list, "words"));
         },
         "Words that mean a missing cell, besides an empty one (default NA,N/A,NaN,null,.)")
      ->type_name("A,B,...");
}

void addAlpha(CLI::App& app, Common& common) {
  app.add_option_function<std::string>(
         "--alpha",
         [&common](const std::string& text) {
           const std::optional<double> alpha = parseNumber(text);
           if (!alpha || !(*alpha > 0 && *alpha < 1)) {
             throw Problem("--alpha: " + quote(text) +
                           " is not a significance level; expected a "
                           "number between 0 and 1");
           }
           common.alpha = *alpha;
         },
         "Significance level; intervals have level 1 - A (default 0.05)")
      ->type_name("A");
}

void addJson(CLI::App& app, Common& common) {
  app.add_flag("--json", common.json, "Print JSON (docs/json.md) and nothing else");
}

void addOut(CLI::App& app, Common& common, const std::string& what,
            std::vector<std::string> files) {
  common.outFiles = std::move(files);
  app.add_option("--out", common.out, what)->type_name("DIR");
}

void addPlot(CLI::App& app, Common& common, const std::string& what) {
  app.add_option_function<std::string>(
         "--plot",
         [&common](const std::string& file) {
           pictureOf(file);
           common.plot = file;
         },
         what + " (.svg, .png or .pdf; needs gnuplot)")
      ->type_name("FILE");
}

void reserveOutputs(const Common& common, Session& session,
                    const std::vector<std::pair<std::string, std::string>>& others) {
  session.output.input(common.file);
  for (const auto& [option, path] : others) {
    if (!path.empty()) session.output.reserve(option, path);
  }
  if (!common.plot.empty()) session.output.reserve("--plot", common.plot);
  if (common.out.empty()) return;
  for (const std::string& file : common.outFiles) {
    session.output.reserve("--out", common.out + "/" + file);
  }
}

std::string confidence(double alpha) { return brief(100 * (1 - alpha), 4); }

}  // namespace cli
