// The look of the HTML report.
#ifndef REPORT_HTML_STYLE_H_
#define REPORT_HTML_STYLE_H_

namespace survmeth::report {

extern const char kHtmlStyle[];

}  // namespace survmeth::report

#endif  // REPORT_HTML_STYLE_H_
