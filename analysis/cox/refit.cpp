#include "analysis/cox/refit.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "analysis/cox/procedures.h"
#include "analysis/cox/run.h"
#include "analysis/cox/saved.h"
#include "frame/select.h"

namespace survmeth::analysis {
namespace {

// What of a request a replicate needs: rows that are drawn twice are no subject that is in two places,
// and errors come from the replicates.
CoxRequest ofReplicates(const CoxRequest& request) {
  CoxRequest plain = request;
  plain.cluster.clear();
  plain.id.clear();
  plain.robust = false;
  plain.weightsAre = engine::WeightKind::kFrequencies;
  return plain;
}

model::Formula withoutClusters(model::Formula formula) {
  formula.cluster.reset();
  return formula;
}

bool sameLevels(const model::Coding& one, const model::Coding& other) {
  const auto &a = one.variables(), &b = other.variables();
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& each, const auto& its) { return each.levels == its.levels; });
}

}  // namespace

procedures::Bootstrap bootstrapSurvival(const frame::Frame& data, const CoxRequest& request,
                                        const CoxAnswer& answer, const frame::Frame& newData,
                                        const CoxWishes& wishes, numerics::Progress& progress) {
  const CoxRequest plain = ofReplicates(request);
  const model::Formula formula = withoutClusters(answer.coding.formula());
  CoxPredictRequest asked;
  asked.at = wishes.at;
  asked.subject = wishes.subject;
  asked.drawn = false;
  const auto statistic = [&](std::span<const std::uint32_t> drawn) -> std::vector<double> {
    const frame::Frame rows = frame::selectRows(data, coxRowsOf(answer.units, drawn));
    numerics::Progress none;
    try {
      const CoxAnswer replicate = refitCox(rows, plain, formula);
      if (!replicate.fit.converged || replicate.fit.column != answer.fit.column ||
          !sameLevels(replicate.coding, answer.coding)) {
        return {};
      }
      const CoxPredictions made =
          predictCox(coxSaved(rows, replicate, plain), newData, asked, none);
      std::vector<double> values;
      for (const auto& times : made.at) {
        for (const CoxSurvival& each : times) values.push_back(each.survival);
      }
      return values;
    } catch (const engine::Refusal&) {
      // No event, too few values for a basis, a stratum without rows.
      return {};
    }
  };
  return procedures::bootstrap(answer.units.size(), statistic, coxBootstrapOptions(request),
                               progress);
}

}  // namespace survmeth::analysis
