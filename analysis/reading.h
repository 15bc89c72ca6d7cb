// How a file is read, beside the columns that an analysis asks of it: options that every face which
// reads files has, and that the plan of a report repeats.
#ifndef ANALYSIS_READING_H_
#define ANALYSIS_READING_H_

#include <string>
#include <vector>

#include "analysis/option.h"
#include "frame/reading.h"
#include "report/report.h"

namespace survmeth::analysis {

struct Reading {
  std::vector<std::string> missing;  // words of missing cells; empty: the common ones
  std::string where;                 // the condition that rows have to meet; empty: all rows
  std::string delimiter;             // a sign or its name; empty: by header and first rows
  std::string decimal;               // . or ,; empty: by the first rows

  frame::Reading frame() const;
};

// Each bound to a member of Reading. Their names are no analysis' options. Setting one may throw
// BadOption.
const std::vector<Option>& readingOptions();
const Option* findReadingOption(const std::string& name);  // or nullptr

// Adds what was asked for to the plan of a report.
void echo(const Reading& reading, report::Report& report);

}  // namespace survmeth::analysis

#endif  // ANALYSIS_READING_H_
