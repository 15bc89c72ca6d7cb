// An analysis by its declaration, as the command line makes it: any of `survmeth help --json`, its
// options by name, its report as text or JSON.
//
//     report data/leukemia.csv [--json]
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "analysis/declaration.h"
#include "frame/reader.h"
#include "numerics/progress.h"
#include "report/json.h"
#include "report/text.h"

namespace {

namespace analysis = survmeth::analysis;
namespace report = survmeth::report;

report::Report curvesOf(const std::string& file) {
  const analysis::Declaration& life = *analysis::findDeclaration("life");
  const auto request = life.request();
  const auto set = [&](const char* option, const char* text) {
    const analysis::Option& found = *life.find(option);
    found.set(request.get(), analysis::settingOf(found, {text}));
  };
  set("time", "weeks");
  set("event", "relapse");
  set("group", "treatment");

  const auto data = survmeth::frame::readFrame(file, analysis::wantedColumns(life, request.get()));
  survmeth::numerics::Progress progress;
  return analysis::analyse(life, data, request.get(), progress).report;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::fprintf(stderr, "usage: report data/leukemia.csv [--json]\n");
    return 2;
  }
  const bool json = count > 2 && std::string(arguments[2]) == "--json";
  try {
    const report::Report made = curvesOf(arguments[1]);
    const std::string text = json ? report::toJson(made, {.version = "0.1.0", .figures = false})
                                  : report::toText(made, {.width = 100});
    std::fputs(text.c_str(), stdout);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return 1;
  }
  return 0;
}
