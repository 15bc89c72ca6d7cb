#include "tests/pictures/page.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <stdexcept>

#include "pictures/lettering.h"

namespace survmeth::pictures::test {
namespace {

class Reader {
 public:
  explicit Reader(const std::string& xml) : xml_(xml) {}

  std::unique_ptr<Element> document() {
    skipSpace();
    if (starts("<?xml")) at_ = find("?>") + 2;
    skipSpace();
    std::unique_ptr<Element> root = element();
    skipSpace();
    need(at_ == xml_.size(), "text after the root");
    return root;
  }

 private:
  void need(bool holds, const std::string& what) const {
    if (!holds) throw std::runtime_error("XML at " + std::to_string(at_) + ": " + what);
  }
  bool starts(const std::string& with) const { return xml_.compare(at_, with.size(), with) == 0; }
  std::size_t find(const std::string& what) const {
    const std::size_t found = xml_.find(what, at_);
    need(found != std::string::npos, "no " + what);
    return found;
  }
  bool skipSpace() {
    const std::size_t before = at_;
    while (at_ < xml_.size() && std::isspace(static_cast<unsigned char>(xml_[at_])) != 0) ++at_;
    return at_ > before;
  }
  std::string name() {
    const std::size_t start = at_;
    while (at_ < xml_.size() && (std::isalnum(static_cast<unsigned char>(xml_[at_])) != 0 ||
                                 xml_[at_] == '-' || xml_[at_] == ':' || xml_[at_] == '_')) {
      ++at_;
    }
    need(at_ > start, "a name is missing");
    return xml_.substr(start, at_ - start);
  }
  std::string resolved(const std::string& raw) const {
    static const std::map<std::string, std::string> kNamed = {
        {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}, {"#39", "'"}};
    std::string text;
    for (std::size_t i = 0; i < raw.size(); ++i) {
      const auto byte = static_cast<unsigned char>(raw[i]);
      need(byte >= 0x20 || std::isspace(byte) != 0, "a control character");
      if (raw[i] != '&') {
        text += raw[i];
        continue;
      }
      const std::size_t end = raw.find(';', i);
      need(end != std::string::npos, "a bare &");
      const auto found = kNamed.find(raw.substr(i + 1, end - i - 1));
      need(found != kNamed.end(), "an unknown reference");
      text += found->second;
      i = end;
    }
    return text;
  }

  std::unique_ptr<Element> element() {
    need(starts("<"), "no element");
    ++at_;
    auto result = std::make_unique<Element>();
    result->name = name();
    while (skipSpace(), !starts(">") && !starts("/>")) {
      const std::string key = name();
      skipSpace();
      need(starts("="), "no value of " + key);
      ++at_;
      skipSpace();
      need(starts("'") || starts("\""), "no quotes around a value");
      const std::string quote(1, xml_[at_++]);
      const std::size_t end = find(quote);
      const std::string value = xml_.substr(at_, end - at_);
      need(value.find('<') == std::string::npos, "< in a value");
      need(result->attributes.emplace(key, resolved(value)).second, key + " twice");
      at_ = end + 1;
    }
    if (starts("/>")) {
      at_ += 2;
      return result;
    }
    ++at_;
    while (!starts("</")) {
      if (starts("<!--")) {
        at_ = find("-->") + 3;
      } else if (starts("<")) {
        result->children.push_back(element());
      } else {
        const std::size_t end = find("<");
        result->text += resolved(xml_.substr(at_, end - at_));
        at_ = end;
      }
    }
    at_ += 2;
    need(name() == result->name, result->name + " is closed by another");
    skipSpace();
    need(starts(">"), "no end");
    ++at_;
    return result;
  }

  const std::string& xml_;
  std::size_t at_ = 0;
};

// The numbers in a text, whatever stands between them.
std::vector<double> numbersIn(const std::string& text) {
  std::vector<double> numbers;
  const char* at = text.c_str();
  while (*at != 0) {
    char* end = nullptr;
    const double number = std::strtod(at, &end);
    if (end == at) {
      ++at;
    } else {
      numbers.push_back(number);
      at = end;
    }
  }
  return numbers;
}

const Element* titleOf(const Element& element) {
  for (const auto& child : element.children) {
    if (child->name == "title") return child.get();
  }
  return nullptr;
}

Corners cornersOf(const std::string& text) {
  Corners corners;
  const std::vector<double> numbers = numbersIn(text);
  for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
    corners.emplace_back(numbers[i], numbers[i + 1]);
  }
  return corners;
}

// gnuplot puts the place, size and alignment of a text on the group around it.
Text textOf(const Element& group, const Element& element) {
  Text text;
  text.text = element.text;
  const auto& attributes = group.attributes;
  const std::vector<double> place = numbersIn(attributes.at("transform"));
  text.upright = place.size() > 2 && place[2] == -90;
  const double size = std::atof(attributes.at("font-size").c_str());
  const double width = textWidth(text.text, size);
  const std::string& anchor = attributes.at("text-anchor");
  const double before = anchor == "start" ? 0 : anchor == "middle" ? width / 2 : width;
  // The base line lies 0.325 of the size under the middle.
  text.x = place[0] - (text.upright ? 0.325 * size : 0);
  text.y = place[1] - (text.upright ? 0 : 0.325 * size);
  if (text.upright) {
    text.left = text.x - size / 2;
    text.right = text.x + size / 2;
    text.top = text.y - (width - before);
    text.bottom = text.y + before;
  } else {
    text.left = text.x - before;
    text.right = text.left + width;
    text.top = text.y - size / 2;
    text.bottom = text.y + size / 2;
  }
  return text;
}

}  // namespace

