// The report as one HTML file that needs nothing else: no script, no network. It reads on paper, on
// narrow screens and by ear.
#ifndef REPORT_HTML_H_
#define REPORT_HTML_H_

#include <functional>
#include <span>
#include <string>

#include "report/numbers.h"
#include "report/report.h"

namespace survmeth::report {

struct HtmlOptions {
  std::string program = "survmeth";
  std::string version = "";
  std::string title = "";        // of a document of several reports
  std::string call = "";         // the command or plan that made it; may be empty
  int digits = kEstimateDigits;  // significant digits of estimates
  // A figure as SVG, with or without what an SVG file begins with; "" leaves the figure out.
  std::function<std::string(const Figure&)> picture = {};
};

// UTF-8. Several reports stand one after another below a table of contents, each on a new page when
// printed. Tables for files only are left out. Throws std::invalid_argument where a picture is no
// SVG. Cost O(cells and pictures).
std::string toHtml(std::span<const Report> reports, const HtmlOptions& options);
std::string toHtml(const Report& report, const HtmlOptions& options);

}  // namespace survmeth::report

#endif  // REPORT_HTML_H_
