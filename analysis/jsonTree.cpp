// The tree grows from the events of the library's parser; where a token stands is found from where
// the one before it ended.
#include "analysis/jsonTree.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "text/numbers.h"
#include "text/utf8.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

using text::quote;
using Kind = JsonNode::Kind;

constexpr std::size_t kDeepest = 100;

// Counts what the library has taken.
class Counting {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Counting(const char* at, std::size_t* taken) : at_(at), taken_(taken) {}
  reference operator*() const { return *at_; }
  Counting& operator++() {
    ++at_;
    ++*taken_;
    return *this;
  }
  bool operator==(const Counting& other) const { return at_ == other.at_; }
  bool operator!=(const Counting& other) const { return at_ != other.at_; }

 private:
  const char* at_;
  std::size_t* taken_;
};

class Growing {
 public:
  explicit Growing(std::string_view text) : text_(text) {
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") end_ = counted_ = 3;
  }

  std::size_t* taken() { return &taken_; }
  JsonNode take() { return std::move(root_); }

  bool null() {
    put(Kind::kNull, taken_);
    return true;
  }
  bool boolean(bool flag) {
    put(Kind::kFlag, taken_).flag = flag;
    return true;
  }
  bool number_integer(std::int64_t) { return number(); }
  bool number_unsigned(std::uint64_t) { return number(); }
  bool number_float(double, const std::string&) { return number(); }
  bool string(std::string& text) {
    put(Kind::kText, taken_).text = std::move(text);
    return true;
  }
  bool binary(const std::vector<std::uint8_t>&) { return false; }
  bool start_object(std::size_t) { return open(Kind::kObject); }
  bool start_array(std::size_t) { return open(Kind::kArray); }
  bool end_object() { return close(); }
  bool end_array() { return close(); }

  bool key(std::string& name) {
    JsonNode& object = *open_.back();
    const JsonPlace place = placeOf(begin());
    end_ = taken_;
    if (object.find(name) != nullptr) throw JsonError(place, quote(name) + " stands twice");
    object.members.push_back({std::move(name), place, {}});
    return true;
  }

  bool parse_error(std::size_t position, const std::string&, const std::exception& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 6: what is wrong".
    std::string what = error.what();
    for (const char* before : {"column ", ": "}) {
      const std::size_t at = what.find(before);
      if (at != std::string::npos) what.erase(0, at + std::string(before).size());
    }
    if (what.find("number overflow") != std::string::npos) what = "the number is too large";
    const std::size_t at = position == 0 ? 0 : position - 1;
    throw JsonError(placeOf(at < text_.size() ? at : text_.size()), text::printable(what));
  }

 private:
  // Where the token begins that was just read.
  std::size_t begin() const {
    const std::size_t at = text_.find_first_not_of(" \t\r\n,:", end_);
    return at == std::string_view::npos ? text_.size() : at;
  }

  // Asked of ascending places, so that the text is counted once.
  JsonPlace placeOf(std::size_t at) {
    for (; counted_ < at; ++counted_) {
      if (text_[counted_] == '\n') {
        place_ = {place_.line + 1, 1};
      } else if ((static_cast<unsigned char>(text_[counted_]) & 0xC0) != 0x80) {
        ++place_.column;
      }
    }
    return place_;
  }

  JsonNode& put(Kind kind, std::size_t end) {
    JsonNode* node = &root_;
    if (!open_.empty()) {
      JsonNode& parent = *open_.back();
      node = parent.kind == Kind::kArray ? &parent.elements.emplace_back()
                                         : &parent.members.back().value;
    }
    node->kind = kind;
    node->place = placeOf(begin());
    end_ = end;
    return *node;
  }

  bool number() {
    const std::size_t from = begin();
    std::size_t to = text_.find_first_not_of("0123456789+-.eE", from);
    if (to == std::string_view::npos) to = text_.size();
    JsonNode& node = put(Kind::kNumber, to);
    const std::optional<double> value = text::parseNumber(text_.substr(from, to - from));
    if (!value) throw JsonError(node.place, "the number is too large");
    node.number = *value;
    return true;
  }

  bool open(Kind kind) {
    JsonNode& node = put(kind, taken_);
    if (open_.size() == kDeepest) throw JsonError(node.place, "values are nested too deeply");
    open_.push_back(&node);
    return true;
  }

  bool close() {
    end_ = taken_;
    open_.pop_back();
    return true;
  }

  std::string_view text_;
  JsonNode root_;
  std::vector<JsonNode*> open_;
  std::size_t taken_ = 0, end_ = 0;
  std::size_t counted_ = 0;
  JsonPlace place_ = {1, 1};  // of what is counted
};

const char* nameOf(Kind kind) {
  switch (kind) {
    case Kind::kNull:
      return "null";
    case Kind::kFlag:
      return "true or false";
    case Kind::kNumber:
      return "a number";
    case Kind::kText:
      return "a text";
    case Kind::kArray:
      return "a list";
    case Kind::kObject:
      break;
  }
  return "an object";
}

void require(const JsonNode& node, Kind kind, const std::string& what) {
  if (node.kind == kind) return;
  throw JsonError(node.place, what + " is " + nameOf(node.kind) + "; expected " + nameOf(kind));
}

}  // namespace

JsonError::JsonError(JsonPlace place, const std::string& text)
    : std::runtime_error("line " + std::to_string(place.line) + ", column " +
                         std::to_string(place.column) + ": " + text) {}

const JsonNode* JsonNode::find(std::string_view name) const {
  for (const JsonMember& member : members) {
    if (member.name == name) return &member.value;
  }
  return nullptr;
}

const std::string& JsonNode::asText(const std::string& what) const {
  require(*this, Kind::kText, what);
  return text;
}

double JsonNode::asNumber(const std::string& what) const {
  require(*this, Kind::kNumber, what);
  return number;
}

const std::vector<JsonNode>& JsonNode::asArray(const std::string& what) const {
  require(*this, Kind::kArray, what);
  return elements;
}

const std::vector<JsonMember>& JsonNode::asObject(const std::string& what) const {
  require(*this, Kind::kObject, what);
  return members;
}

const JsonNode& JsonNode::at(std::string_view name, const std::string& what) const {
  asObject(what);
  const JsonNode* found = find(name);
  if (found == nullptr) throw JsonError(place, what + " has no member " + quote(name));
  return *found;
}

void JsonNode::requireKnown(std::initializer_list<const char*> known,
                            const std::string& what) const {
  const std::vector<std::string> names(known.begin(), known.end());
  for (const JsonMember& member : asObject(what)) {
    if (std::find(names.begin(), names.end(), member.name) != names.end()) continue;
    throw JsonError(member.place, what + " has no member " + quote(member.name) +
                                      "; expected one of " +
                                      text::nearestFirst(member.name, names));
  }
}

JsonNode parseJson(std::string_view text) {
  Growing growing(text);
  const char* first = text.data();
  nlohmann::json::sax_parse(Counting(first, growing.taken()),
                            Counting(first + text.size(), growing.taken()), &growing);
  return growing.take();
}

}  // namespace survmeth::analysis
