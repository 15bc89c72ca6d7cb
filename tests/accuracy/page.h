// docs/accuracy.md, made from the records of the largest errors alone.
#ifndef TESTS_ACCURACY_PAGE_H_
#define TESTS_ACCURACY_PAGE_H_

#include <map>
#include <string>
#include <vector>

#include "accuracy.h"

namespace accuracy_tests {

// Recorded text: function -> {rows, largest error in ulp, and either the same / (1 + k) or that
// over the dense arguments}.
inline std::map<std::string, std::vector<std::string>> readRecord(const Library& library) {
  std::map<std::string, std::vector<std::string>> record;
  const survmeth::test::Csv csv(referencePath(library, "recorded.csv"));
  for (std::size_t i = 0; i < csv.rows(); ++i) {
    for (const std::string& column : csv.names()) {
      if (column != "function") record[csv.text("function", i)].push_back(csv.text(column, i));
    }
  }
  return record;
}

inline std::string pagePath() {
  return std::string(SURVMETH_REFERENCE) + "/../../docs/accuracy.md";
}

std::string page(const Library& dist, const Library& elementary);

}  // namespace accuracy_tests

#endif  // TESTS_ACCURACY_PAGE_H_
