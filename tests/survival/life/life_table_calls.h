// Calls of the life-table estimator.
#ifndef TESTS_SURVIVAL_LIFE_LIFE_TABLE_CALLS_H_
#define TESTS_SURVIVAL_LIFE_LIFE_TABLE_CALLS_H_

#include <utility>
#include <vector>

#include "tests/survival/life/life_calls.h"

namespace survmeth::test {

inline LifeCall byWidth(std::vector<double> time, std::vector<double> status, double width) {
  LifeCall call;
  call.time = std::move(time);
  call.status = std::move(status);
  call.lifeTable = kYes;
  call.intervalsByWidth = kYes;
  call.width = width;
  return call;
}

inline LifeCall between(std::vector<double> time, std::vector<double> status,
                        std::vector<double> bounds) {
  LifeCall call = byWidth(std::move(time), std::move(status), 1.0);
  call.intervalsByWidth = kNo;
  call.bounds = std::move(bounds);
  return call;
}

// Ten subjects, intervals of 5; the numbers below are worked by hand.
inline LifeCall tenSubjects() {
  LifeCall call = byWidth({1, 3, 4, 5, 7, 8, 9, 12, 13, 14}, {1, 1, 0, 1, 1, 0, 1, 1, 0, 0}, 5.0);
  call.fill = 0.0;
  return call;
}

}  // namespace survmeth::test

#endif  // TESTS_SURVIVAL_LIFE_LIFE_TABLE_CALLS_H_
