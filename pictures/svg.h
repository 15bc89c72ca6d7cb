// What an SVG needs to stand in a page beside others.
#ifndef PICTURES_SVG_H_
#define PICTURES_SVG_H_

#include <string>
#include <vector>

namespace survmeth::pictures {

// gnuplot's SVG with ids that begin with `id`, the figure's title, and the name of what each plot
// draws (which readers show and screen readers read) in place of gnuplot's own.
std::string embeddable(std::string svg, const std::string& id, const std::string& title,
                       const std::vector<std::string>& names);

}  // namespace survmeth::pictures

#endif  // PICTURES_SVG_H_
