// Writes the samples as HTML and JSON files into a folder, for the checks by other parsers:
//     report_samples FOLDER
#include <cstdio>
#include <fstream>
#include <string>

#include "report/html.h"
#include "report/json.h"
#include "tests/report/sample.h"

namespace survmeth::report::test {
namespace {

// A picture as a drawing program writes it to a file, with the label that tries most.
std::string picture(const Figure&) {
  return R"svg(<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE svg PUBLIC "-//W3C//DTD SVG 1.1//EN" "http://www.w3.org/Graphics/SVG/1.1/DTD/svg11.dtd">
<svg width="300" height="100" viewBox="0 0 300 100" xmlns="http://www.w3.org/2000/svg"
 xmlns:xlink="http://www.w3.org/1999/xlink">
<title>Drawing</title>
<desc>Made by a program</desc>
<defs><circle id='dot' r='3'/><clipPath id="clip"><rect width="300" height="100"/></clipPath></defs>
<g clip-path="url(#clip)"><use xlink:href='#dot' x='20' y='20'/>
<text x="20" y="60">id="dot" &lt;script&gt;alert(1)&lt;/script&gt; url(#clip)</text></g>
</svg>
)svg";
}

void write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace
}  // namespace survmeth::report::test

int main(int argc, char** argv) {
  using namespace survmeth::report;
  if (argc != 2) {
    std::fputs("usage: report_samples FOLDER\n", stderr);
    return 2;
  }
  const std::string folder = std::string(argv[1]) + '/';
  const Report reports[] = {test::sample(), test::hostile(), {}};
  const char* names[] = {"sample", "hostile", "empty"};
  HtmlOptions html;
  html.version = "1.2";
  html.call = "survmeth life 'a & b.csv' --time \"<weeks>\"";
  html.picture = test::picture;
  for (std::size_t i = 0; i < 3; ++i) {
    test::write(folder + names[i] + ".html", toHtml(reports[i], html));
    test::write(folder + names[i] + ".json", toJson(reports[i], {}));
    test::write(folder + names[i] + "-figures.json", toJson(reports[i], {.figures = true}));
  }
  html.title = "Three reports & more";
  test::write(folder + "several.html", toHtml(reports, html));
  return 0;
}
