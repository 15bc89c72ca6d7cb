// Recodes the raw status column of competing-risks data.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

#include "Klikro/Klikro"
#include "survival/cuminc/cuminc.h"

namespace {

// The event codes found so far, in order of first appearance, with their positions. What counts is
// the code that the caller's list gives back: where the list is too short that is -1.
class CodeList {
 public:
  explicit CodeList(matrix* codes) : codes_(codes) {}

  // Position of the first code equal to `code`, appended where there is none.
  int positionOf(double code) {
    const auto known = positions_.find(code);
    if (known != positions_.end()) return known->second;
    codes_->vbset(++count_, 1, code);
    const double kept = codes_->vbget(count_, 1);
    // Not-a-number equals no code: each one is a new code.
    if (!std::isnan(kept)) positions_.emplace(kept, count_);
    return count_;
  }

  int count() const { return count_; }

 private:
  matrix* codes_;
  int count_ = 0;
  std::unordered_map<double, int> positions_;
};

}  // namespace

int CheckStatusFormat(matrix* status, int n, matrix* eventCodes, int* eventCodeCount,
                      int censorCode, matrix* recodedStatus) {
  const double censored = censorCode;
  // Rows past both columns all read -1 and cannot be written: one of them stands for the rest.
  const std::int64_t reachable =
      std::int64_t{std::max(status->count(), recodedStatus->count())} + 1;
  const int last = static_cast<int>(std::min<std::int64_t>(n, reachable));

  for (int i = 1; i <= last; ++i) recodedStatus->vbset(i, 1, status->vbget(i, 1));

  // The scan looks at the position after the last row too. It reads -1 there, so that data without
  // any event are refused only for censoring code -1; callers rely on one code, -1, otherwise.
  const std::int64_t scanEnd = std::min(std::int64_t{n} + 1, reachable);
  int first = 1;
  while (first <= scanEnd && status->vbget(first, 1) == censored) ++first;
  if (first > scanEnd) return -1;

  CodeList codes(eventCodes);
  recodedStatus->vbset(first, 1, codes.positionOf(status->vbget(first, 1)));

  // From row 2: a censored first row keeps its raw code. Callers see to that row themselves or
  // have censoring code 0.
  for (int i = 2; i <= last; ++i) {
    const double code = status->vbget(i, 1);
    recodedStatus->vbset(i, 1, code == censored ? 0 : codes.positionOf(code));
  }
  *eventCodeCount = codes.count();
  return 0;
}
