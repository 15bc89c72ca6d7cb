// The progress of a part of a long work.
#ifndef NUMERICS_PART_OF_PROGRESS_H_
#define NUMERICS_PART_OF_PROGRESS_H_

#include <cstddef>

#include "numerics/progress.h"

namespace survmeth::numerics {

// Parts `part` .. `end` - 1 of the `parts` of a long work, all of one length.
class PartOfProgress : public Progress {
 public:
  PartOfProgress(Progress& whole, std::size_t part, std::size_t parts)
      : PartOfProgress(whole, part, part + 1, parts) {}
  PartOfProgress(Progress& whole, std::size_t part, std::size_t end, std::size_t parts)
      : whole_(whole),
        part_(static_cast<double>(part)),
        length_(static_cast<double>(end - part)),
        parts_(static_cast<double>(parts)) {}

 private:
  void show(double done) override { whole_.at((part_ + done * length_) / parts_); }

  Progress& whole_;
  double part_, length_, parts_;
};

}  // namespace survmeth::numerics

#endif  // NUMERICS_PART_OF_PROGRESS_H_
