// What the procedures ask of a family of models: fits of some of its terms.
#ifndef PROCEDURES_FAMILY_H_
#define PROCEDURES_FAMILY_H_

#include <cstddef>
#include <limits>
#include <vector>

#include "numerics/progress.h"

namespace survmeth::procedures {

inline constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

struct Test {
  double chiSquare = kAbsent;
  std::size_t degreesOfFreedom = 0;
  double pValue = kAbsent;
};

// The model of some terms.
struct Fit {
  bool exists = false;  // whether it has a maximum
  double logLikelihood = kAbsent;
  std::size_t parameters = 0;
  std::vector<Test>
      terms;  // Wald's, of each of the family's terms; absent of those not in the model
};

// A model whose terms can leave and come back, on the same rows.
class Family {
 public:
  Family() = default;
  Family(const Family&) = delete;
  Family& operator=(const Family&) = delete;
  virtual ~Family() = default;

  virtual std::size_t terms() const = 0;
  // Whether all that term `inner` is made of is in term `outer`, which has more: a and a:b.
  virtual bool isWithin(std::size_t inner, std::size_t outer) const = 0;
  // The model of the terms of which `in` is true; there may be none.
  virtual Fit fit(const std::vector<bool>& in, numerics::Progress& progress) = 0;
};

}  // namespace survmeth::procedures

#endif  // PROCEDURES_FAMILY_H_
