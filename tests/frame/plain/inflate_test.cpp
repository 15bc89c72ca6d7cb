// A build without zlib, of which only this source differs.
#include "frame/inflate.h"

#include <gtest/gtest.h>

#include "frame/inflate.cpp"
#include "tests/frame/reading.h"

namespace survmeth::frame {
namespace {

TEST(WithoutZlib, GzipIsRefusedByItsName) {
  EXPECT_EQ(refusal("\x1F\x8B\x08...", {number("t")}),
            "x: the file is packed by gzip, and this program was built without zlib; expected the "
            "file unpacked");
  EXPECT_EQ(numbersOf(read("t\n1\n", {number("t")}), "t"), (Numbers{1}));
}

}  // namespace
}  // namespace survmeth::frame
