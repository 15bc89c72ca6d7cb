// Writing of JSON so that a person can read it too.
#include "cli/shell/json.h"

#include <algorithm>
#include <cmath>

namespace cli {
namespace {

constexpr double kExactWhole = 9007199254740992.0;  // 2^53

bool isFlat(const Json& json) {
  return json.is_array() && std::none_of(json.begin(), json.end(), [](const Json& each) {
           return !each.is_number() && !each.is_null();
         });
}

// A file's name need not be UTF-8; what is not becomes U+FFFD.
std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void write(const Json& json, const std::string& indent, std::string& out) {
  if (!json.is_structured() || json.empty() || isFlat(json)) {
    out += dumped(json);
    return;
  }
  const std::string inner = indent + "  ";
  const bool object = json.is_object();
  out += object ? "{\n" : "[\n";
  bool first = true;
  for (const auto& [key, value] : json.items()) {
    if (!first) out += ",\n";
    first = false;
    out += inner;
    if (object) out += dumped(Json(key)) + ": ";
    write(value, inner, out);
  }
  out += '\n' + indent + (object ? '}' : ']');
}

}  // namespace

Json number(double value) {
  if (!std::isfinite(value)) return nullptr;
  if (value == std::trunc(value) && std::fabs(value) < kExactWhole) {
    return static_cast<std::int64_t>(value);
  }
  return value;
}

Json numbers(const std::vector<double>& values) {
  Json result = Json::array();
  for (const double value : values) result.push_back(number(value));
  return result;
}

std::string written(const Json& json) {
  std::string text;
  write(json, "", text);
  return text + '\n';
}

}  // namespace cli
