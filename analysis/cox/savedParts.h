// What the parts of a lasting Cox fit share as JSON: words for what things are, and the refusal of
// parts that contradict one another.
#ifndef ANALYSIS_COX_SAVEDPARTS_H_
#define ANALYSIS_COX_SAVEDPARTS_H_

#include <string>
#include <utility>
#include <vector>

#include "analysis/jsonTree.h"
#include "frame/expression.h"
#include "model/design.h"
#include "report/jsonWriter.h"

namespace survmeth::analysis::saved {

template <class Value>
using Words = std::vector<std::pair<const char*, Value>>;
template <class Value>
const char* wordOf(const Words<Value>& words, Value value) {
  for (const auto& [word, its] : words) {
    if (its == value) return word;
  }
  return "";
}

template <class Value>
Value valueOf(const Words<Value>& words, const JsonNode& node, const std::string& what) {
  for (const auto& [word, value] : words) {
    if (node.asText(what) == word) return value;
  }
  throw JsonError(node.place, what + " is of no kind that is known");
}

[[noreturn]] inline void refuse(const JsonNode& node) {
  throw JsonError(node.place, "the model contradicts itself");
}
inline void require(bool holds, const JsonNode& node) {
  if (!holds) refuse(node);
}

// Throws JsonError where the text is no expression.
frame::Expression expressionOf(const JsonNode& node);

// Formula, variables with their bases, and terms: members of the model's object.
void writeCoding(const model::Coding& coding, report::JsonWriter& json);
// Throws JsonError.
model::Coding readCoding(const JsonNode& node);

}  // namespace survmeth::analysis::saved

#endif  // ANALYSIS_COX_SAVEDPARTS_H_
