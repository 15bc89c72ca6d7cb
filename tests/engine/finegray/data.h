// Cases of tests/reference/incidence as the regression of subdistribution hazards takes them.
#ifndef TESTS_ENGINE_FINEGRAY_DATA_H_
#define TESTS_ENGINE_FINEGRAY_DATA_H_

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "engine/finegray/hazards.h"
#include "tests/engine/incidence/data.h"

namespace survmeth::test {

// One row of a table of cases: its data set with the covariates x1, x2, ..., the cause and the
// columns of weights, clusters and strata.
struct FineGrayCase {
  FineGrayCase(const Csv& cases, std::size_t at) {
    const auto& names = cases.names();
    const auto text = [&](const char* column) {
      return std::count(names.begin(), names.end(), column) > 0 ? cases.text(column, at)
                                                                : std::string();
    };
    data = causeData(text("data"), "", text("weight"), text("cluster"), text("strata"));
    const Csv file = takeCovariates(text("data"));
    if (!text("censoring").empty()) censoring = codesOf(file.numbers(text("censoring")), groups);
    options.cause = static_cast<std::uint32_t>(cases.number("cause", at));
  }
  FineGrayCase(const std::string& name, std::uint32_t cause) : data(causeData(name, "")) {
    takeCovariates(name);
    options.cause = cause;
  }
  FineGrayCase(const FineGrayCase&) = delete;
  FineGrayCase& operator=(const FineGrayCase&) = delete;

  engine::finegray::Fit fit() const {
    numerics::Progress progress;
    return engine::finegray::fit(data.response(), data.rows(), design, {censoring, groups}, options,
                                 progress);
  }
  std::vector<double> row(std::size_t i) const {
    std::vector<double> x;
    for (const std::vector<double>& column : covariates) x.push_back(column[i]);
    return x;
  }

  CauseData data;
  std::vector<std::vector<double>> covariates;
  engine::Design design;
  std::vector<std::uint32_t> censoring;
  std::size_t groups = 1;
  engine::finegray::Options options;

 private:
  Csv takeCovariates(const std::string& name) {
    Csv file(std::string(SURVMETH_REFERENCE) + "/incidence/data/" + name + ".csv");
    for (const std::string& column : file.names()) {
      if (column[0] == 'x') covariates.push_back(file.numbers(column));
    }
    for (std::size_t j = 0; j < covariates.size(); ++j) {
      design.columns.emplace_back(covariates[j]);
      design.names.push_back("x" + std::to_string(j + 1));
      design.termNames.push_back(design.names.back());
      design.term.push_back(j);
    }
    return file;
  }
};

inline engine::cox::BaselineHazard hazardOf(const engine::finegray::Fit& fit) {
  numerics::Progress progress;
  return engine::cox::BaselineHazard(engine::finegray::hazardSums(fit, progress));
}

}  // namespace survmeth::test

#endif  // TESTS_ENGINE_FINEGRAY_DATA_H_
