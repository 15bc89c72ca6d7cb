#include "python/arrow.h"

#include <nanobind/ndarray.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <cstring>
#include <limits>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "frame/memory.h"
#include "python/arrowCells.h"
#include "text/numbers.h"

namespace survmeth::python {
namespace {

namespace nb = nanobind;
using Numbers = nb::ndarray<nb::numpy, const double, nb::ndim<1>>;
using Codes = nb::ndarray<nb::numpy, const std::uint32_t, nb::ndim<1>>;

constexpr std::uint32_t kMissing = frame::Column::kMissing;
constexpr std::int64_t kLargestWhole = std::int64_t{1} << 53;

template <class Cell>
auto arrayOf(std::vector<Cell> cells) {
  auto* kept = new std::vector<Cell>(std::move(cells));
  const nb::capsule owner(
      kept, [](void* held) noexcept { delete static_cast<std::vector<Cell>*>(held); });
  return nb::ndarray<nb::numpy, const Cell, nb::ndim<1>>(kept->data(), {kept->size()}, owner);
}

// What is in a capsule is taken out of it: it releases what is left there.
template <class Struct>
Held<Struct> moved(nb::handle capsule, const char* name) {
  auto* there = static_cast<Struct*>(PyCapsule_GetPointer(capsule.ptr(), name));
  if (there == nullptr) throw nb::python_error();
  Held<Struct> here(new Struct(*there));
  there->release = nullptr;
  return here;
}

// Doubles do not tell these apart from their neighbours. Unsigned ones beyond 2**63 are negative.
bool isBeyondDoubles(const ArrowCells& cells, std::int64_t whole) {
  return whole > kLargestWhole || whole < (cells.isUnsigned() ? 0 : -kLargestWhole);
}

nb::tuple numbersOf(const std::vector<ArrowCells>& chunks, ArrowKind kind, std::int64_t rows,
                    nb::handle owner) {
  if (kind == ArrowKind::kDouble && chunks.size() == 1 && !chunks[0].hasMissing()) {
    if (const double* cells = chunks[0].doubles()) {
      return nb::make_tuple(Numbers(cells, {static_cast<std::size_t>(rows)}, owner));
    }
  }
  std::vector<double> numbers;
  numbers.reserve(static_cast<std::size_t>(rows));
  for (const ArrowCells& chunk : chunks) {
    for (std::int64_t row = 0; row < chunk.rows(); ++row) {
      if (chunk.missing(row)) {
        numbers.push_back(std::numeric_limits<double>::quiet_NaN());
        continue;
      }
      if (kind == ArrowKind::kWhole && isBeyondDoubles(chunk, chunk.whole(row))) {
        throw nb::value_error("there are whole numbers beyond 2**53");
      }
      numbers.push_back(chunk.number(row));
    }
  }
  return nb::make_tuple(arrayOf(std::move(numbers)));
}

// Labels in the order in which they come, each once.
class Labels {
 public:
  std::uint32_t codeOf(std::string_view label) {
    const auto [found, isNew] =
        codes_.try_emplace(std::string(label), static_cast<std::uint32_t>(labels_.size()));
    if (isNew) labels_.emplace_back(label);
    return found->second;
  }
  const std::vector<std::string>& labels() const { return labels_; }

