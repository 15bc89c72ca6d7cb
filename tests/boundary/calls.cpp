#include "tests/boundary/calls.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "tests/boundary/call_families.h"

namespace survmeth::test {

double* Arrays::reals(std::vector<double> values) {
  values.push_back(0);  // never empty, so that there is an address
  reals_.push_back(std::move(values));
  return reals_.back().data();
}

int* Arrays::ints(std::vector<int> values) {
  values.push_back(0);
  ints_.push_back(std::move(values));
  return ints_.back().data();
}

double* Arrays::blank(int count, double fill) { return reals(std::vector<double>(count, fill)); }

int* Arrays::blankInts(int count, int fill) { return ints(std::vector<int>(count, fill)); }

double* Arrays::scalars(int count) {
  scalars_.emplace_back(count, 77.0);
  return scalars_.back().data();
}

int* Arrays::intScalar(int value) {
  intScalars_.push_back(value);
  return &intScalars_.back();
}

std::vector<unsigned char> Arrays::bytes(bool withScalars) const {
  std::vector<unsigned char> all;
  const auto append = [&all](const void* data, std::size_t size) {
    const auto* begin = static_cast<const unsigned char*>(data);
    all.insert(all.end(), begin, begin + size);
  };
  for (const auto& array : reals_) append(array.data(), array.size() * sizeof(double));
  for (const auto& array : ints_) append(array.data(), array.size() * sizeof(int));
  if (!withScalars) return all;
  for (const auto& array : scalars_) append(array.data(), array.size() * sizeof(double));
  for (const int& value : intScalars_) append(&value, sizeof value);
  return all;
}

void Arrays::visit(const std::function<void(const std::vector<double>&)>& real,
                   const std::function<void(const std::vector<int>&)>& integer) const {
  for (const auto& array : reals_) real(array);
  for (const auto& array : scalars_) real(array);
  for (const auto& array : ints_) integer(array);
  for (const int value : intScalars_) integer({value});
}

const std::vector<Call>& calls() {
  static const std::vector<Call> all = [] {
    std::vector<Call> list;
    for (auto part : {lifeCalls, coxCalls, paramCalls, competingCalls, diagnosticCalls}) {
      for (Call& call : part()) list.push_back(std::move(call));
    }
    return list;
  }();
  return all;
}

}  // namespace survmeth::test
