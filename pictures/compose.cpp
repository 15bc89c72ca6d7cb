// A figure laid out: title, legend, panels in rows, tables under them.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "pictures/glyphs.h"
#include "pictures/gnuplot.h"
#include "pictures/legend.h"
#include "pictures/lettering.h"
#include "pictures/pictures.h"
#include "pictures/plan.h"
#include "pictures/range.h"
#include "pictures/riskTable.h"
#include "pictures/series.h"
#include "pictures/svg.h"
#include "text/words.h"

namespace survmeth::pictures {
namespace {

constexpr double kMargin = 14, kBetween = 22;
constexpr double kWidth = 720, kWide = 940;  // of one panel; of several beside one another
constexpr double kSquare = 560;              // of one panel with equal units
constexpr double kLeastFrame = 60;
constexpr int kLeastSize = 120, kMostSize = 10000;

void require(bool holds, const char* option, const std::string& why) {
  if (!holds) throw Refusal(option, why);
}

void applyLimits(report::Axis& axis, const std::optional<std::pair<double, double>>& limits,
                 const char* option) {
  if (!limits || axis.scale == report::Scale::kCategory) return;
  require(limits->first < limits->second, option, "the first limit is not below the second");
  require(knows(axis.scale, limits->first) && knows(axis.scale, limits->second), option,
          axis.scale == report::Scale::kLog ? "the axis is logarithmic: its limits are above 0"
          : axis.scale == report::Scale::kLinear
              ? "the limits are finite numbers"
              : "the axis shows probabilities: its limits lie between 0 and 1");
  axis.least = limits->first;
  axis.most = limits->second;
}

// The figure as the style wants it.
report::Figure styled(report::Figure figure, const Style& style) {
  if (style.title) figure.title = *style.title;
  for (const double at : style.breaks) {
    require(std::isfinite(at), "breaks", "a break is not a finite number");
  }
  for (report::Panel& panel : figure.panels) {
    if (style.xLabel) panel.x.label = *style.xLabel;
    if (style.yLabel) panel.y.label = *style.yLabel;
    applyLimits(panel.x, style.xLimits, "xlim");
    applyLimits(panel.y, style.yLimits, "ylim");
    if (!style.breaks.empty()) panel.x.ticks = style.breaks;
    // Limits that the figure itself wants are taken where the scale knows them.
    for (report::Axis* axis : {&panel.x, &panel.y}) {
      if (axis->least && !knows(axis->scale, *axis->least)) axis->least.reset();
      if (axis->most && !knows(axis->scale, *axis->most)) axis->most.reset();
      if (axis->least && axis->most && !(*axis->least < *axis->most)) {
        axis->least.reset();
        axis->most.reset();
      }
    }
  }
  // The numbers of a table stand at ticks.
  for (std::size_t i = 0; figure.riskTable && i < figure.panels.size(); ++i) {
    std::vector<double>& ticks = figure.panels[i].x.ticks;
    if (ticks.empty() && (i == 0 || figure.riskTable->eachPanel)) ticks = figure.riskTable->breaks;
  }
  return figure;
}

std::size_t columnsOf(const report::Figure& figure) {
  const std::size_t n = figure.panels.size();
  return n <= 1 ? 1 : n <= 4 ? 2 : 3;
}

// Of each panel of a picture this wide.
double panelWidth(const report::Figure& figure, double width) {
  const auto columns = static_cast<double>(columnsOf(figure));
  return (width - 2 * kMargin - kBetween * (columns - 1)) / columns;
}

double widthOf(const report::Figure& figure) {
  if (columnsOf(figure) > 1) return kWide;
  const bool equal = !figure.panels.empty() && figure.panels[0].equalUnits;
  return equal && !figure.riskTable ? kSquare : kWidth;
}

std::string idOf(const std::string& wanted) {
  std::string id = wanted.empty() ? "figure" : wanted;
  for (char& c : id) {
    const bool allowed = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_' ||
                         (c >= '0' && c <= '9');
    if (!allowed) c = '-';
  }
  // An id begins with a letter.
  const char first = static_cast<char>(id[0] | 0x20);
  return first >= 'a' && first <= 'z' ? id : "f" + id;
}

// The panel under which the table of all stands: the first of the last row, where the numbers are
// of its axis too.
std::size_t tabledPanel(const report::Figure& figure) {
  const std::size_t last = (figure.panels.size() - 1) / columnsOf(figure) * columnsOf(figure);
  const Range first = rangeOf(figure.panels[0]), its = rangeOf(figure.panels[last]);
  const bool same = first.x.least() == its.x.least() && first.x.most() == its.x.most();
  return same ? last : 0;
}

// The table under each panel that has one.
std::vector<std::optional<RiskRows>> tablesOf(const report::Figure& figure, double width) {
  std::vector<std::optional<RiskRows>> tables(figure.panels.size());
  if (!figure.riskTable || tables.empty()) return tables;
  const double its = panelWidth(figure, width) + 2 * kMargin;
  const report::RiskTable& all = *figure.riskTable;
  if (!all.eachPanel) {
    tables[tabledPanel(figure)].emplace(all, its);
    return tables;
  }
  // Whose numbers these are is the panel's title.
  for (std::size_t i = 0; i < std::min(tables.size(), all.counts.size()); ++i) {
    tables[i].emplace(report::RiskTable{all.title, all.breaks, {""}, {all.counts[i]}}, its);
  }
  return tables;
}

// Panels in rows, the frames of a row at one height; returns where the last row ends. `frameHeight`
// as planOf has it.
double planPanels(const report::Figure& figure, const Style& style, double width, double top,
                  const std::vector<std::optional<RiskRows>>& tables,
                  std::optional<double> frameHeight, std::vector<Plan>& plans) {
  const std::size_t columns = columnsOf(figure);
  const double wide = panelWidth(figure, width);
  plans.clear();
  for (std::size_t i = 0; i < figure.panels.size(); i += columns) {
    double bottom = top;
    for (std::size_t c = 0; c < columns && i + c < figure.panels.size(); ++c) {
      const double left = kMargin + static_cast<double>(c) * (wide + kBetween);
      const std::optional<RiskRows>& table = tables[i + c];
      plans.push_back(planOf(figure.panels[i + c], style, {left, top, left + wide, top},
                             table ? table->left() : 0, frameHeight));
    }
    double above = 0;
    for (std::size_t k = i; k < plans.size(); ++k) above = std::max(above, plans[k].above);
    for (std::size_t k = i; k < plans.size(); ++k) {
      plans[k].lower(above - plans[k].above);
      const double table = tables[k] ? tables[k]->height() : 0;
      bottom = std::max(bottom, plans[k].outer.bottom + table);
    }
    top = bottom + kBetween;
  }
  return top - (plans.empty() ? 0 : kBetween);
}

Drawing composed(const report::Figure& figure, const Style& style, Format format) {
  const double width = style.size ? style.size->first : widthOf(figure);
  if (style.size) {
    const auto [w, h] = *style.size;
    require(w >= kLeastSize && h >= kLeastSize && w <= kMostSize && h <= kMostSize, "size",
            "width and height lie between 120 and 10000 points");
  }
  const Palette palette(figure, style.grey);
  Notes notes;
  if (palette.names() > kStrokes) {
    notes.add("manyGroups", "the figure has " + text::counted(palette.names(), "group", "groups") +
                                "; beyond " + std::to_string(kStrokes) + " their colours repeat");
  }

  const double inner = width - 2 * kMargin;
  const std::vector<std::string> title = linesOf(figure.title, kTitleSize, inner);
  const Legend legend(figure, palette, inner);
  const std::vector<std::optional<RiskRows>> tables = tablesOf(figure, width);
  const double titled =
      kMargin + (title.empty() ? 0 : heightOf(title.size(), kTitleSize) + 2 * kGap);
  const double top = titled + legend.height();

  std::vector<Plan> plans;
  double bottom = planPanels(figure, style, width, top, tables, std::nullopt, plans);
  double height = std::ceil(bottom + kMargin);
  if (style.size) {
    height = style.size->second;
    // What the frames do not take is fixed; they share the rest.
    const std::size_t count = (figure.panels.size() + columnsOf(figure) - 1) / columnsOf(figure);
    bottom = planPanels(figure, style, width, top, tables, kLeastFrame, plans);
    const double spare = height - kMargin - bottom;
    const bool holds = spare >= -0.5 && std::all_of(plans.begin(), plans.end(), [](const Plan& p) {
                         return p.frame.right <= p.outer.right - 10;
                       });
    require(holds, "size", "the figure's labels leave no room for its frame");
    if (count > 0) {
      const double each = kLeastFrame + spare / static_cast<double>(count);
      planPanels(figure, style, width, top, tables, each, plans);
    }
    for (const Plan& plan : plans) {
      require(plan.sideHeight <= plan.frame.height() + 1 && plan.outer.bottom < height, "size",
              "the figure's labels leave no room for its frame");
    }
  }

  Canvas canvas(format, width, height);
  canvas.block(title, {kMargin, kMargin}, {kTitleSize, Align::kLeft, kInk});
  legend.draw(canvas, {kMargin, titled});
  for (const Plan& plan : plans) {
    drawAxes(canvas, plan);
    drawSeries(canvas, plan, palette, notes);
  }
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (tables[i]) tables[i]->draw(canvas, plans[i], palette, plans[i].outer.bottom, notes);
  }

