#include "cli/shell/numbers.h"

#include <charconv>
#include <cmath>

namespace cli {

std::string pValue(double p) {
  if (!std::isfinite(p)) return exact(p);
  if (p < 0.0001) return "<0.0001";
  return p < 0.001 ? fixed(p, 5) : fixed(p, 4);
}

}  // namespace cli
