// What is asked of a fit besides its coefficients: proportionality, hazards, residuals.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "Dist/Dist"
#include "analysis/cox/residualKinds.h"
#include "analysis/cox/run.h"
#include "engine/cox/residuals.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;

CoxProportionality proportionalityOf(const CoxAnswer& answer, const CoxRequest& request) {
  CoxProportionality result;
  result.test = cox::testProportionality(answer.fit, *request.zph);
  const double z = InvCDFNormalStd(1 - request.alpha / 2);
  for (const cox::TermResiduals& term : result.test.scaledTerms) {
    result.smooth.push_back(smoothOf(result.test.transformed, term.value, term.variance, z));
  }
  return result;
}

std::vector<CoxBaseline> baselineOf(const CoxAnswer& answer, CoxOrigin origin) {
  std::vector<double> x(answer.columns.size(), 0);
  if (origin == CoxOrigin::kMeans) {
    std::transform(answer.columns.begin(), answer.columns.end(), x.begin(),
                   [](const CoxColumn& column) { return column.mean; });
  }
  const cox::BaselineHazard hazard(answer.fit);
  std::vector<CoxBaseline> baseline;
  for (const std::uint32_t code : hazard.strata()) {
    baseline.push_back(
        {answer.strata.empty() ? "all" : answer.strata[code], hazard.at(x, 0, code)});
  }
  return baseline;
}

class Residuals {
 public:
  Residuals(const CoxAnswer& answer, bool byCluster, bool weighted)
      : answer_(answer), byCluster_(byCluster), weighted_(weighted) {}

  void add(const std::string& kind) {
    // Changes of coefficients are those without the row as it stands in the data.
    const bool ofCoefficients = kind == "dfbeta" || kind == "dfbetas";
    const cox::ResidualOptions options{weighted_ && ofCoefficients, byCluster_};
    const cox::Fit& fit = answer_.fit;
    if (kind == "martingale") {
      addOne(kind, cox::martingaleResiduals(fit, options));
    } else if (kind == "deviance") {
      addOne(kind, cox::devianceResiduals(fit, options));
    } else if (kind == "score") {
      addColumns(kind, cox::scoreResiduals(fit, options));
    } else if (kind == "dfbeta") {
      addColumns(kind, cox::dfbetaResiduals(fit, options));
    } else if (kind == "dfbetas") {
      addColumns(kind, cox::dfbetasResiduals(fit, options));
    } else {
      addOfEvents(kind, kind == "schoenfeld" ? cox::schoenfeldResiduals(fit, false)
                                             : cox::scaledSchoenfeldResiduals(fit, false));
    }
  }

  CoxResiduals taken() { return std::move(made_); }

 private:
  void addOne(const std::string& kind, std::vector<double> values) {
    made_.columns.push_back({kind, {}, std::move(values)});
  }
  void addColumns(const std::string& kind, std::vector<std::vector<double>> columns) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      made_.columns.push_back({kind, answer_.columns[j].name, std::move(columns[j])});
    }
  }
  // Rows without an event have none.
  void addOfEvents(const std::string& kind, const cox::SchoenfeldResiduals& residuals) {
    std::vector<std::vector<double>> columns(
        residuals.column.size(), std::vector<double>(answer_.fit.problem->sourceRows, kNone));
    for (std::size_t j = 0; j < columns.size(); ++j) {
      for (std::size_t k = 0; k < residuals.row.size(); ++k) {
        columns[j][residuals.row[k]] = residuals.column[j][k];
      }
    }
    addColumns(kind, std::move(columns));
  }

  const CoxAnswer& answer_;
  bool byCluster_, weighted_;
  CoxResiduals made_;
};

CoxResiduals residualsOf(const frame::Frame& data, const CoxRequest& request, const CoxInput& input,
                         const CoxAnswer& answer) {
  std::vector<std::string> kinds = request.residualKinds;
  if (kinds.empty()) {
    kinds = {"martingale", "deviance"};
    if (!request.byCluster) kinds.emplace_back("schoenfeld");
  }
  Residuals residuals(answer, request.byCluster, answer.weighted);
  for (const std::string& kind : kinds) residuals.add(kind);
  CoxResiduals made = residuals.taken();
  if (request.byCluster) {
    made.cluster = answer.clusters;
    return made;
  }
  const auto& exit = input.model.exit.numbers;
  made.time.assign(exit.begin(), exit.end());
  made.event.assign(input.model.event.begin(), input.model.event.end());
  for (std::size_t i = 0; i < data.rows; ++i) {
    made.line.push_back(static_cast<double>(data.lines.line(i)));
  }
  return made;
}

}  // namespace

void followUp(const frame::Frame& data, const CoxRequest& request, const CoxInput& input,
              CoxAnswer& answer) {
  if (request.zph) answer.zph = proportionalityOf(answer, request);
  if (request.baseline) answer.baseline = baselineOf(answer, request.origin);
  if (request.residuals) answer.residuals = residualsOf(data, request, input, answer);
}

}  // namespace survmeth::analysis
