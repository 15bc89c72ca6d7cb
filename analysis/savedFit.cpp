#include "analysis/savedFit.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "text/words.h"

namespace survmeth::analysis {
namespace {

using text::quote;
using Kind = JsonNode::Kind;

// FNV-1a over the values as they are, whatever the spaces between them.
// Source Fowler, Noll & Vo, RFC draft-eastlake-fnv-17 (2019)
class Checksum {
 public:
  void node(const JsonNode& node) {
    byte(static_cast<unsigned char>(node.kind));
    switch (node.kind) {
      case Kind::kNull:
        return;
      case Kind::kFlag:
        return byte(node.flag ? 1 : 0);
      case Kind::kNumber: {
        std::uint64_t bits;
        std::memcpy(&bits, &node.number, sizeof bits);
        return word(bits);
      }
      case Kind::kText:
        return text(node.text);
      case Kind::kArray:
        word(node.elements.size());
        for (const JsonNode& each : node.elements) this->node(each);
        return;
      case Kind::kObject:
        word(node.members.size());
        for (const JsonMember& each : node.members) {
          text(each.name);
          this->node(each.value);
        }
    }
  }

  std::string hexadecimal() const {
    std::string digits;
    for (int shift = 60; shift >= 0; shift -= 4) digits += "0123456789abcdef"[sum_ >> shift & 15];
    return digits;
  }

 private:
  void byte(unsigned char value) { sum_ = (sum_ ^ value) * 0x100000001b3u; }
  void word(std::uint64_t value) {
    for (int shift = 0; shift < 64; shift += 8) byte(static_cast<unsigned char>(value >> shift));
  }
  void text(const std::string& text) {
    word(text.size());
    for (const char c : text) byte(static_cast<unsigned char>(c));
  }

  std::uint64_t sum_ = 0xcbf29ce484222325u;
};

std::string checksumOf(const JsonNode& fit) {
  Checksum sum;
  sum.node(fit);
  return sum.hexadecimal();
}

// Numbers alone are the rule; the others take the place of texts among them.
void writeOne(report::JsonWriter& json, double number) {
  if (std::isnan(number)) return json.value("NaN");
  if (std::isinf(number)) return json.value(number > 0 ? "inf" : "-inf");
  json.value(number);
}

double exactNumber(const JsonNode& node, const std::string& what) {
  if (node.kind == Kind::kText) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    if (node.text == "NaN") return std::numeric_limits<double>::quiet_NaN();
    if (node.text == "inf") return kInfinite;
    if (node.text == "-inf") return -kInfinite;
  }
  return node.asNumber(what);
}

const std::vector<JsonNode>& listOf(const JsonNode& node, const std::string& what,
                                    std::size_t size) {
  const std::vector<JsonNode>& list = node.asArray(what);
  if (size == kAnySize || list.size() == size) return list;
  throw JsonError(node.place, what + " has " + text::counted(list.size(), "element", "elements") +
                                  "; expected " + std::to_string(size));
}

SavedFit fitOf(const JsonNode& root) {
  const std::string what = "the file";
  const JsonNode* schema = root.find("schema");
  if (schema == nullptr || schema->text.rfind("survmeth-fit/", 0) != 0) {
    throw NoSavedFit("the file is no saved fit; expected one that --save wrote");
  }
  if (schema->text != kFitSchema) {
    throw NoSavedFit("the fit has the layout " + quote(schema->text) + "; this program reads " +
                     quote(kFitSchema));
  }
  root.requireKnown({"schema", "version", "checksum", "fit"}, what);
  const JsonNode& fit = root.at("fit", what);
  const std::string& written = root.at("checksum", what).asText("the checksum");
  if (checksumOf(fit) != written) {
    throw NoSavedFit("the fit is damaged: its content has the checksum " + checksumOf(fit) +
                     ", and " + quote(written) + " was written");
  }
  const std::string& name = fit.at("analysis", "the fit").asText("the analysis");
  SavedFit saved;
  saved.declaration = findDeclaration(name);
  if (saved.declaration == nullptr || saved.declaration->lasting == nullptr) {
    throw NoSavedFit("the fit is of the analysis " + quote(name) +
                     ", of which this program keeps none");
  }
  saved.lasting = saved.declaration->lasting->read(fit.at("model", "the fit"));
  return saved;
}

}  // namespace

