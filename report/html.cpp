// The document, piece by piece. Whatever is no markup of ours goes through escaped().
#include "report/html.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "report/escape.h"
#include "report/htmlStyle.h"
#include "report/phrases.h"
#include "report/svg.h"

namespace survmeth::report {
namespace {

// A table with more rows scrolls within the page; on paper it runs on.
constexpr std::size_t kLongTable = 25;

class Writer {
 public:
  Writer(const HtmlOptions& options, bool several) : options_(options), several_(several) {}

  void begin(const std::string& title);
  void contents(std::span<const Report> reports);
  void article(const Report& report, std::size_t number);
  void end();

  std::string take() { return std::move(out_); }

 private:
  // A section's heading: below the document's title, or below that of its report.
  void heading(const std::string& text) {
    out_ += several_ ? "<h3>" + text + "</h3>\n" : "<h2>" + text + "</h2>\n";
  }
  void head(const Report& report);
  void facts(const Report& report);
  void table(const Table& table);
  void part(const std::vector<Shown>& columns, const Part& part);
  void figure(const Figure& figure);
  void methods(const Report& report);
  void notes(const Report& report);
  void settings(const Report& report);

  const HtmlOptions& options_;
  const bool several_;
  std::string prefix_;  // of the ids of the report being written
  std::string out_;
};

// Numbers as people read them: a typographic minus, signs for what is infinite or missing.
std::string numberHtml(const std::string& shown) {
  if (shown == "-") return "\xE2\x80\x93";    // en dash
  if (shown == "inf") return "\xE2\x88\x9E";  // infinity
  if (shown.empty() || shown[0] != '-') return escaped(shown);
  const std::string rest = shown.substr(1);
  return "\xE2\x88\x92" + (rest == "inf" ? "\xE2\x88\x9E" : escaped(rest));
}

void Writer::begin(const std::string& title) {
  out_ +=
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      // Nothing is loaded and nothing runs, whatever a label says.
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "style-src 'unsafe-inline'\">\n"
      "<meta name=\"generator\" content=\"" +
      escaped(options_.program + ' ' + options_.version) + "\">\n<title>" + escaped(title) +
      "</title>\n<style>" + kHtmlStyle + "</style>\n</head>\n<body>\n<main>\n";
  if (several_) out_ += "<header><h1>" + escaped(title) + "</h1></header>\n";
}

void Writer::contents(std::span<const Report> reports) {
  out_ += "<nav aria-label=\"Contents\">\n<ol>\n";
  for (std::size_t i = 0; i < reports.size(); ++i) {
    out_ += "<li><a href=\"#report-" + std::to_string(i + 1) + "\">" + escaped(reports[i].title) +
            "</a></li>\n";
  }
  out_ += "</ol>\n</nav>\n";
}

void Writer::head(const Report& report) {
  const char* level = several_ ? "h2" : "h1";
  out_ += std::string("<header>\n<") + level + '>' + escaped(report.title) + "</" + level + ">\n";
  if (!report.data.name.empty() || report.data.rowsRead > 0) {
    out_ += "<p class=\"source\">" + escaped(dataText(report.data)) + "</p>\n";
  }
  if (!report.summary.empty()) {
    out_ += "<p class=\"summary\">" + escaped(report.summary) + "</p>\n";
  }
  out_ += "</header>\n";
}

void Writer::facts(const Report& report) {
  std::string list;
  for (const Fact& fact : report.facts) {
    if (fact.label.empty()) continue;
    const std::string value = factText(fact, options_.digits);
    const bool isText = std::holds_alternative<std::string>(fact.value);
    list += "<div><dt>" + escaped(fact.label) + "</dt><dd>" +
            (isText ? escaped(value) : numberHtml(value)) + "</dd></div>\n";
  }
  if (!list.empty()) out_ += "<dl class=\"facts\">\n" + list + "</dl>\n";
}

void Writer::part(const std::vector<Shown>& columns, const Part& part) {
  out_ += "<tbody>\n";
  if (!part.heading.empty()) {
    out_ += "<tr><th class=\"label part\" scope=\"rowgroup\" colspan=\"" +
            std::to_string(columns.size()) + "\">" + escaped(part.heading) + "</th></tr>\n";
  }
  for (std::size_t row = part.first; row < part.last; ++row) {
    out_ += "<tr>";
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::string cell = columns[i].cell(row);
      if (columns[i].column->isLabels()) {
        out_ += i == 0 ? "<th class=\"label\" scope=\"row\">" : "<td class=\"label\">";
        out_ += escaped(cell) + (i == 0 ? "</th>" : "</td>");
      } else {
        out_ += (cell == "-" ? "<td class=\"none\">" : "<td>") + numberHtml(cell) + "</td>";
      }
    }
    out_ += "</tr>\n";
  }
  out_ += "</tbody>\n";
}

void Writer::table(const Table& table) {
  const std::string id = prefix_ + table.id;
  out_ += "<div class=\"table\" id=\"" + id + "\">\n";
  const std::string caption = escaped(table.caption);
  if (table.rows() == 0) {
    if (!caption.empty()) out_ += "<p class=\"caption\">" + caption + "</p>\n";
    out_ += "<p class=\"empty\">(no rows)</p>\n";
  } else {
    // What scrolls can be reached with the keyboard and says what it is.
    const std::string captionId = id + "-caption";
    out_ += std::string("<div class=\"scroll") + (table.rows() > kLongTable ? " long" : "") +
            "\" tabindex=\"0\"";
    if (!caption.empty()) out_ += " role=\"region\" aria-labelledby=\"" + captionId + '"';
    out_ += ">\n<table>\n";
    if (!caption.empty()) {
      out_ += "<caption id=\"" + captionId + "\">" + caption + "</caption>\n";
    }
    out_ += "<thead>\n<tr>";
    const std::vector<Shown> columns = shownColumns(table, options_.digits);
    for (const Shown& each : columns) {
      out_ += std::string("<th scope=\"col\"") +
              (each.column->isLabels() ? " class=\"label\">" : ">") +
              escaped(each.column->heading) + "</th>";
    }
    out_ += "</tr>\n</thead>\n";
    for (const Part& each : partsOf(table)) part(columns, each);
    out_ += "</table>\n</div>\n";
  }
  for (const std::string& remark : table.remarks) {
    out_ += "<p class=\"remark\">" + escaped(remark) + "</p>\n";
  }
  out_ += "</div>\n";
}

void Writer::figure(const Figure& figure) {
  const std::string svg = options_.picture ? options_.picture(figure) : std::string();
  if (svg.empty()) return;
  const std::string id = prefix_ + figure.id;
  out_ += "<figure id=\"" + id + "\">\n<div class=\"picture\">" +
          embedded(svg, id + '-', figure.title) + "</div>\n<figcaption><strong>" +
          escaped(figure.title) + "</strong>";
  if (!figure.caption.empty()) out_ += ' ' + escaped(figure.caption);
  out_ += "</figcaption>\n</figure>\n";
}

void Writer::methods(const Report& report) {
  if (report.methods.empty()) return;
  out_ += "<section>\n";
  heading("Methods");
  out_ += "<ul class=\"methods\">\n";
  for (const Method& method : report.methods) {
    out_ += "<li>" + escaped(method.text);
    if (!method.reference.empty()) out_ += " <cite>" + escaped(method.reference) + "</cite>";
    out_ += "</li>\n";
  }
  out_ += "</ul>\n</section>\n";
}

void Writer::notes(const Report& report) {
  if (report.notes.empty()) return;
  out_ += "<section>\n";
  heading("Notes");
  out_ += "<ul class=\"notes\">\n";
  for (const Note& note : report.notes) out_ += "<li>" + escaped(note.text) + "</li>\n";
  out_ += "</ul>\n</section>\n";
}

void Writer::settings(const Report& report) {
  out_ += "<section>\n";
  heading("Settings");
  out_ += "<dl class=\"settings\">\n";
  const auto add = [this](const std::string& name, const std::string& value) {
    if (!value.empty()) out_ += "<dt>" + escaped(name) + "</dt><dd>" + escaped(value) + "</dd>\n";
  };
  add("analysis", report.analysis);
  for (const Choice& each : report.plan) add(each.name, settingText(each.setting));
  add("data", report.data.name);
  add("digest", report.data.digest);
  out_ += "</dl>\n</section>\n";
}

void Writer::article(const Report& report, std::size_t number) {
  requireWellFormed(report);
  const std::string id = "report-" + std::to_string(number);
  prefix_ = id + '-';
  out_ += "<article id=\"" + id + "\">\n";
  head(report);
  facts(report);
  for (const Table& each : report.tables) {
    if (each.display == Display::kAlways) table(each);
  }
  for (const Figure& each : report.figures) figure(each);
  methods(report);
  notes(report);
  settings(report);
  out_ += "</article>\n";
}

void Writer::end() {
  out_ += "</main>\n<footer>\n";
  if (!options_.call.empty()) out_ += "<pre><code>" + escaped(options_.call) + "</code></pre>\n";
  out_ += "<p>Made by " + escaped(options_.program + ' ' + options_.version) +
          ".</p>\n</footer>\n</body>\n</html>\n";
}

}  // namespace

std::string toHtml(std::span<const Report> reports, const HtmlOptions& options) {
  const bool several = reports.size() != 1;
  Writer writer(options, several);
  writer.begin(several ? options.title : reports[0].title);
  if (several) writer.contents(reports);
  for (std::size_t i = 0; i < reports.size(); ++i) writer.article(reports[i], i + 1);
  writer.end();
  return writer.take();
}

std::string toHtml(const Report& report, const HtmlOptions& options) {
  return toHtml(std::span(&report, 1), options);
}

}  // namespace survmeth::report
