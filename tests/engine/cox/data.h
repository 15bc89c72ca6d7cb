// Data sets of the reference cases as the engine takes them.
#ifndef TESTS_ENGINE_COX_DATA_H_
#define TESTS_ENGINE_COX_DATA_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "engine/cox/fit.h"
#include "tests/support/codes.h"
#include "tests/support/csv.h"

namespace survmeth::test {

inline std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::stringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

// Columns that own what the engine's spans look at.
struct CoxData {
  std::vector<double> entry, exit, weight, offset;
  std::vector<std::uint32_t> event, stratum, cluster;
  std::size_t strata = 1, clusters = 0;
  std::vector<std::vector<double>> columns;
  std::vector<std::string> names;
  std::vector<std::size_t> term;  // empty: every column a term of its own
  engine::WeightKind weightKind = engine::WeightKind::kFrequencies;

  engine::Response response() const { return {entry, exit, event, 1}; }
  engine::Rows rows() const {
    return {weight, weightKind, offset, stratum, strata, cluster, clusters};
  }
  engine::Design design() const {
    engine::Design design;
    for (std::size_t j = 0; j < columns.size(); ++j) {
      design.columns.emplace_back(columns[j]);
      design.names.push_back(j < names.size() ? names[j] : "x" + std::to_string(j + 1));
      design.term.push_back(term.empty() ? j : term[j]);
      while (design.termNames.size() <= design.term.back()) {
        design.termNames.push_back("term" + std::to_string(design.termNames.size() + 1));
      }
    }
    return design;
  }
  engine::cox::Fit fit(const engine::cox::Options& options = {}) const {
    numerics::Progress progress;
    return engine::cox::fit(response(), rows(), design(), options, progress);
  }
};

// The lung data with weights and two strata.
inline CoxData weightedLung() {
  const Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/lung.csv");
  CoxData data;
  data.exit = file.numbers("time");
  for (const double event : file.numbers("event")) data.event.push_back(event != 0.0);
  data.columns = {file.numbers("age"), file.numbers("ecog"), file.numbers("karno")};
  data.names = {"age", "ecog", "karno"};
  data.term = {0, 1, 1};
  data.strata = 2;
  for (const double male : file.numbers("male")) data.stratum.push_back(male != 0.0);
  for (std::size_t i = 0; i < data.exit.size(); ++i) {
    data.weight.push_back(0.25 + static_cast<double>(i % 5));
  }
  return data;
}

struct CoxCase {
  std::string name;
  engine::cox::Options options;
  CoxData data;
  std::map<double, std::uint32_t> stratumCode;  // of the file's strata
};

inline CoxCase coxCase(const Csv& cases, std::size_t at) {
  CoxCase result;
  result.name = cases.text("case", at);
  const std::string ties = cases.text("ties", at);
  result.options.ties = ties == "efron"     ? engine::cox::Ties::kEfron
                        : ties == "breslow" ? engine::cox::Ties::kBreslow
                                            : engine::cox::Ties::kDiscrete;
  const Csv file(std::string(SURVMETH_REFERENCE) + "/cox/data/" + cases.text("data", at) + ".csv");
  CoxData& data = result.data;
  data.exit = file.numbers("time");
  if (std::count(file.names().begin(), file.names().end(), "start") > 0)
    data.entry = file.numbers("start");
  for (const double event : file.numbers("event")) data.event.push_back(event != 0.0 ? 1 : 0);
  data.names = split(cases.text("columns", at), ';');
  for (const std::string& name : data.names) data.columns.push_back(file.numbers(name));
  if (cases.text("terms", at).find("cbind") != std::string::npos) data.term = {0, 1, 2, 2, 2, 3};
  if (const std::string name = cases.text("strata", at); !name.empty()) {
    const std::vector<double> values = file.numbers(name);
    data.stratum = codesOf(values, data.strata);
    for (std::size_t i = 0; i < values.size(); ++i) {
      result.stratumCode[values[i]] = data.stratum[i];
    }
  }
  if (const std::string name = cases.text("cluster", at); !name.empty()) {
    data.cluster = codesOf(file.numbers(name), data.clusters);
  }
  // Weights and offsets that the script makes from the rows' numbers, from 1.
  const std::string weight = cases.text("weight", at);
  if (weight == "weight") data.weight = file.numbers("weight");
  for (std::size_t i = 1; i <= file.rows(); ++i) {
    if (weight == "count") data.weight.push_back(1.0 + static_cast<double>(i % 3));
    if (weight == "share") data.weight.push_back(0.5 + static_cast<double>(i % 7) / 4.0);
    if (cases.text("offset", at) == "drift") {
      data.offset.push_back(static_cast<double>(i * 37 % 100) / 50.0 - 1.0);
    }
  }
  return result;
}

}  // namespace survmeth::test

#endif  // TESTS_ENGINE_COX_DATA_H_
