// What a status column says where events of several types compete: which code is censoring and
// which are events.
#ifndef MODEL_EVENT_TYPES_H_
#define MODEL_EVENT_TYPES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame/labels.h"

namespace survmeth::model {

struct EventTypes {
  frame::Labels status;                 // codes that rows hold
  std::optional<std::size_t> censored;  // into status.labels; none: nobody is
  std::vector<std::size_t> types;       // that are asked for, into status.labels
  std::vector<std::uint32_t> events;    // of each row: 0 censored, else 1 + the status

  bool competing() const { return status.labels.size() > (censored ? 2u : 1u); }
};

// In   censor   the code of the censored, "none" where nobody is; empty: the one label that means
//               no (coding.h)
//      event    the one type asked for; empty: all
// Throws engine::Refusal (kEvent): a code that no row holds, no or several labels that mean no.
EventTypes eventTypesOf(const frame::Column& status, const std::string& censor,
                        const std::string& event);

}  // namespace survmeth::model

#endif  // MODEL_EVENT_TYPES_H_
