// What a facade function refuses, as a refusal that the faces place.
#ifndef ANALYSIS_REFUSAL_H_
#define ANALYSIS_REFUSAL_H_

#include <string>
#include <utility>

#include "analysis/invalidRequest.h"
#include "engine/input.h"

namespace survmeth::analysis {

// `role` is what the request's member means, `expected` ends the message.
inline engine::Refusal refusalOf(const InvalidRequest& refused, engine::Role role,
                                 std::string expected = {}) {
  return engine::Refusal(role, refused.index().value_or(engine::Refusal::kNone), refused.what(),
                         engine::Refusal::kNone, std::move(expected));
}

}  // namespace survmeth::analysis

#endif  // ANALYSIS_REFUSAL_H_