std::string savedFit(const Declaration& declaration, const report::Report& report,
                     const void* lasting, const std::string& version) {
  std::string fit;
  report::JsonWriter json(fit);
  json.beginObject();
  json.member("analysis", declaration.name);
  json.member("data", report.data.name);
  json.member("digest", report.data.digest);
  json.key("plan");
  json.beginObject();
  for (const report::Choice& each : report.plan) {
    json.key(each.name);
    std::visit([&json](const auto& value) { json.value(value); }, each.setting);
  }
  json.endObject();
  json.key("model");
  json.beginObject();
  declaration.lasting->write(lasting, json);
  json.endObject();
  json.endObject();
  return sealed(fit, version);
}

std::string sealed(const std::string& fit, const std::string& version) {
  std::string text;
  report::JsonWriter json(text);
  json.beginObject();
  json.member("schema", kFitSchema);
  json.member("version", version);
  json.member("checksum", checksumOf(parseJson(fit)));
  json.endObject();
  return text.substr(0, text.rfind('\n')) + ",\n  \"fit\": " + fit + "\n}\n";
}

SavedFit readSavedFit(std::string_view text) {
  JsonNode root;
  try {
    root = parseJson(text);
  } catch (const JsonError& wrong) {
    throw NoSavedFit(std::string("the file is cut off or no saved fit: ") + wrong.what());
  }
  try {
    return fitOf(root);
  } catch (const JsonError& wrong) {
    throw NoSavedFit(std::string("the file is no saved fit: ") + wrong.what());
  }
}

void writeExact(report::JsonWriter& json, const std::vector<double>& numbers) {
  json.beginArray(true);
  for (const double each : numbers) writeOne(json, each);
  json.endArray();
}

void writeExact(report::JsonWriter& json, const std::vector<std::vector<double>>& rows) {
  json.beginArray();
  for (const std::vector<double>& row : rows) writeExact(json, row);
  json.endArray();
}

void writeExact(report::JsonWriter& json, const numerics::SquareMatrix& matrix) {
  json.beginArray();
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    writeExact(json, std::vector<double>(matrix.row(i).begin(), matrix.row(i).end()));
  }
  json.endArray();
}

std::vector<double> exactNumbers(const JsonNode& node, const std::string& what, std::size_t size) {
  std::vector<double> numbers;
  for (const JsonNode& each : listOf(node, what, size)) {
    numbers.push_back(exactNumber(each, what));
  }
  return numbers;
}

std::vector<std::vector<double>> exactRows(const JsonNode& node, const std::string& what,
                                           std::size_t rows, std::size_t size) {
  std::vector<std::vector<double>> all;
  for (const JsonNode& each : listOf(node, what, rows)) {
    all.push_back(exactNumbers(each, what, size));
  }
  return all;
}

numerics::SquareMatrix exactMatrix(const JsonNode& node, const std::string& what,
                                   std::size_t size) {
  numerics::SquareMatrix matrix(size);
  const std::vector<std::vector<double>> rows = exactRows(node, what, size, size);
  for (std::size_t i = 0; i < size; ++i) {
    for (std::size_t j = 0; j < size; ++j) matrix(i, j) = rows[i][j];
  }
  return matrix;
}

std::vector<std::string> textsOf(const JsonNode& node, const std::string& what, std::size_t size) {
  std::vector<std::string> texts;
  for (const JsonNode& each : listOf(node, what, size)) texts.push_back(each.asText(what));
  return texts;
}

std::vector<std::size_t> indexesOf(const JsonNode& node, const std::string& what, std::size_t end) {
  std::vector<std::size_t> indexes;
  for (const JsonNode& each : listOf(node, what, kAnySize)) {
    const double value = each.asNumber(what);
    if (!(value >= 0 && value < static_cast<double>(end) && value == std::trunc(value))) {
      throw JsonError(each.place, what + " is out of range");
    }
    indexes.push_back(static_cast<std::size_t>(value));
  }
  return indexes;
}

}  // namespace survmeth::analysis
