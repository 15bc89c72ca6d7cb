// How a person asks for data to be read, where the data do not say it themselves.
#ifndef FRAME_READING_H_
#define FRAME_READING_H_

#include <string>

#include "frame/missing.h"

namespace survmeth::frame {

struct Reading {
  Missing missing = {};
  std::string where = {};  // the condition that rows have to meet (expression.h); empty: all rows
  char delimiter = 0;      // between cells; 0: found from the header and the first rows
  char decimal = 0;        // '.' or ','; 0: found from the first rows
};

}  // namespace survmeth::frame

#endif  // FRAME_READING_H_
