// An SVG as a test reads it: its elements, its text with the room it takes, its plots by name. A
// small reader of XML that refuses what is not well-formed.
#ifndef TESTS_PICTURES_PAGE_H_
#define TESTS_PICTURES_PAGE_H_

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "pictures/pictures.h"
#include "report/report.h"

namespace survmeth::pictures::test {

struct Element {
  std::string name, text;  // the text directly within, references resolved
  std::map<std::string, std::string> attributes;
  std::vector<std::unique_ptr<Element>> children;

  // This element and all within it.
  std::vector<const Element*> all() const;
};

// The root. Throws std::runtime_error where the text is not well-formed.
std::unique_ptr<Element> readXml(const std::string& xml);

struct Text {
  std::string text;
  double x = 0, y = 0;  // its anchor; y of its middle
  double left = 0, top = 0, right = 0, bottom = 0;
  bool upright = false;
};

// The points of one subpath.
using Corners = std::vector<std::pair<double, double>>;

struct Page {
  explicit Page(const std::string& svg);

  double width = 0, height = 0;
  std::unique_ptr<Element> root;
  std::vector<Text> texts;

  const Text* find(const std::string& text) const;  // nullptr where there is none
  // How many plots have this name, and the subpaths of all of them.
  std::size_t plots(const std::string& name) const;
  std::vector<Corners> paths(const std::string& name) const;
  std::vector<Corners> polygons(const std::string& name) const;
  std::vector<std::pair<double, double>> markers(const std::string& name) const;
  // An attribute of the first path of the plot with this name.
  std::string stroke(const std::string& name, const std::string& attribute) const;

 private:
  std::vector<const Element*> plotsNamed(const std::string& name) const;
};

// Places in an SVG are rounded to hundredths.
inline constexpr double kPlace = 0.011;

// The figure drawn, and what its notes say.
Page pageOf(const report::Figure& figure, const Style& style = {});
std::vector<std::string> noteTexts(const report::Figure& figure, const Style& style = {});

// What is wrong with where text stands: off the page, or upon other text.
std::vector<std::string> misplaced(const Page& page);

}  // namespace survmeth::pictures::test

#endif  // TESTS_PICTURES_PAGE_H_
