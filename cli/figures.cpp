#include "cli/figures.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <utility>
#include <vector>

#include "cli/shell/problem.h"
#include "text/words.h"

namespace cli {
namespace {

namespace analysis = survmeth::analysis;
namespace pictures = survmeth::pictures;
namespace report = survmeth::report;
using analysis::Setting;
using analysis::Type;

std::pair<double, double> pairOf(const Setting& value) {
  const auto& numbers = std::get<std::vector<double>>(value);
  return {numbers[0], numbers[1]};
}

Problem problemOf(const pictures::Refusal& refusal) {
  return Problem("--" + refusal.option + ": " + refusal.what());
}

analysis::Option optionOf(const char* name, Type type, const char* valueName, const char* help) {
  analysis::Option option;
  option.name = name;
  option.type = type;
  option.valueName = valueName;
  option.help = help;
  return option;
}

const report::Figure& chosen(const Looks& looks, const report::Report& report) {
  if (looks.figure.empty()) return report.figures.front();
  std::vector<std::string> ids;
  for (const report::Figure& figure : report.figures) {
    if (figure.id == looks.figure) return figure;
    ids.push_back(figure.id);
  }
  throw Problem("--figure: there is no " + quote(looks.figure) + " in this report; expected " +
                (ids.size() == 1 ? "" : "one of ") + nearestFirst(looks.figure, ids));
}

}  // namespace

void addShared(CLI::App& app, const analysis::Option& option,
               std::function<void(const Setting&)> take) {
  app.add_option_function<std::string>(
         "--" + option.name,
         [option, take = std::move(take)](const std::string& text) {
           try {
             take(analysis::settingOf(option, {text}));
           } catch (const analysis::BadOption& bad) {
             throw Problem("--" + bad.option() + ": " + bad.what());
           } catch (const pictures::Refusal& refusal) {
             throw problemOf(refusal);
           }
         },
         option.help)
      ->type_name(option.valueName);
}

void addLooks(CLI::App& app, const std::vector<std::string>& figures, Looks& looks) {
  pictures::Style& style = looks.style;
  addShared(
      app,
      optionOf("plot", Type::kText, "FILE", "Draw the figure (.svg, .png or .pdf; needs gnuplot)"),
      [&looks](const Setting& file) {
        looks.plot = std::get<std::string>(file);
        pictures::formatOf(looks.plot);
      });
  if (figures.size() > 1) {
    analysis::Option figure = optionOf("figure", Type::kChoice, "KIND", "Which figure: ");
    figure.choices = figures;
    for (const std::string& id : figures) {
      figure.help += id + (id == figures.back() ? " (default " + figures[0] + ")" : " or ");
    }
    addShared(app, figure,
              [&looks](const Setting& value) { looks.figure = std::get<std::string>(value); });
  }
  const auto text = [&app](const char* name, const char* help, std::optional<std::string>& member) {
    addShared(app, optionOf(name, Type::kText, "TEXT", help),
              [&member](const Setting& value) { member = std::get<std::string>(value); });
  };
  text("title", "Title of the figure", style.title);
  text("xlabel", "Label of its x axis", style.xLabel);
  text("ylabel", "Label of its y axis", style.yLabel);
  const auto limits = [&app](const char* name, const char* help,
                             std::optional<std::pair<double, double>>& member) {
    analysis::Option option = optionOf(name, Type::kNumbers, "A,B", help);
    option.range = analysis::numbersOf(2, "two");
    addShared(app, option, [&member](const Setting& value) { member = pairOf(value); });
  };
  limits("xlim", "Limits of its x axis", style.xLimits);
  limits("ylim", "Limits of its y axis", style.yLimits);
  analysis::Option breaks =
      optionOf("breaks", Type::kNumbers, "A,B,C", "Ticks of its x axis, also of the risk table");
  breaks.range.ascending = true;
  breaks.range.expected = "ascending numbers separated by commas";
  addShared(app, breaks, [&style](const Setting& value) {
    style.breaks = std::get<std::vector<double>>(value);
  });
  analysis::Option size =
      optionOf("size", Type::kNumbers, "W,H", "Width and height of the figure in points");
  size.range = analysis::numbersOf(2, "two");
  size.range.least = 1;
  size.range.most = 10000;
  size.range.whole = true;
  size.range.expected = "two whole numbers from 1 to 10000";
  addShared(app, size, [&style](const Setting& value) {
    const auto [width, height] = pairOf(value);
    style.size = {static_cast<int>(width), static_cast<int>(height)};
  });
  analysis::Option scale =
      optionOf("scale", Type::kChoice, "KIND",
               "Probabilities of the figure: probability or percent (default probability)");
  scale.choices = {"probability", "percent"};
  addShared(app, scale, [&style](const Setting& value) {
    style.percent = std::get<std::string>(value) == "percent";
  });
  app.add_flag("--grey", style.grey, "Draw in grey");
}

void plot(const Looks& looks, const report::Report& report, Session& session) {
  if (looks.plot.empty()) {
    if (looks.figure.empty()) return;
    throw Problem("--figure: stands without --plot; expected both or none");
  }
  if (report.figures.empty()) {
    std::string why;
    for (const report::Note& note : report.notes) why += (why.empty() ? ": " : "; ") + note.text;
    throw Problem("--plot: there is no figure of this analysis" + why);
  }
  try {
    const auto drawing = std::make_shared<const pictures::Drawing>(
        pictures::compose(chosen(looks, report), looks.style, pictures::formatOf(looks.plot)));
    for (const report::Note& note : drawing->notes) session.note(note.text);
    session.output.figure(looks.plot, [drawing] { return pictures::draw(*drawing); });
  } catch (const pictures::Refusal& refusal) {
    throw problemOf(refusal);
  }
}

std::function<std::string(const report::Figure&)> pageFigures(const Looks& looks,
                                                              Session& session) {
  return [&looks, &session, failed = false](const report::Figure& figure) mutable {
    try {
      return pictures::draw(pictures::compose(figure, looks.style, pictures::Format::kSvg));
    } catch (const pictures::Failure& failure) {
      if (!failed) session.output.lack(failure.what());
      failed = true;
      return std::string();
    } catch (const pictures::Refusal& refusal) {
      throw problemOf(refusal);
    }
  };
}

}  // namespace cli
