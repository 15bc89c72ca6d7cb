// One array for several arguments: every entry point answers as if it had copied each of them in
// and, after the computation, back.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "tests/boundary/arguments.h"
#include "tests/boundary/calls.h"

namespace {

using survmeth::test::After;
using survmeth::test::ArrayArgument;
using survmeth::test::Call;
using survmeth::test::calls;
using survmeth::test::EntryPoint;
using survmeth::test::entryPoints;
using survmeth::test::Places;
using Bytes = std::vector<unsigned char>;

// Memory of exactly so many bytes, so that a sanitizer sees every step outside.
class Block {
 public:
  explicit Block(const Bytes& bytes) : size_(bytes.size()), memory_(new unsigned char[size_]) {
    std::copy(bytes.begin(), bytes.end(), memory_.get());
  }
  unsigned char* data() const { return memory_.get(); }
  Bytes bytes() const { return Bytes(memory_.get(), memory_.get() + size_); }

 private:
  std::size_t size_;
  std::unique_ptr<unsigned char[]> memory_;
};

// Arguments in one array, each from byte `offset` on.
struct Member {
  std::size_t argument;
  std::size_t offset;
};

// The arrays after a call in which every argument has its own.
std::vector<Bytes> apart(const EntryPoint& entry, const std::vector<Bytes>& before) {
  std::vector<Block> blocks;
  std::vector<unsigned char*> places;
  for (const Bytes& bytes : before) {
    blocks.emplace_back(bytes);
    places.push_back(blocks.back().data());
  }
  entry.call(Places(places));
  std::vector<Bytes> after;
  for (const Block& block : blocks) after.push_back(block.bytes());
  return after;
}

// The order in which arguments reach home: single results, then the arrays that are given back.
std::vector<std::size_t> homeward(const EntryPoint& entry) {
  std::vector<std::size_t> order;
  for (std::size_t a = 0; a < entry.arguments.size(); ++a) {
    if (entry.arguments[a].after == After::set) order.push_back(a);
  }
  std::vector<std::size_t> arrays = entry.homeward;
  if (arrays.empty()) {
    arrays.resize(entry.arguments.size());
    std::iota(arrays.begin(), arrays.end(), std::size_t{0});
  }
  for (const std::size_t a : arrays) {
    if (entry.arguments[a].after == After::givenBack) order.push_back(a);
  }
  return order;
}

// What the array of several arguments holds before: what the first of them hold, so that they keep
// sensible values, and before all the one that settles lengths.
Bytes contents(const EntryPoint& entry, std::vector<Member> members) {
  const auto settling = std::find_if(members.begin(), members.end(), [&](const Member& member) {
    return member.argument == entry.settling;
  });
  if (settling != members.end()) std::rotate(members.begin(), settling, settling + 1);
  Bytes array;
  std::vector<bool> filled;
  for (const Member& member : members) {
    const Bytes& bytes = entry.arguments[member.argument].bytes;
    const std::size_t size = std::max(array.size(), member.offset + bytes.size());
    array.resize(size);
    filled.resize(size);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      if (filled[member.offset + i]) continue;
      array[member.offset + i] = bytes[i];
      filled[member.offset + i] = true;
    }
  }
  return array;
}

