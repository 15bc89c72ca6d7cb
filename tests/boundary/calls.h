// One valid call of every flat-array entry point, for tests that treat them all alike.
#ifndef TESTS_BOUNDARY_CALLS_H_
#define TESTS_BOUNDARY_CALLS_H_

#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace survmeth::test {

// The arrays of one call, at addresses that stay.
class Arrays {
 public:
  double* reals(std::vector<double> values);
  int* ints(std::vector<int> values);
  // Outputs that start with `fill`.
  double* blank(int count, double fill = 77);
  int* blankInts(int count, int fill = 77);
  // Results that go through a pointer to one value, which routines write when they have them.
  double* scalars(int count);
  int* intScalar(int value = 77);

  // Everything the arrays hold, bit for bit; the scalars after them, or left out.
  std::vector<unsigned char> bytes(bool withScalars = true) const;

  // The same array by array, in the order of their making within each kind.
  void visit(const std::function<void(const std::vector<double>&)>& real,
             const std::function<void(const std::vector<int>&)>& integer) const;

 private:
  std::deque<std::vector<double>> reals_;
  std::deque<std::vector<int>> ints_;
  std::deque<std::vector<double>> scalars_;
  std::deque<int> intScalars_;
};

struct Call {
  std::string name;
  bool isView;  // writes the caller's arrays as it goes
  // Puts the arguments of data set `seed` into the arrays; the function then makes the call.
  std::function<std::function<void()>(Arrays&, unsigned seed)> prepare;
};

const std::vector<Call>& calls();

}  // namespace survmeth::test

#endif  // TESTS_BOUNDARY_CALLS_H_
