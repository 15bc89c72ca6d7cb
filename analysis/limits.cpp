#include "analysis/limits.h"

namespace survmeth::analysis {

using engine::curves::Scale;

std::string limitsName(Scale scale) {
  switch (scale) {
    case Scale::kPlain:
      return "plain";
    case Scale::kLog:
      return "log";
    case Scale::kLogLog:
      return "log-log";
    case Scale::kLogit:
      return "logit";
    case Scale::kArcsine:
      break;
  }
  return "arcsine";
}

}  // namespace survmeth::analysis
