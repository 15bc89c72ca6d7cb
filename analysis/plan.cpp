// From JSON to checked requests.
#include "analysis/plan.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "text/words.h"

namespace survmeth::analysis {
namespace {

using text::nearestFirst;
using text::quote;
using Kind = JsonNode::Kind;

bool isName(const std::string& text) {
  return !text.empty() && text.find_first_not_of(
                              "abcdefghijklmnopqrstuvwxyz"
                              "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_") == std::string::npos;
}

// A text that has to say something.
const std::string& wordOf(const JsonNode& value, const std::string& what) {
  const std::string& text = value.asText(what);
  if (text.empty()) throw JsonError(value.place, what + " is empty");
  return text;
}

const Declaration& declarationOf(const JsonNode& value, const std::string& what) {
  const std::string& name = value.asText(what + "'s \"analysis\"");
  if (const Declaration* found = findDeclaration(name)) return *found;
  std::vector<std::string> names;
  for (const Declaration& each : declarations()) names.push_back(each.name);
  throw JsonError(value.place, what + ": there is no analysis " + quote(name) +
                                   "; expected one of " + nearestFirst(name, names));
}

[[noreturn]] void refuseOption(const Declaration& declaration, const JsonMember& member,
                               const std::string& what) {
  std::vector<std::string> names;
  for (const Option& each : declaration.options) names.push_back(each.name);
  for (const Option& each : readingOptions()) names.push_back(each.name);
  throw JsonError(member.place, what + ": there is no option " + quote(member.name) +
                                    "; expected one of " + nearestFirst(member.name, names));
}

void setOptions(const JsonNode& options, const std::string& what, Planned& planned) {
  const Declaration& declaration = *planned.declaration;
  for (const JsonMember& member : options.asObject(what + "'s \"options\"")) {
    const std::string place = what + ": " + member.name;
    try {
      if (!setOption(declaration, planned.request.get(), planned.reading, member, place)) {
        refuseOption(declaration, member, what);
      }
    } catch (const BadOption& bad) {
      throw JsonError(member.value.place, place + ": " + bad.what());
    }
  }
}

void requireComplete(const Planned& planned, const JsonPlace& place, const std::string& what) {
  try {
    requireOptions(*planned.declaration, planned.request.get());
  } catch (const BadOption& bad) {
    throw JsonError(place, what + ": " + bad.option() + ": " + bad.what());
  }
}

Planned plannedOf(const JsonNode& node, std::size_t number) {
  const std::string what = "analysis " + std::to_string(number);
  node.requireKnown({"analysis", "name", "data", "options"}, what);
  Planned planned;
  planned.declaration = &declarationOf(node.at("analysis", what), what);
  planned.name = std::to_string(number) + "-" + planned.declaration->name;
  if (const JsonNode* name = node.find("name")) {
    planned.name = name->asText(what + "'s \"name\"");
    if (!isName(planned.name)) {
      throw JsonError(name->place, what + ": the name is " + quote(planned.name) +
                                       "; expected letters, digits, - and _");
    }
  }
  planned.data = wordOf(node.at("data", what), what + "'s \"data\"");
  if (planned.data == "-") {
    throw JsonError(node.find("data")->place,
                    what + ": the data are standard input; expected a file");
  }
  planned.request = planned.declaration->request();
  const JsonNode& options = node.at("options", what);
  setOptions(options, what, planned);
  requireComplete(planned, options.place, what);
  return planned;
}

}  // namespace

Plan planOf(const JsonNode& root) {
  const std::string what = "the plan";
  root.requireKnown({"schema", "title", "analyses"}, what);
  if (const JsonNode* schema = root.find("schema")) {
    const std::string& name = schema->asText("the plan's \"schema\"");
    if (name != kPlanSchema) {
      throw JsonError(schema->place,
                      "the plan's schema is " + quote(name) + "; expected " + quote(kPlanSchema));
    }
  }
  Plan plan;
  if (const JsonNode* title = root.find("title")) plan.title = title->asText("the plan's title");
  const JsonNode& analyses = root.at("analyses", what);
  for (const JsonNode& each : analyses.asArray("the plan's \"analyses\"")) {
    Planned planned = plannedOf(each, plan.analyses.size() + 1);
    for (const Planned& other : plan.analyses) {
      // Folders are named after analyses, also where case does not count.
      if (text::lowered(other.name) != text::lowered(planned.name)) continue;
      throw JsonError(each.place,
                      "two analyses have the name " + quote(planned.name) + "; expected each once");
    }
    plan.analyses.push_back(std::move(planned));
  }
  if (plan.analyses.empty()) {
    throw JsonError(analyses.place, "the plan has no analysis; expected at least one");
  }
  return plan;
}

bool setOption(const Declaration& declaration, void* request, Reading& reading,
               const JsonMember& member, const std::string& what) {
  const Option* option = declaration.find(member.name);
  void* target = request;
  if (option == nullptr) {
    option = findReadingOption(member.name);
    target = &reading;
  }
  if (option == nullptr) return false;
  Setting setting = settingOf(member.value, what);
  // An empty list is one of whatever is expected.
  if (option->type == Type::kNumbers && member.value.kind == Kind::kArray &&
      member.value.elements.empty()) {
    setting = std::vector<double>();
  }
  option->set(target, checked(*option, setting));
  return true;
}

Setting settingOf(const JsonNode& value, const std::string& what) {
  switch (value.kind) {
    case Kind::kFlag:
      return value.flag;
    case Kind::kNumber:
      return value.number;
    case Kind::kText:
      return value.text;
    case Kind::kArray:
      break;
    case Kind::kNull:
    case Kind::kObject:
      throw JsonError(value.place, what +
                                       (value.kind == Kind::kNull ? " is null" : " is an object") +
                                       "; expected true or false, a number, a text or a list");
  }
  std::vector<double> numbers;
  std::vector<std::string> texts;
  for (const JsonNode& each : value.elements) {
    if (each.kind == Kind::kNumber) numbers.push_back(each.number);
    if (each.kind == Kind::kText) texts.push_back(each.text);
    if (numbers.size() + texts.size() > 0 && (numbers.empty() || texts.empty()) &&
        (each.kind == Kind::kNumber || each.kind == Kind::kText)) {
      continue;
    }
    throw JsonError(each.place, what +
                                    " is a list of several kinds; expected numbers only or "
                                    "texts only");
  }
  if (!numbers.empty()) return numbers;
  return texts;
}

}  // namespace survmeth::analysis
