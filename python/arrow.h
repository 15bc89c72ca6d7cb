// Tables by Arrow's C data interface, whoever made them: pyarrow, polars, duckdb and others hand
// over their memory in capsules. Nothing but the layout of the interface is known here.
#ifndef PYTHON_ARROW_H_
#define PYTHON_ARROW_H_

#include <nanobind/nanobind.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The structs of the interface: https://arrow.apache.org/docs/format/CDataInterface.html
extern "C" {
struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  std::int64_t flags;
  std::int64_t n_children;
  ArrowSchema** children;
  ArrowSchema* dictionary;
  void (*release)(ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  std::int64_t length;
  std::int64_t null_count;
  std::int64_t offset;
  std::int64_t n_buffers;
  std::int64_t n_children;
  const void** buffers;
  ArrowArray** children;
  ArrowArray* dictionary;
  void (*release)(ArrowArray*);
  void* private_data;
};

struct ArrowArrayStream {
  int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
  int (*get_next)(ArrowArrayStream*, ArrowArray*);
  const char* (*get_last_error)(ArrowArrayStream*);
  void (*release)(ArrowArrayStream*);
  void* private_data;
};
}

namespace survmeth::python {

// One of the structs above, released with its owner.
template <class Struct>
struct Release {
  void operator()(Struct* held) const {
    if (held->release != nullptr) held->release(held);
    delete held;
  }
};
template <class Struct>
using Held = std::unique_ptr<Struct, Release<Struct>>;

class ArrowTable {
 public:
  // In   data     has __arrow_c_stream__ or __arrow_c_array__
  //      isTable  the fields of a struct are columns; else all of it is one
  // Throws python_error, nanobind::value_error: what the maker of the data reports
  ArrowTable(nanobind::handle data, bool isTable);

  std::vector<std::string> names() const;
  std::int64_t rows() const;

  // The cells of the column with this number:
  //     (numbers,)                      doubles; NaN is missing
  //     (codes, labels, inOrder)        unsigned codes, all bits of the missing; dictionaries are
  //                                     in order
  // Doubles of one chunk without a missing cell are a view, of which `owner`, this table, is kept.
  // Throws nanobind::value_error: a type that is neither, whole numbers beyond 2**53
  nanobind::tuple column(std::size_t number, nanobind::handle owner) const;

 private:
  void take(ArrowArrayStream& stream);
  const ArrowSchema& schemaOf(std::size_t number) const;

  Held<ArrowSchema> schema_;
  std::vector<Held<ArrowArray>> chunks_;
  bool isTable_ = false;
};

}  // namespace survmeth::python

#endif  // PYTHON_ARROW_H_
