#include "report/names.h"

namespace survmeth::report {

const char* nameOf(Kind kind) {
  switch (kind) {
    case Kind::kLabel:
      return "label";
    case Kind::kCount:
      return "count";
    case Kind::kTime:
      return "time";
    case Kind::kEstimate:
      return "estimate";
    case Kind::kProbability:
      return "probability";
    case Kind::kPValue:
      return "pValue";
    case Kind::kStatistic:
      break;
  }
  return "statistic";
}

const char* nameOf(Scale scale) {
  switch (scale) {
    case Scale::kLinear:
      return "linear";
    case Scale::kLog:
      return "log";
    case Scale::kCloglog:
      return "cloglog";
    case Scale::kProbit:
      return "probit";
    case Scale::kCategory:
      break;
  }
  return "category";
}

const char* nameOf(SeriesKind kind) {
  switch (kind) {
    case SeriesKind::kStep:
      return "step";
    case SeriesKind::kLine:
      return "line";
    case SeriesKind::kBand:
      return "band";
    case SeriesKind::kArea:
      return "area";
    case SeriesKind::kPoints:
      return "points";
    case SeriesKind::kSegments:
      return "segments";
    case SeriesKind::kBars:
      break;
  }
  return "bars";
}

}  // namespace survmeth::report
