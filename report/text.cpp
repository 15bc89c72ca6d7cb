// Text, section by section; an empty line between any two.
#include "report/text.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "report/textTable.h"
#include "text/utf8.h"
#include "text/words.h"

namespace survmeth::report {
namespace {

using text::counted;
using text::displayWidth;
using text::grouped;
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
  void block(const std::vector<const Column*>& columns, const std::vector<Format>& formats,
             std::size_t first, std::size_t last);

  std::vector<std::string> lines(const std::string& text, std::size_t indent) const {
    const std::size_t limit = options_.width == 0 ? kProseWidth : options_.width;
    const std::size_t width = std::min(limit, kProseWidth);
    return wrapped(printable(text), std::max(width, indent + kLeastProse) - indent);
  }

  const TextOptions& options_;
  std::string out_;
};

std::string dataLine(const Data& data) {
  std::string rows = counted(data.rowsRead, "row", "rows");
  if (data.rowsUsed != data.rowsRead) rows = grouped(data.rowsUsed) + " of " + rows;
  return data.name.empty() ? rows : data.name + ", " + rows;
}

// "" for what is on or off.
std::string settingText(const Setting& setting) {
  if (const std::string* word = std::get_if<std::string>(&setting)) return *word;
  if (const double* number = std::get_if<double>(&setting)) return exact(*number);
  std::string list;
  if (const auto* numbers = std::get_if<std::vector<double>>(&setting)) {
    for (const double each : *numbers) list += (list.empty() ? "" : ", ") + exact(each);
  }
  if (const auto* words = std::get_if<std::vector<std::string>>(&setting)) {
    for (const std::string& each : *words) list += (list.empty() ? "" : ", ") + each;
  }
  return list;
}

std::string planLine(const Report& report) {
  std::string line;
  for (const auto& [name, setting] : report.plan) {
    const bool* flag = std::get_if<bool>(&setting);
    if (flag != nullptr && !*flag) continue;
    if (!line.empty()) line += "; ";
    line += flag != nullptr ? name : name + ": " + settingText(setting);
  }
  return line;
}

std::string factText(const Fact& fact, int digits) {
  if (const bool* flag = std::get_if<bool>(&fact.value)) return *flag ? "yes" : "no";
  if (const std::string* text = std::get_if<std::string>(&fact.value)) return *text;
  if (const double* number = std::get_if<double>(&fact.value)) {
    return shown(*number, formatOf(fact.kind, {number, 1}, digits));
  }
  return "-";
}

void Writer::head(const Report& report) {
  section();
  if (!report.title.empty()) title(report.title);
  if (!report.data.name.empty() || report.data.rowsRead > 0) prose(dataLine(report.data));
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

void Writer::block(const std::vector<const Column*>& columns, const std::vector<Format>& formats,
                   std::size_t first, std::size_t last) {
  if (first == last) {
    line("(no rows)");
    return;
  }
  std::vector<Heading> headings;
  std::size_t labels = 0;  // columns of labels before the first number
  for (const Column* column : columns) {
    if (column->isLabels() && labels == headings.size()) ++labels;
    headings.push_back({column->heading, column->isLabels() ? kLeft : kRight});
  }
  TextTable texts(std::move(headings));
  for (std::size_t row = first; row < last; ++row) {
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
      cells.push_back(columns[i]->isLabels() ? columns[i]->labels()[row]
                                             : shown(columns[i]->numbers()[row], formats[i]));
    }
    texts.row(std::move(cells));
  }
  out_ += texts.text(options_.width, std::max<std::size_t>(labels, 1));
}

void Writer::table(const Table& table) {
  std::vector<const Column*> columns;
  std::vector<Format> formats;
  for (const Column& column : table.columns) {
    if (column.key == table.partedBy) continue;
    columns.push_back(&column);
    formats.push_back(column.isLabels() ? Format{}
                                        : formatOf(column.kind, column.numbers(), options_.digits));
  }
  const Column* parting = table.partedBy.empty() ? nullptr : table.find(table.partedBy);
  std::size_t first = 0;
  do {
    std::size_t last = table.rows();
    std::string caption = table.caption;
    if (parting != nullptr && first < last) {
      const std::vector<std::string>& labels = parting->labels();
      const std::string name =
          (parting->heading.empty() ? "" : parting->heading + " = ") + labels[first];
      caption += (caption.empty() ? "" : ", ") + name;
      last = static_cast<std::size_t>(
          std::find_if(labels.begin() + static_cast<std::ptrdiff_t>(first), labels.end(),
                       [&](const std::string& each) { return each != labels[first]; }) -
          labels.begin());
    }
    section();
    if (!caption.empty()) prose(caption);
    block(columns, formats, first, last);
    first = last;
  } while (first < table.rows());
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
