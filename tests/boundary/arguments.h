// Every flat-array entry point with its arguments one by one, for tests that choose where each
// array lies.
#ifndef TESTS_BOUNDARY_ARGUMENTS_H_
#define TESTS_BOUNDARY_ARGUMENTS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace survmeth::test {

// What a caller finds in an argument after the call.
enum class After {
  asBefore,   // a copy was read
  givenBack,  // a copy of it came home, changed or not
  set         // a single result, which the routine sets as it goes
};

// One array, of exactly the elements that the declaration shows.
struct ArrayArgument {
  After after;
  bool real;                         // double, else int
  std::vector<unsigned char> bytes;  // what it holds before
};

// Where the arrays of a call lie, in the order of the arguments.
class Places {
 public:
  explicit Places(std::vector<unsigned char*> places) : places_(std::move(places)) {}
  double* d(std::size_t argument) const {
    return static_cast<double*>(static_cast<void*>(places_[argument]));
  }
  int* i(std::size_t argument) const {
    return static_cast<int*>(static_cast<void*>(places_[argument]));
  }

 private:
  std::vector<unsigned char*> places_;
};

struct EntryPoint {
  std::string name;
  std::vector<ArrayArgument> arguments;
  std::function<void(const Places&)> call;
  // Where arrays go home in another order than that of the arguments: all that do, first to last.
  std::vector<std::size_t> homeward = {};
  // An argument whose values settle how long the others have to be.
  std::size_t settling = SIZE_MAX;
};

const std::vector<EntryPoint>& entryPoints();

}  // namespace survmeth::test

#endif  // TESTS_BOUNDARY_ARGUMENTS_H_