  Drawing drawing;
  drawing.format = format;
  drawing.script = canvas.script();
  drawing.title = cleaned(figure.title);
  drawing.id = idOf(style.id.empty() ? figure.id : style.id);
  drawing.names = canvas.names();
  drawing.characters = canvas.characters();
  drawing.notes = notes.all();
  return drawing;
}

}  // namespace

Drawing compose(const report::Figure& figure, const Style& style, Format format) {
  return composed(styled(figure, style), style, format);
}

Format formatOf(const std::string& file) {
  const std::size_t dot = file.find_last_of("./");
  std::string ending = dot == std::string::npos || file[dot] == '/' ? "" : file.substr(dot + 1);
  for (char& c : ending) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  if (ending == "svg") return Format::kSvg;
  if (ending == "png") return Format::kPng;
  if (ending == "pdf") return Format::kPdf;
  throw Refusal("plot", text::quote(file) +
                            " has no picture's ending; expected a name that ends in .svg, .png or "
                            ".pdf");
}

std::string draw(const Drawing& drawing) {
  std::string bytes;
  if (drawing.format != Format::kSvg) {
    requireGlyphs(drawing.characters);
    runGnuplot(drawing.script, [&bytes](std::string_view piece, std::size_t whole) {
      bytes.reserve(whole);
      bytes += piece;
    });
    return bytes;
  }
  Embedder embedder(drawing.id, drawing.title, drawing.names);
  runGnuplot(drawing.script, [&](std::string_view piece, std::size_t whole) {
    bytes.reserve(whole + whole / 4);  // for the ids' beginnings
    embedder.add(piece, bytes);
  });
  embedder.end(bytes);
  return bytes;
}

}  // namespace survmeth::pictures
