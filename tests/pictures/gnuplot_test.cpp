// Formats of files, and failures of gnuplot.
#include "pictures/gnuplot.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "pictures/glyphs.h"
#include "pictures/pictures.h"
#include "tests/pictures/page.h"
#include "tests/pictures/samples.h"

namespace survmeth::pictures {
namespace {

using report::Figure;
using test::Page, test::pageOf;

TEST(Formats, AreThoseOfTheFilesEnding) {
  EXPECT_EQ(formatOf("a.svg"), Format::kSvg);
  EXPECT_EQ(formatOf("x/y.z/a.PNG"), Format::kPng);
  EXPECT_EQ(formatOf("a.b.pdf"), Format::kPdf);
  for (const char* name : {"a.jpg", "svg", "a.svg/b", ""}) {
    try {
      formatOf(name);
      ADD_FAILURE() << name;
    } catch (const Refusal& refusal) {
      EXPECT_EQ(refusal.option, "plot");
      EXPECT_EQ(std::string(refusal.what()),
                "\"" + std::string(name) +
                    "\" has no picture's ending; expected a name that ends "
                    "in .svg, .png or .pdf");
    }
  }
}

TEST(Formats, APngHasTwicePixelsAndAPdfOnePage) {
  Style style;
  style.size = {500, 400};
  const std::string png = draw(compose(test::roc(), style, Format::kPng));
  ASSERT_GT(png.size(), 24u);
  EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(png.substr(16, 8), std::string("\0\0\x03\xe8\0\0\x03\x20", 8));  // 1000 x 800
  const std::string pdf = draw(compose(test::roc(), style, Format::kPdf));
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  EXPECT_NE(pdf.find("/MediaBox [ 0 0 500 400 ]"), std::string::npos);
}

TEST(Gnuplot, AMissingOneIsNamed) {
  const std::string path = std::getenv("PATH");
  ASSERT_EQ(setenv("PATH", "/nowhere", 1), 0);
  std::string said;
  try {
    draw(compose(test::roc(), Style{}, Format::kSvg));
  } catch (const Failure& failure) {
    said = failure.what();
  }
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(said,
            "the plot cannot be drawn: gnuplot is not installed or not on the PATH (Debian: "
            "apt-get install gnuplot-nox)");
}

TEST(Gnuplot, AFailingOneIsQuoted) {
  Drawing drawing = compose(test::roc(), Style{}, Format::kSvg);
  drawing.script += "plot sin(\n";
  try {
    draw(drawing);
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_NE(std::string(failure.what()).find("the plot cannot be drawn: gnuplot failed: "),
              std::string::npos);
  }
}

TEST(Gnuplot, CharactersThatNoFontHasAreNamedInsteadOfDrawn) {
  Figure figure = test::roc();
  figure.title = "gr\u00f6\u00dfe \u03a9 \u2fe0 \u2fe1";  // the last two are of no script
  for (const Format format : {Format::kPng, Format::kPdf}) {
    try {
      draw(compose(figure, Style{}, format));
      ADD_FAILURE() << "drawn";
    } catch (const Failure& failure) {
      EXPECT_STREQ(failure.what(),
                   "the plot cannot be drawn: no font here has \u2fe0 \u2fe1; draw an .svg, or "
                   "install a font that has them");
    }
  }
  EXPECT_NE(pageOf(figure).find("gr\u00f6\u00dfe \u03a9 \u2fe0 \u2fe1"), nullptr);
  figure.title = "gr\u00f6\u00dfe \u03a9 \u2212 x\u0304";
  EXPECT_EQ(draw(compose(figure, Style{}, Format::kPng)).substr(1, 3), "PNG");
}

TEST(Glyphs, ThoseOfEuropeanScriptsAreTakenForGranted) {
  std::set<std::string> characters;
  addUncommon("A\u00e9\u0151\u0394\u0416\u2264\u2212\ufe0f", characters);
  EXPECT_TRUE(characters.empty());
  addUncommon("\u65e5\u672c \U0001f600 \u65e5", characters);
  EXPECT_EQ(characters, (std::set<std::string>{"\u65e5", "\u672c", "\U0001f600"}));
}

}  // namespace
}  // namespace survmeth::pictures