std::vector<const Element*> Element::all() const {
  std::vector<const Element*> found = {this};
  for (const auto& child : children) {
    for (const Element* each : child->all()) found.push_back(each);
  }
  return found;
}

std::unique_ptr<Element> readXml(const std::string& xml) { return Reader(xml).document(); }

Page::Page(const std::string& svg) : root(readXml(svg)) {
  width = std::atof(root->attributes.at("width").c_str());
  height = std::atof(root->attributes.at("height").c_str());
  for (const Element* element : root->all()) {
    for (const auto& child : element->children) {
      if (child->name == "text") texts.push_back(textOf(*element, *child));
    }
  }
}

const Text* Page::find(const std::string& text) const {
  const auto found = std::find_if(texts.begin(), texts.end(),
                                  [&text](const Text& each) { return each.text == text; });
  return found == texts.end() ? nullptr : &*found;
}

std::vector<const Element*> Page::plotsNamed(const std::string& name) const {
  std::vector<const Element*> plots;
  for (const Element* element : root->all()) {
    const Element* title = element->name == "g" ? titleOf(*element) : nullptr;
    if (title != nullptr && title->text == name) plots.push_back(element);
  }
  return plots;
}

std::size_t Page::plots(const std::string& name) const { return plotsNamed(name).size(); }

std::vector<Corners> Page::paths(const std::string& name) const {
  std::vector<Corners> paths;
  for (const Element* plot : plotsNamed(name)) {
    for (const Element* element : plot->all()) {
      if (element->name != "path") continue;
      const std::string& d = element->attributes.at("d");
      for (std::size_t at = d.find('M'); at < d.size();) {
        const std::size_t next = std::min(d.find('M', at + 1), d.size());
        paths.push_back(cornersOf(d.substr(at, next - at)));
        at = next;
      }
    }
  }
  return paths;
}

std::vector<Corners> Page::polygons(const std::string& name) const {
  std::vector<Corners> polygons;
  for (const Element* plot : plotsNamed(name)) {
    for (const Element* element : plot->all()) {
      if (element->name == "polygon") {
        polygons.push_back(cornersOf(element->attributes.at("points")));
      }
    }
  }
  return polygons;
}

std::vector<std::pair<double, double>> Page::markers(const std::string& name) const {
  Corners markers;
  for (const Element* plot : plotsNamed(name)) {
    for (const Element* element : plot->all()) {
      if (element->name != "use") continue;
      const std::vector<double> place = numbersIn(element->attributes.at("transform"));
      markers.emplace_back(place[0], place[1]);
    }
  }
  return markers;
}

std::string Page::stroke(const std::string& name, const std::string& attribute) const {
  for (const Element* plot : plotsNamed(name)) {
    for (const Element* element : plot->all()) {
      if (element->name != "path" && element->name != "use") continue;
      const auto found = element->attributes.find(attribute);
      return found == element->attributes.end() ? "" : found->second;
    }
  }
  return "";
}

Page pageOf(const report::Figure& figure, const Style& style) {
  return Page(draw(compose(figure, style, Format::kSvg)));
}

std::vector<std::string> noteTexts(const report::Figure& figure, const Style& style) {
  std::vector<std::string> texts;
  for (const report::Note& note : compose(figure, style, Format::kSvg).notes) {
    texts.push_back(note.text);
  }
  return texts;
}

std::vector<std::string> misplaced(const Page& page) {
  std::vector<std::string> reports;
  for (std::size_t i = 0; i < page.texts.size(); ++i) {
    const Text& a = page.texts[i];
    if (a.left < 0 || a.top < 0 || a.right > page.width || a.bottom > page.height) {
      reports.push_back("off the page: " + a.text);
    }
    for (std::size_t j = 0; j < i; ++j) {
      const Text& b = page.texts[j];
      if (a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom) {
        reports.push_back("upon one another: " + a.text + " | " + b.text);
      }
    }
  }
  return reports;
}

}  // namespace survmeth::pictures::test
