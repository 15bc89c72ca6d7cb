// The tags of the picture are read, its texts pass as they are.
#include "report/svg.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "report/escape.h"

namespace survmeth::report {
namespace {

bool isSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

// Where the tag that begins at `at` ends: the place after its '>', which attributes may hold too.
std::size_t endOfTag(std::string_view svg, std::size_t at) {
  char quote = 0;
  for (; at < svg.size(); ++at) {
    const char c = svg[at];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      return at + 1;
    }
  }
  throw std::invalid_argument("picture: a tag does not end");
}

bool startsTag(std::string_view svg, std::size_t at, std::string_view name) {
  return svg.substr(at, name.size()) == name && at + name.size() < svg.size() &&
         !std::isalnum(static_cast<unsigned char>(svg[at + name.size()]));
}

// "#gpDot" and "url(#clip)" with the prefix after '#'; other values as they are.
std::string prefixed(std::string_view name, std::string_view value, std::string_view prefix) {
  if (name == "id") return std::string(prefix).append(value);
  const bool refers = name == "href" || name == "xlink:href";
  std::string result;
  for (std::size_t i = 0; i < value.size(); ++i) {
    result += value[i];
    if (value[i] != '#') continue;
    const bool inUrl = i >= 4 && value.substr(i - 4, 4) == "url(";
    if ((refers && i == 0) || inUrl) result += prefix;
  }
  return result;
}

// After the title and the description that follow the picture's first tag.
std::size_t afterTitles(std::string_view svg, std::size_t at) {
  for (;;) {
    std::size_t next = at;
    while (next < svg.size() && isSpace(svg[next])) ++next;
    std::string_view end;
    if (startsTag(svg, next, "<title")) end = "</title>";
    if (startsTag(svg, next, "<desc")) end = "</desc>";
    const std::size_t closing = end.empty() ? std::string_view::npos : svg.find(end, next);
    if (closing == std::string_view::npos) return at;
    at = closing + end.size();
  }
}

}  // namespace

void addPrefixed(std::string_view tag, std::string_view prefix, std::string& out) {
  std::size_t at = 0;
  while (at < tag.size()) {
    const std::size_t open = tag.find_first_of("\"'", at);
    if (open == std::string_view::npos) break;
    const std::size_t close = tag.find(tag[open], open + 1);
    std::size_t end = open;  // of the attribute's name
    while (end > at && (isSpace(tag[end - 1]) || tag[end - 1] == '=')) --end;
    std::size_t begin = end;
    while (begin > at && !isSpace(tag[begin - 1])) --begin;
    out += tag.substr(at, open + 1 - at);
    out += prefixed(tag.substr(begin, end - begin), tag.substr(open + 1, close - open - 1), prefix);
    out += tag[close];
    at = close + 1;
  }
  out += tag.substr(at);
}

std::string withTags(std::string_view svg,
                     const std::function<void(std::string_view, std::string&)>& tag) {
  std::string out;
  out.reserve(svg.size() + svg.size() / 16);
  for (std::size_t at = 0; at < svg.size();) {
    const std::size_t open = std::min(svg.find('<', at), svg.size());
    out += svg.substr(at, open - at);
    if (open == svg.size()) break;
    at = endOfTag(svg, open);
    tag(svg.substr(open, at - open), out);
  }
  return out;
}

std::string embedded(std::string_view svg, std::string_view prefix, std::string_view label) {
  std::size_t at = svg.find("<svg");
  while (at != std::string_view::npos && !startsTag(svg, at, "<svg")) at = svg.find("<svg", at + 4);
  const std::size_t close = svg.rfind("</svg>");
  if (at == std::string_view::npos || close == std::string_view::npos) {
    throw std::invalid_argument("picture: no <svg> element");
  }
  svg = svg.substr(0, close + 6);

  std::string out = "<svg role=\"img\" aria-label=\"" + escaped(label) + '"';
  const std::size_t end = endOfTag(svg, at);
  addPrefixed(svg.substr(at + 4, end - at - 4), prefix, out);
  return out + withTags(svg.substr(afterTitles(svg, end)),
                        [prefix](std::string_view tag, std::string& made) {
                          addPrefixed(tag, prefix, made);
                        });
}

}  // namespace survmeth::report
