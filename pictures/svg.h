// What an SVG needs to stand in a page beside others.
#ifndef PICTURES_SVG_H_
#define PICTURES_SVG_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace survmeth::pictures {

// gnuplot's SVG with ids that begin with `id`, the figure's title, and the name of what each plot
// draws (which readers show and screen readers read) in place of gnuplot's own. It comes in pieces
// and is never held as a whole besides what it becomes.
class Embedder {
 public:
  Embedder(std::string id, std::string title, const std::vector<std::string>& names)
      : prefix_(std::move(id) + "-"), title_(std::move(title)), names_(names) {}

  // Appends to `svg` what the pieces so far become, but for an end that may not be whole.
  void add(std::string_view piece, std::string& svg);
  // The rest.
  void end(std::string& svg);

 private:
  void change(std::string_view lines, std::string& svg);

  std::string prefix_, title_;
  const std::vector<std::string>& names_;
  std::string waiting_;    // after the last line that ends in a tag
  std::size_t plots_ = 0;  // titles so far
};

}  // namespace survmeth::pictures

#endif  // PICTURES_SVG_H_
