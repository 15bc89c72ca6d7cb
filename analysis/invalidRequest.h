// What a facade function throws when a request cannot be analysed: which member of the request is
// at fault, and at which element, so that a caller can point at the data behind it.
#ifndef ANALYSIS_INVALID_REQUEST_H_
#define ANALYSIS_INVALID_REQUEST_H_

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

namespace survmeth {

class InvalidRequest : public std::invalid_argument {
 public:
  InvalidRequest(std::string member, const std::string& what,
                 std::optional<std::size_t> index = std::nullopt);

  const std::string& member() const { return member_; }        // "time", "weight", ...
  std::optional<std::size_t> index() const { return index_; }  // from 0

 private:
  std::string member_;
  std::optional<std::size_t> index_;
};

}  // namespace survmeth

#endif  // ANALYSIS_INVALID_REQUEST_H_
