// JSON as a tree that knows where each value stands, for messages with line and column: plans,
// cases of the self-test, saved fits. The text is read by a library; numbers by ours, so that each
// is the nearest double wherever it is read.
#ifndef ANALYSIS_JSON_TREE_H_
#define ANALYSIS_JSON_TREE_H_

#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace survmeth::analysis {

// Both from 1; columns are characters.
struct JsonPlace {
  std::size_t line = 0, column = 0;
};

// A text that is no JSON, or not what was expected. what() is "line 3, column 7: ...".
class JsonError : public std::runtime_error {
 public:
  JsonError(JsonPlace place, const std::string& text);
};

struct JsonMember;

struct JsonNode {
  enum class Kind { kNull, kFlag, kNumber, kText, kArray, kObject };
  Kind kind = Kind::kNull;
  JsonPlace place;
  bool flag = false;
  double number = 0;
  std::string text;
  std::vector<JsonNode> elements;
  std::vector<JsonMember> members;  // in their order, each name once

  const JsonNode* find(std::string_view name) const;  // of an object; nullptr where there is none

  // What is expected, by name; each throws a JsonError that says so. `what` is what the value is:
  // "the title".
  const std::string& asText(const std::string& what) const;
  double asNumber(const std::string& what) const;
  const std::vector<JsonNode>& asArray(const std::string& what) const;
  const std::vector<JsonMember>& asObject(const std::string& what) const;
  // A member that has to be there.
  const JsonNode& at(std::string_view name, const std::string& what) const;
  // Refuses members of other names with the nearest of those that are known.
  void requireKnown(std::initializer_list<const char*> known, const std::string& what) const;
};

struct JsonMember {
  std::string name;
  JsonPlace place;  // of the name
  JsonNode value;
};

// Throws JsonError: no JSON, a name twice in one object, nested more than a hundred deep, a number
// that is too large for a double.
// Cost O(bytes).
JsonNode parseJson(std::string_view text);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_JSON_TREE_H_
