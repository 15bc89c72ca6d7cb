#include "pictures/svg.h"

#include <algorithm>
#include <cstddef>

namespace survmeth::pictures {
namespace {

// Calls `replace` with what stands between `before` and `after` wherever both are found; the text
// with its answers in the place of all three. Labels cannot be taken for markup: gnuplot escapes
// what they would need, "<".
template <class Replace>
std::string replaced(const std::string& text, std::string_view before, std::string_view after,
                     Replace replace) {
  std::string result;
  std::size_t done = 0;
  for (;;) {
    const std::size_t start = text.find(before, done);
    if (start == std::string::npos) break;
    const std::size_t inner = start + before.size();
    const std::size_t end = text.find(after, inner);
    if (end == std::string::npos) break;
    result.append(text, done, start - done);
    result += replace(text.substr(inner, end - inner));
    done = end + after.size();
  }
  return result.append(text, done);
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string embeddable(const std::string& svg, const std::string& id, const std::string& title,
                       const std::vector<std::string>& names) {
  std::string result;
  // Only within tags: what stands between them may look like an attribute.
  for (std::size_t at = 0; at < svg.size();) {
    const std::size_t open = std::min(svg.find('<', at), svg.size());
    result.append(svg, at, open - at);
    const std::size_t close = svg.find('>', open);
    if (close == std::string::npos) {
      result.append(svg, open);
      break;
    }
    std::string tag = svg.substr(open, close + 1 - open);
    for (const char* mark : {"id='", "id=\"", "href='#"}) {
      const std::string quote(
          1, std::string_view(mark).find('"') == std::string_view::npos ? '\'' : '"');
      tag = replaced(tag, std::string(" ") + (mark[0] == 'h' ? "xlink:" : "") + mark, quote,
                     [&](const std::string& name) {
                       return std::string(" ") + (mark[0] == 'h' ? "xlink:" : "") + mark + id +
                              "-" + name + quote;
                     });
    }
    // Edges that are not smoothed are ragged where they are not upright.
    tag = replaced(tag, " shape-rendering='", "'", [](const std::string&) { return ""; });
    result += tag;
    at = close + 1;
  }
  result = replaced(result, "<desc>", "</desc>\n", [](const std::string&) { return ""; });
  std::size_t plot = 0;
  return replaced(result, "<title>", "</title>", [&](const std::string&) {
    const std::string& text = plot == 0 || plot > names.size() ? title : names[plot - 1];
    ++plot;
    return text.empty() ? std::string() : "<title>" + escaped(text) + "</title>";
  });
}

}  // namespace survmeth::pictures
