// The exception of the facade.
#include "analysis/invalidRequest.h"

#include <utility>

namespace survmeth {

InvalidRequest::InvalidRequest(std::string member, const std::string& what,
                               std::optional<std::size_t> index)
    : std::invalid_argument(what), member_(std::move(member)), index_(index) {}

}  // namespace survmeth
