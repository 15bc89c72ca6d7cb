#include "pictures/svg.h"

#include <cstddef>
#include <string_view>

#include "report/escape.h"
#include "report/svg.h"

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

void Embedder::add(std::string_view piece, std::string& svg) {
  const std::size_t last = piece.rfind(">\n");
  if (last == std::string_view::npos) {
    waiting_ += piece;
    return;
  }
  waiting_ += piece.substr(0, last + 2);
  change(waiting_, svg);
  waiting_ = piece.substr(last + 2);
}

void Embedder::end(std::string& svg) {
  change(waiting_, svg);
  waiting_.clear();
}

void Embedder::change(std::string_view lines, std::string& svg) {
  std::string changed = report::withTags(lines, [this](std::string_view tag, std::string& out) {
    // Edges that are not smoothed are ragged where they are not upright.
    constexpr std::string_view kRagged = " shape-rendering='crispEdges'";
    std::string plain(tag);
    const std::size_t at = plain.find(kRagged);
    if (at != std::string::npos) plain.erase(at, kRagged.size());
    report::addPrefixed(plain, prefix_, out);
  });
  changed = replaced(changed, "<desc>", "</desc>\n", [](const std::string&) { return ""; });
  svg += replaced(changed, "<title>", "</title>", [this](const std::string&) {
    const std::string& text = plots_ == 0 || plots_ > names_.size() ? title_ : names_[plots_ - 1];
    ++plots_;
    return text.empty() ? std::string() : "<title>" + report::escaped(text) + "</title>";
  });
}

}  // namespace survmeth::pictures
