// Text, section by section; an empty line between any two.
#include "report/text.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "report/phrases.h"
#include "report/textTable.h"
#include "text/utf8.h"

namespace survmeth::report {
namespace {

using text::displayWidth;
using text::printable;
using text::wrapped;

// Lines of prose are no longer than this however wide the terminal is.
constexpr std::size_t kProseWidth = 100;
constexpr std::size_t kLeastProse = 16;  // nor shorter, beside whatever they stand
constexpr std::size_t kHanging = 4;      // indent of a list's further lines

class Writer {
 public:
  explicit Writer(const TextOptions& options) : options_(options) {}

  std::string take() { return std::move(out_); }

  void section() {
    if (!out_.empty()) out_ += '\n';
  }

  void line(const std::string& text) { out_ += printable(text) + '\n'; }

  // Prose in lines that fit, the first begun with `first` and the others indented by `indent`.
  void prose(const std::string& text, const std::string& first = {}, std::size_t indent = 0) {
    std::string begin = first;
    for (const std::string& each : lines(text, indent)) {
      out_ += begin + each + '\n';
      begin.assign(indent, ' ');
    }
  }

  void title(const std::string& text) {
    std::size_t widest = 0;
    for (const std::string& each : lines(text, 0)) {
      out_ += each + '\n';
      widest = std::max(widest, displayWidth(each));
    }
    out_ += std::string(widest, '-') + '\n';
  }

  void head(const Report& report);
  void facts(const Report& report);
  void table(const Table& table);
  void notes(const Report& report);
  void methods(const Report& report);

 private:
  void block(const std::vector<Shown>& columns, const Part& part);

  std::vector<std::string> lines(const std::string& text, std::size_t indent) const {
    const std::size_t limit = options_.width == 0 ? kProseWidth : options_.width;
    const std::size_t width = std::min(limit, kProseWidth);
    return wrapped(printable(text), std::max(width, indent + kLeastProse) - indent);
  }

  const TextOptions& options_;
  std::string out_;
};

// What the caller chose; the settings that always hold would bury it.
std::string planLine(const Report& report) {
  std::string line;
  for (const Choice& each : report.plan) {
    if (each.usual) continue;
    if (!line.empty()) line += "; ";
    const bool* flag = std::get_if<bool>(&each.setting);
    line += flag != nullptr && *flag ? each.name : each.name + ": " + settingText(each.setting);
  }
  return line;
}

void Writer::head(const Report& report) {
  section();
  if (!report.title.empty()) title(report.title);
  if (!report.data.name.empty() || report.data.rowsRead > 0) prose(dataText(report.data));
  if (const std::string plan = planLine(report); !plan.empty()) prose(plan);
  if (report.summary.empty()) return;
  section();
  prose(report.summary);
}

void Writer::facts(const Report& report) {
  TextTable texts({{""}, {""}});
  bool any = false;
  for (const Fact& fact : report.facts) {
    if (fact.label.empty()) continue;
    texts.row({fact.label, factText(fact, options_.digits)});
    any = true;
  }
  if (!any) return;
  section();
  out_ += texts.text(options_.width);
}

void Writer::block(const std::vector<Shown>& columns, const Part& part) {
  if (part.first == part.last) {
    line("(no rows)");
    return;
  }
  std::vector<Heading> headings;
  std::size_t labels = 0;  // columns of labels before the first number
  for (const Shown& each : columns) {
    const bool isLabels = each.column->isLabels();
    if (isLabels && labels == headings.size()) ++labels;
    headings.push_back({each.column->heading, isLabels ? kLeft : kRight});
  }
  TextTable texts(std::move(headings));
  for (std::size_t row = part.first; row < part.last; ++row) {
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (const Shown& each : columns) cells.push_back(each.cell(row));
    texts.row(std::move(cells));
  }
  out_ += texts.text(options_.width, std::max<std::size_t>(labels, 1));
}

void Writer::table(const Table& table) {
  const std::vector<Shown> columns = shownColumns(table, options_.digits);
  for (const Part& part : partsOf(table)) {
    const bool both = !table.caption.empty() && !part.heading.empty();
    const std::string caption = table.caption + (both ? ", " : "") + part.heading;
    section();
    if (!caption.empty()) prose(caption);
    block(columns, part);
  }
  for (const std::string& remark : table.remarks) prose(remark);
}

void Writer::notes(const Report& report) {
  if (report.notes.empty() || !options_.notes) return;
  section();
  line("Notes");
  for (const Note& note : report.notes) prose(note.text, "  ", kHanging);
}

void Writer::methods(const Report& report) {
  if (report.methods.empty()) return;
  section();
  line("Methods");
  for (const Method& method : report.methods) {
    prose(method.text + (method.reference.empty() ? "" : " [" + method.reference + "]"), "  ",
          kHanging);
  }
}

}  // namespace

std::string toText(const Report& report, const TextOptions& options) {
  requireWellFormed(report);
  Writer writer(options);
  writer.head(report);
  writer.facts(report);
  for (const Table& table : report.tables) {
    if (table.display == Display::kAlways) writer.table(table);
  }
  writer.notes(report);
  writer.methods(report);
  return writer.take();
}

}  // namespace survmeth::report
