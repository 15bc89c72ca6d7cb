// A wanted column while its file is read.
#ifndef FRAME_GROWING_H_
#define FRAME_GROWING_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/encoding.h"
#include "frame/frame.h"
#include "frame/intern.h"
#include "frame/missing.h"
#include "frame/numeral.h"
#include "frame/oddCells.h"
#include "frame/wanted.h"

namespace survmeth::frame {

// What the columns of a file share.
struct Manner {
  std::string source;
  Missing missing;
  NumberStyle numbers;
  std::string found;  // Dialect::found
  CellEncoding encoding;
};

// The cell of the current row waits until the row is known to be complete. Odd cells are gathered
// and refused at the end, so that a person sees them together.
class Growing {
 public:
  Growing(const Wanted& wanted, Manner& manner);

  // Takes the current row's cell; false when it is missing and must not be.
  bool take(std::string_view cell, std::size_t line);

  // The current row is complete.
  void keep();

  // Refuses the odd cells of the file.
  void check() const;

  bool isDate() const { return holds_ == Holds::kDates; }
  // Of numbers with the decimal mark of the file, and of those in groups of digits: the first.
  const OddCells& marked() const { return marked_; }
  const OddCells& grouped() const { return grouped_; }
  const std::string& name() const { return wanted_.name; }

  // The column of the kept rows; the object is empty then.
  Column taken();

 private:
  enum class Holds { kUndecided, kNumbers, kDates, kText };

  bool takeMissing();
  bool takeOther(std::string_view cell, std::size_t line);
  void takeNumber(std::string_view cell, double number, std::size_t line);
  void takeDate(std::string_view cell, double days, std::size_t line);
  void takeLabel(std::string_view cell, std::size_t line);
  bool decide(Holds holds);
  void becomeText();
  std::string orLabels() const;

  Wanted wanted_;
  Manner& manner_;
  Holds holds_;
  std::vector<double> numbersKept_;
  std::vector<std::uint32_t> codesKept_;
  std::vector<std::string> labels_;     // in the order in which they first stood
  std::vector<std::size_t> labelLine_;  // the line where each label first stood
  std::size_t missingCells_ = 0;        // whose lack left out their row
  double number_ = 0;
  std::uint32_t code_ = 0;
  OddCells numbers_, dates_, others_, tooLarge_, tooSmall_, ambiguous_, marked_, grouped_;
  Interner intern_;
};

}  // namespace survmeth::frame

#endif  // FRAME_GROWING_H_
