// What survmeth cox writes.
#ifndef CLI_COX_REPORT_H_
#define CLI_COX_REPORT_H_

#include <string>
#include <vector>

#include "analysis/coxModel.h"
#include "cli/shell/session.h"

namespace cli {

struct CoxReport {
  std::string time, event, strata;        // columns; strata may be empty
  std::vector<std::string> stratumNames;  // of the strata that have rows
  double alpha = 0.05;
  bool selected = false;  // backward removal was asked for
  double removeAt = 0;
  survmeth::CoxModel model;
};

std::string coxText(const CoxReport& report);
Json coxJson(const Session& session, const Table& table, const CoxReport& report);
std::string coxResiduals(const Table& table, const CoxReport& report);  // CSV
std::string coxBaseline(const CoxReport& report);                       // CSV
std::string coxPlot(const std::string& file,
                    const CoxReport& report);  // forest plot, a script for gnuplot

}  // namespace cli

#endif  // CLI_COX_REPORT_H_