// Calls with `members` in one array and compares with copies taken in and brought back.
testing::AssertionResult agrees(const EntryPoint& entry, const std::vector<Member>& members) {
  const Bytes array = contents(entry, members);
  std::vector<Bytes> before;
  for (const ArrayArgument& argument : entry.arguments) before.push_back(argument.bytes);
  for (const Member& member : members) {
    std::copy_n(array.begin() + static_cast<std::ptrdiff_t>(member.offset),
                before[member.argument].size(), before[member.argument].begin());
  }

  std::vector<Bytes> expected = apart(entry, before);
  Bytes expectedArray = array;
  for (const std::size_t a : homeward(entry)) {
    for (const Member& member : members) {
      if (member.argument != a) continue;
      std::copy(expected[a].begin(), expected[a].end(),
                expectedArray.begin() + static_cast<std::ptrdiff_t>(member.offset));
    }
  }

  const Block shared(array);
  std::vector<Block> blocks;
  std::vector<unsigned char*> places;
  for (const Bytes& bytes : before) {
    blocks.emplace_back(bytes);
    places.push_back(blocks.back().data());
  }
  for (const Member& member : members) places[member.argument] = shared.data() + member.offset;
  entry.call(Places(places));

  if (shared.bytes() != expectedArray) return testing::AssertionFailure() << "the shared array";
  for (std::size_t a = 0; a < blocks.size(); ++a) {
    const bool isMember = std::any_of(members.begin(), members.end(),
                                      [a](const Member& member) { return member.argument == a; });
    if (!isMember && blocks[a].bytes() != expected[a]) {
      return testing::AssertionFailure() << "argument " << a;
    }
  }
  return testing::AssertionSuccess();
}

TEST(SharedArguments, AreThoseOfEveryEntryPoint) {
  std::set<std::string> tested, called;
  for (const EntryPoint& entry : entryPoints()) {
    tested.insert(entry.name.substr(0, entry.name.find(',')));
  }
  for (const Call& call : calls()) called.insert(call.name.substr(0, call.name.find(',')));
  EXPECT_EQ(tested, called);
}

TEST(SharedArguments, OneArrayForTwoIsAsTwoCopies) {
  for (const EntryPoint& entry : entryPoints()) {
    for (std::size_t a = 0; a < entry.arguments.size(); ++a) {
      for (std::size_t b = a + 1; b < entry.arguments.size(); ++b) {
        if (entry.arguments[a].real != entry.arguments[b].real) continue;
        EXPECT_TRUE(agrees(entry, {{a, 0}, {b, 0}})) << entry.name << ", " << a << " and " << b;
      }
    }
  }
}

TEST(SharedArguments, ArraysThatOverlapInPartAreAsTwoCopies) {
  for (const EntryPoint& entry : entryPoints()) {
    for (std::size_t a = 0; a < entry.arguments.size(); ++a) {
      const std::size_t element = entry.arguments[a].real ? sizeof(double) : sizeof(int);
      const std::size_t half = entry.arguments[a].bytes.size() / element / 2 * element;
      for (std::size_t b = 0; b < entry.arguments.size() && half > 0; ++b) {
        if (a == b || entry.arguments[a].real != entry.arguments[b].real) continue;
        EXPECT_TRUE(agrees(entry, {{a, 0}, {b, half}})) << entry.name << ", " << a << " and " << b;
      }
    }
  }
}

// The dummy of a caller who wants a few results only, or all in a heap.
TEST(SharedArguments, OneArrayForAllResultsOrAllArgumentsIsAsCopies) {
  for (const EntryPoint& entry : entryPoints()) {
    for (const bool real : {true, false}) {
      std::vector<Member> results, all;
      for (std::size_t a = 0; a < entry.arguments.size(); ++a) {
        if (entry.arguments[a].real != real) continue;
        all.push_back({a, 0});
        if (entry.arguments[a].after != After::asBefore) results.push_back({a, 0});
      }
      EXPECT_TRUE(agrees(entry, results)) << entry.name;
      EXPECT_TRUE(agrees(entry, all)) << entry.name;
    }
  }
}

// What is only read may lie anywhere, and arrays that touch do not overlap.
TEST(SharedArguments, ArraysThatTouchKeepTheirOwn) {
  for (const EntryPoint& entry : entryPoints()) {
    std::vector<Member> members;
    std::size_t offset = 0;
    for (std::size_t a = 0; a < entry.arguments.size(); ++a) {
      if (!entry.arguments[a].real) continue;
      members.push_back({a, offset});
      offset += entry.arguments[a].bytes.size();
    }
    EXPECT_TRUE(agrees(entry, members)) << entry.name;
  }
}

}  // namespace
