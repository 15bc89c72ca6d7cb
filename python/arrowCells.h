// Cells of one chunk of an Arrow column.
#ifndef PYTHON_ARROW_CELLS_H_
#define PYTHON_ARROW_CELLS_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "python/arrow.h"

namespace survmeth::python {

// What a format of the interface comes to here.
enum class ArrowKind { kDouble, kNumber, kWhole, kTruth, kText, kNothing, kOther };
ArrowKind kindOf(std::string_view format);

// A chunk as rows 0 .. rows - 1: offsets and the missing of the struct around it are taken in.
class ArrowCells {
 public:
  // In   batch   the struct around the column, or nullptr
  ArrowCells(const ArrowSchema& schema, const ArrowArray& array, const ArrowArray* batch);

  std::int64_t rows() const { return rows_; }
  bool hasMissing() const { return validity_ != nullptr || batchValidity_ != nullptr || nothing_; }
  bool missing(std::int64_t row) const;

  // Of kDouble: where they lie, or nullptr where the memory is not aligned as doubles are.
  const double* doubles() const;
  // Of kDouble, kNumber, kWhole: days of dates and durations.
  double number(std::int64_t row) const;
  // Of kWhole; unsigned numbers beyond 2**63 are -1.
  std::int64_t whole(std::int64_t row) const;
  bool isUnsigned() const;
  bool truth(std::int64_t row) const;
  std::string_view text(std::int64_t row) const;  // of kText

 private:
  template <class Cell>
  Cell at(std::int64_t row) const;
  std::string_view view(std::int64_t row) const;
  double decimal(std::int64_t row) const;

  const ArrowArray& array_;
  std::string_view format_;
  std::int64_t offset_, rows_;
  const std::uint8_t* validity_ = nullptr;
  const std::uint8_t* batchValidity_ = nullptr;
  std::int64_t batchOffset_ = 0;
  bool nothing_ = false;  // of the type null
  double units_ = 1;      // of dates, durations and times: in a day
  int bits_ = 0, scale_ = 0;
};

}  // namespace survmeth::python

#endif  // PYTHON_ARROW_CELLS_H_
