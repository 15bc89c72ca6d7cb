// A fingerprint of the data that an analysis used: the same columns give the same digest in every
// face and on every machine.
#ifndef ANALYSIS_DIGEST_H_
#define ANALYSIS_DIGEST_H_

#include <string>

#include "frame/frame.h"

namespace survmeth::analysis {

// 32 hexadecimal digits over the names, types and cells of all columns, in their order. All NaNs
// are one value, and so are 0 and -0. Tells data apart, does not protect against forgery.
// Cost O(cells).
std::string digest(const frame::Frame& data);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_DIGEST_H_