 private:
  std::unordered_map<std::string, std::uint32_t> codes_;
  std::vector<std::string> labels_;
};

std::string labelOf(const ArrowCells& cells, ArrowKind kind, std::int64_t row) {
  switch (kind) {
    case ArrowKind::kText:
      return std::string(cells.text(row));
    case ArrowKind::kTruth:
      return cells.truth(row) ? "True" : "False";
    default:
      return text::exact(cells.number(row));
  }
}

nb::tuple labelsOf(const std::vector<ArrowCells>& chunks, ArrowKind kind, std::int64_t rows) {
  Labels labels;
  std::vector<std::uint32_t> codes;
  codes.reserve(static_cast<std::size_t>(rows));
  for (const ArrowCells& chunk : chunks) {
    for (std::int64_t row = 0; row < chunk.rows(); ++row) {
      codes.push_back(chunk.missing(row) ? kMissing : labels.codeOf(labelOf(chunk, kind, row)));
    }
  }
  return nb::make_tuple(arrayOf(std::move(codes)), labels.labels(), false);
}

// Each chunk may have a dictionary of its own: the first's order holds, others add to it.
nb::tuple dictionaryOf(const ArrowSchema& schema, const std::vector<ArrowCells>& chunks,
                       const std::vector<const ArrowArray*>& arrays, std::int64_t rows) {
  const ArrowKind kind = kindOf(schema.dictionary->format);
  if (kind == ArrowKind::kOther || kindOf(schema.format) != ArrowKind::kWhole) {
    throw nb::value_error("the column is a dictionary of neither texts nor numbers");
  }
  Labels labels;
  std::vector<std::uint32_t> codes;
  codes.reserve(static_cast<std::size_t>(rows));
  for (std::size_t k = 0; k < chunks.size(); ++k) {
    const ArrowCells values(*schema.dictionary, *arrays[k]->dictionary, nullptr);
    std::vector<std::uint32_t> code;
    for (std::int64_t i = 0; i < values.rows(); ++i) {
      code.push_back(values.missing(i) ? kMissing : labels.codeOf(labelOf(values, kind, i)));
    }
    for (std::int64_t row = 0; row < chunks[k].rows(); ++row) {
      const std::int64_t index = chunks[k].missing(row) ? -1 : chunks[k].whole(row);
      if (index >= static_cast<std::int64_t>(code.size())) {
        throw nb::value_error("an index of the dictionary is out of range");
      }
      codes.push_back(index < 0 ? kMissing : code[static_cast<std::size_t>(index)]);
    }
  }
  return nb::make_tuple(arrayOf(std::move(codes)), labels.labels(), true);
}

}  // namespace

ArrowTable::ArrowTable(nb::handle data, bool isTable) {
  if (nb::hasattr(data, "__arrow_c_stream__")) {
    const nb::object capsule = data.attr("__arrow_c_stream__")();
    take(*moved<ArrowArrayStream>(capsule, "arrow_array_stream"));
  } else {
    const auto capsules = nb::cast<nb::tuple>(data.attr("__arrow_c_array__")());
    schema_ = moved<ArrowSchema>(capsules[0], "arrow_schema");
    chunks_.push_back(moved<ArrowArray>(capsules[1], "arrow_array"));
  }
  isTable_ = isTable && std::string_view(schema_->format) == "+s";
}

void ArrowTable::take(ArrowArrayStream& stream) {
  const auto require = [&stream](int code) {
    if (code == 0) return;
    const char* why = stream.get_last_error(&stream);
    throw nb::value_error(why != nullptr ? why : std::strerror(code));
  };
  schema_ = Held<ArrowSchema>(new ArrowSchema{});
  require(stream.get_schema(&stream, schema_.get()));
  while (true) {
    Held<ArrowArray> chunk(new ArrowArray{});
    require(stream.get_next(&stream, chunk.get()));
    if (chunk->release == nullptr) return;
    chunks_.push_back(std::move(chunk));
  }
}

const ArrowSchema& ArrowTable::schemaOf(std::size_t number) const {
  return isTable_ ? *schema_->children[number] : *schema_;
}

std::vector<std::string> ArrowTable::names() const {
  std::vector<std::string> names;
  const auto count = isTable_ ? static_cast<std::size_t>(schema_->n_children) : 1;
  for (std::size_t k = 0; k < count; ++k) {
    const char* name = schemaOf(k).name;
    names.emplace_back(name != nullptr ? name : "");
  }
  return names;
}

std::int64_t ArrowTable::rows() const {
  std::int64_t rows = 0;
  for (const Held<ArrowArray>& chunk : chunks_) rows += chunk->length;
  return rows;
}

nb::tuple ArrowTable::column(std::size_t number, nb::handle owner) const {
  const ArrowSchema& schema = schemaOf(number);
  std::vector<ArrowCells> chunks;
  std::vector<const ArrowArray*> arrays;
  for (const Held<ArrowArray>& chunk : chunks_) {
    arrays.push_back(isTable_ ? chunk->children[number] : chunk.get());
    chunks.emplace_back(schema, *arrays.back(), isTable_ ? chunk.get() : nullptr);
  }
  if (schema.dictionary != nullptr) return dictionaryOf(schema, chunks, arrays, rows());
  switch (const ArrowKind kind = kindOf(schema.format)) {
    case ArrowKind::kOther:
      throw nb::value_error(
          ("the column is of Arrow's type \"" + std::string(schema.format) + "\"").c_str());
    case ArrowKind::kText:
    case ArrowKind::kTruth:
    case ArrowKind::kNothing:
      return labelsOf(chunks, kind, rows());
    default:
      return numbersOf(chunks, kind, rows(), owner);
  }
}

}  // namespace survmeth::python
