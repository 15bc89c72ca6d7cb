// What becomes of gnuplot's SVG.
#include "pictures/svg.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace survmeth::pictures {
namespace {

constexpr std::string_view kDrawn =
    "<?xml version=\"1.0\"?>\n"
    "<svg \n width=\"9\"\n xmlns=\"http://www.w3.org/2000/svg\">\n"
    "<title>Gnuplot</title>\n"
    "<desc>Produced by GNUPLOT </desc>\n"
    "<defs><circle id='gpDot' r='0.5'/></defs>\n"
    "<g id=\"gnuplot_plot_1\" ><title>$d1 using 1:2</title>\n"
    "<use xlink:href='#gpDot' shape-rendering='crispEdges' x='1'/>\n"
    "</g>\n"
    "<g id=\"gnuplot_plot_2\" ><title>$d2</title>\n"
    "<text>a &gt;\n b</text>\n"
    "</g>\n</svg>\n";

constexpr std::string_view kEmbeddable =
    "<?xml version=\"1.0\"?>\n"
    "<svg \n width=\"9\"\n xmlns=\"http://www.w3.org/2000/svg\">\n"
    "<title>A &lt; B</title>\n"
    "<defs><circle id='f-gpDot' r='0.5'/></defs>\n"
    "<g id=\"f-gnuplot_plot_1\" ><title>grid</title>\n"
    "<use xlink:href='#f-gpDot' x='1'/>\n"
    "</g>\n"
    "<g id=\"f-gnuplot_plot_2\" >\n"
    "<text>a &gt;\n b</text>\n"
    "</g>\n</svg>\n";

TEST(Embedder, GivesIdsAPrefixAndPlotsTheirNamesHoweverThePictureIsCut) {
  const std::vector<std::string> names = {"grid", ""};
  for (std::size_t length = 1; length <= kDrawn.size(); ++length) {
    Embedder embedder("f", "A < B", names);
    std::string svg;
    for (std::size_t at = 0; at < kDrawn.size(); at += length) {
      embedder.add(kDrawn.substr(at, length), svg);
    }
    embedder.end(svg);
    ASSERT_EQ(svg, kEmbeddable) << "in pieces of " << length;
  }
}

}  // namespace
}  // namespace survmeth::pictures
