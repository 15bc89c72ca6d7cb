// Options of survmeth life that do not go together.
#include "analysis/life/request.h"

#include "analysis/option.h"

namespace survmeth::analysis {

engine::curves::Options LifeRequest::curves() const {
  engine::curves::Options options;
  options.scale = limits;
  options.level = 1 - alpha;
  return options;
}

void checkLife(const LifeRequest& request) {
  if (request.width && !request.bounds.empty()) {
    throw BadOption("width", "excludes --bounds; expected one of the two");
  }
  const std::string intervals = request.width ? "--width" : "--bounds";
  if (request.table == LifeTable::kKaplanMeier && request.intervals()) {
    throw BadOption("table", "km has no intervals; expected actuarial with " + intervals);
  }
  if (request.table == LifeTable::kActuarial && !request.intervals()) {
    throw BadOption("table", "actuarial needs intervals; expected --width or --bounds");
  }
}

}  // namespace survmeth::analysis
