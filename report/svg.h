// Pictures as part of an HTML document.
#ifndef REPORT_SVG_H_
#define REPORT_SVG_H_

#include <functional>
#include <string>
#include <string_view>

namespace survmeth::report {

// A picture with every tag written by `tag` (of the text from '<' to '>') and the text between tags
// as it is. Cost O(svg) beside the calls.
// In   svg  well-formed XML; std::invalid_argument where a tag does not end
std::string withTags(std::string_view svg,
                     const std::function<void(std::string_view tag, std::string& out)>& tag);

// A tag in which every id, and what refers to one, begins with `prefix`: letters, digits, '-'.
void addPrefixed(std::string_view tag, std::string_view prefix, std::string& out);

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
