// What prodlim and riskRegression make of data sets of tests/reference/incidence (make_peers.R).
#ifndef TESTS_ENGINE_INCIDENCE_PEERS_H_
#define TESTS_ENGINE_INCIDENCE_PEERS_H_

#include <map>
#include <string>
#include <vector>

#include "tests/support/csv.h"

namespace survmeth::test {

// One program's numbers of one cause of a data set.
struct PeerCase {
  std::string program, data;
  std::size_t cause = 0;
  // By the row that they are about (0: of no row) and their name.
  std::map<std::size_t, std::map<std::string, std::vector<double>>> items;

  std::string name() const { return program + "_" + data + "_" + std::to_string(cause); }
};

inline const std::vector<PeerCase>& peerCases() {
  static const std::vector<PeerCase> cases = [] {
    const Csv file(std::string(SURVMETH_REFERENCE) + "/incidence/peers.csv");
    std::vector<PeerCase> made;
    for (std::size_t i = 0; i < file.rows(); ++i) {
      const PeerCase begun{file.text("program", i),
                           file.text("data", i),
                           static_cast<std::size_t>(file.number("cause", i)),
                           {}};
      if (made.empty() || made.back().name() != begun.name()) made.push_back(begun);
      made.back()
          .items[static_cast<std::size_t>(file.number("row", i))][file.text("item", i)]
          .push_back(file.number("value", i));
    }
    return made;
  }();
  return cases;
}

// Those of the programs whose names begin so.
inline std::vector<PeerCase> peerCasesOf(const std::string& program) {
  std::vector<PeerCase> chosen;
  for (const PeerCase& each : peerCases()) {
    if (each.program.rfind(program, 0) == 0) chosen.push_back(each);
  }
  return chosen;
}

}  // namespace survmeth::test

#endif  // TESTS_ENGINE_INCIDENCE_PEERS_H_
