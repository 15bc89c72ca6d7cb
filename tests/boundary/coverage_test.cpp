// The calls that the tests of this folder make: one of every flat-array entry point.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "tests/boundary/calls.h"

namespace {

// The C names in the lists of what libsurvival exports.
std::set<std::string> exportedNames() {
  std::set<std::string> names;
  for (const auto& list : std::filesystem::directory_iterator(SURVMETH_SYMBOLS)) {
    std::ifstream file(list.path());
    for (std::string name; std::getline(file, name);) {
      if (name.rfind("_Z", 0) != 0) names.insert(name);
    }
  }
  return names;
}

bool startsWith(const std::string& name, const std::string& start) {
  return name.rfind(start, 0) == 0;
}

TEST(BoundaryCalls, AreOneOfEveryEntryPoint) {
  const std::set<std::string> exported = exportedNames();
  std::set<std::string> entryPoints;
  for (const std::string& name : exported) {
    // A plain name is an entry point when the routine behind it, the same name after a c, is there.
    if (startsWith(name, "Cpp_") || startsWith(name, "VB_") || exported.count("c" + name) != 0) {
      entryPoints.insert(name);
    }
  }
  EXPECT_GT(entryPoints.size(), 0U);
  std::set<std::string> called;
  for (const survmeth::test::Call& call : survmeth::test::calls()) {
    called.insert(call.name.substr(0, call.name.find(',')));  // after the comma: which options
  }
  EXPECT_EQ(called, entryPoints);
}

TEST(BoundaryCalls, WorkInTheCallersArraysInTheViewFamilyOnly) {
  for (const survmeth::test::Call& call : survmeth::test::calls()) {
    EXPECT_EQ(call.isView, startsWith(call.name, "VB_")) << call.name;
  }
}

}  // namespace
