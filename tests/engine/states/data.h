// Histories as tests hold them, and those of the reference.
#ifndef TESTS_ENGINE_STATES_DATA_H_
#define TESTS_ENGINE_STATES_DATA_H_

#include <algorithm>
#include <string>
#include <vector>

#include "engine/states/estimate.h"
#include "tests/engine/curves/data.h"

namespace survmeth::test::states {

using Numbers = std::vector<double>;
using Codes = std::vector<std::uint32_t>;

struct Data {
  Numbers entry, exit;
  Codes from, to, subject;  // states from 1, 0 nowhere
  std::size_t states = 0;
  Numbers weight = {};
  engine::WeightKind weightKind = engine::WeightKind::kFrequencies;
  Codes cluster = {};
  std::size_t clusters = 0;
  std::size_t subjects = 100;

  engine::states::Estimates estimate(const engine::states::Options& options) const {
    const Coded coded(*this);
    return engine::states::estimate(coded.histories, options);
  }
  std::vector<engine::states::Fault> check() const {
    const Coded coded(*this);
    return engine::states::check(coded.histories);
  }

 private:
  struct Coded {
    explicit Coded(const Data& data) {
      for (const std::uint32_t state : data.from) from.push_back(state - 1);
      for (const std::uint32_t state : data.to)
        to.push_back(state == 0 ? engine::states::kNowhere : state - 1);
      histories = {data.entry,      data.exit,    from,          to,
                   data.subject,    data.states,  data.subjects, data.weight,
                   data.weightKind, data.cluster, data.clusters};
    }
    Codes from, to;
    engine::states::Histories histories;
  };
};

inline const std::string kFolder = std::string(SURVMETH_REFERENCE) + "/incidence/";

inline Data dataSet(const std::string& name) {
  const Csv file(kFolder + "states_data.csv");
  Data data;
  for (std::size_t i = 0; i < file.rows(); ++i) {
    if (file.text("set", i) != name) continue;
    data.subject.push_back(static_cast<std::uint32_t>(file.number("id", i)));
    data.subjects = std::max<std::size_t>(data.subjects, data.subject.back() + std::size_t{1});
    data.entry.push_back(file.number("entry", i));
    data.exit.push_back(file.number("exit", i));
    data.from.push_back(static_cast<std::uint32_t>(file.number("from", i)));
    data.to.push_back(static_cast<std::uint32_t>(file.number("to", i)));
    data.states = std::max<std::size_t>({data.states, data.from.back(), data.to.back()});
  }
  return data;
}

}  // namespace survmeth::test::states

#endif  // TESTS_ENGINE_STATES_DATA_H_
