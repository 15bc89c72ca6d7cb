// A refusal of the facade with what a person is told to expect instead.
#ifndef ANALYSIS_REFUSAL_H_
#define ANALYSIS_REFUSAL_H_

#include <string>
#include <utility>

#include "engine/input.h"

namespace survmeth::analysis {

inline engine::Refusal expecting(const engine::Refusal& refused, std::string expected) {
  return {refused.role(), refused.row(), refused.what(), refused.column(), std::move(expected)};
}

// What `work` gives; what it refuses with what is expected.
template <class Work>
auto expecting(const char* expected, Work work) {
  try {
    return work();
  } catch (const engine::Refusal& refused) {
    throw expecting(refused, std::string(expected));
  }
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_REFUSAL_H_
