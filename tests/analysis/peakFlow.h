// Peak expiratory flow by two meters, first readings (Bland and Altman 1986; data/pefr.csv), and
// what tests/reference/methcomp/deming.py makes of it.
#ifndef TESTS_ANALYSIS_PEAK_FLOW_H_
#define TESTS_ANALYSIS_PEAK_FLOW_H_

#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace survmeth::test {

inline const std::vector<double> kWright = {494, 395, 516, 434, 476, 557, 413, 442, 650,
                                            433, 417, 656, 267, 478, 178, 423, 427};
inline const std::vector<double> kMini = {512, 430, 520, 428, 500, 600, 364, 380, 658,
                                          445, 432, 626, 260, 477, 259, 350, 451};

inline std::vector<double> mapped(std::vector<double> values,
                                  const std::function<double(double)>& function) {
  for (double& value : values) value = function(value);
  return values;
}

// A number of tests/reference/methcomp/deming.csv.
inline double methodReference(const std::string& name) {
  std::ifstream file(SURVMETH_REFERENCE "/methcomp/deming.csv");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind(name + ",", 0) == 0) return std::stod(line.substr(name.size() + 1));
  }
  throw std::runtime_error("no reference " + name);
}

}  // namespace survmeth::test

#endif  // TESTS_ANALYSIS_PEAK_FLOW_H_
