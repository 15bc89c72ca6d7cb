// Pictures as part of an HTML document.
#ifndef REPORT_SVG_H_
#define REPORT_SVG_H_

#include <string>
#include <string_view>

namespace survmeth::report {

// A picture that was a file of its own, as an element of a document that may hold others: without
// what stands before and after <svg> and without its title and description at the top, which
// `label` takes the place of for readers who do not see it; every id, and what refers to one,
// begins with `prefix`.
// In   svg      well-formed XML; std::invalid_argument where there is no <svg> element
//      prefix   letters, digits, '-'
//      label    text, not yet escaped
// Cost O(svg)
std::string embedded(std::string_view svg, std::string_view prefix, std::string_view label);

}  // namespace survmeth::report

#endif  // REPORT_SVG_H_
