#include "analysis/cox/describe.h"

#include <algorithm>
#include <string>
#include <utility>

#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
namespace key = report::key;
using report::Kind;
using text::counted;

std::string summaryOf(const CoxAnswer& answer, const CoxRequest& request) {
  std::string summary = request.cases ? counted(answer.fit.events, "case", "cases")
                                      : counted(answer.fit.events, "event", "events");
  summary += " in " + counted(answer.fit.rows, "row", "rows");
  if (answer.strata.size() > 1) {
    summary +=
        " and " + text::grouped(answer.strata.size()) + (request.cases ? " sets" : " strata");
  }
  summary += ".";
  const bool robust = answer.fit.robustCovariance.size() != 0;
  const cox::ChiSquareTest& test = robust ? answer.fit.wald : answer.fit.likelihoodRatio;
  if (test.degreesOfFreedom == 0) return summary;
  return summary + " All coefficients 0? " + (robust ? "Robust Wald test" : "Likelihood ratio") +
         ": " + report::pValueInWords(test.pValue) + ".";
}

std::vector<report::Fact> factsOf(const CoxAnswer& answer, const CoxRequest& request) {
  const cox::Fit& fit = answer.fit;
  return {{key::kN, "Rows", Kind::kCount, static_cast<double>(fit.rows)},
          {key::kEvents, request.cases ? "Cases" : "Events", Kind::kCount,
           static_cast<double>(fit.events)},
          {key::kNullLogLikelihood, "Log-likelihood without covariates", Kind::kStatistic,
           fit.logLikelihoodNull},
          {key::kLogLikelihood, "Log-likelihood", Kind::kStatistic, fit.logLikelihood},
          {key::kAic, "AIC", Kind::kStatistic, fit.aic},
          {key::kBic, "BIC", Kind::kStatistic, fit.bic},
          {key::kConcordance, "Concordance (Harrell)", Kind::kProbability,
           answer.concordance->estimate},
          {key::kConcordanceStandardError, "Its standard error", Kind::kProbability,
           answer.concordance->standardError},
          {key::kIterations, "Iterations", Kind::kCount, static_cast<double>(fit.iterations)}};
}

report::Method tiesMethod(const CoxRequest& request) {
  if (request.cases) {
    return {
        "model: conditional logistic regression, the likelihood of each set given the number "
        "of its cases",
        "Breslow & Day, Statistical Methods in Cancer Research I (1980), ch. 7; Gail, Lubin & "
        "Rubinstein, Biometrika 68 (1981) 703-707"};
  }
  const std::string model = "model: Cox regression, ",
                    cited = "Cox, J R Stat Soc B 34 (1972) 187-220";
  switch (request.ties) {
    case cox::Ties::kEfron:
      return {model + "Efron's treatment of ties", cited + "; Efron, JASA 72 (1977) 557-565"};
    case cox::Ties::kBreslow:
      return {model + "Breslow's treatment of ties",
              cited + "; Breslow, Biometrics 30 (1974) 89-99"};
    case cox::Ties::kDiscrete:
      return {model + "exact partial likelihood of ties (discrete time)",
              cited + "; Gail, Lubin & Rubinstein, Biometrika 68 (1981) 703-707"};
    case cox::Ties::kMarginal:
      break;
  }
  return {model + "exact marginal likelihood of ties (all orders in which they can have failed)",
          cited + "; DeLong, Guirguis & So, Biometrika 81 (1994) 607-611"};
}

std::string robustness(const CoxAnswer& answer) {
  if (answer.clusters.empty()) return "covariance: robust, by row";
  return "covariance: robust, by " +
         std::string(answer.clustersAreSubjects ? "subject, " : "cluster, ") +
         counted(answer.clusters.size(), "of them", "of them");
}

std::string transformName(cox::TimeTransform transform) {
  switch (transform) {
    case cox::TimeTransform::kKaplanMeier:
      return "1 - the Kaplan-Meier curve of all rows just before the time";
    case cox::TimeTransform::kRank:
      return "the rank of the time";
    case cox::TimeTransform::kIdentity:
      return "the time";
    case cox::TimeTransform::kLog:
      break;
  }
  return "the logarithm of the time";
}

void addFollowUps(const CoxAnswer& answer, const CoxRequest& request,
                  std::vector<report::Method>& methods) {
  if (request.zph) {
    methods.push_back({"proportional hazards: score test of a coefficient that changes with " +
                           transformName(*request.zph) + ", model-based",
                       "Grambsch & Therneau, Biometrika 81 (1994) 515-526"});
  }
  if (request.baseline) {
    methods.push_back(
        {std::string("baseline: cumulative hazard at ") +
             (request.origin == CoxOrigin::kMeans ? "the means of the covariates"
                                                  : "covariates of 0") +
             " and an offset of 0, with the increments of the treatment of ties; survival is "
             "exp(-hazard)",
         "Tsiatis, Ann Stat 9 (1981) 93-108"});
  }
  if (request.residuals) {
    methods.push_back({std::string("residuals: ") +
                           (request.byCluster ? "summed by cluster" : "of rows") +
                           (answer.weighted ? "; dfbeta and dfbetas times the weight" : ""),
                       "Therneau, Grambsch & Fleming, Biometrika 77 (1990) 147-160"});
  }
  if (request.select == CoxSelection::kBackward) {
    methods.push_back(
        {"selection: backward, the term with the largest Wald p-value goes while that is at "
         "least " +
             report::brief(request.remove.value_or(0.1)) +
             "; intervals and p-values after selection are optimistic",
         ""});
  }
}

}  // namespace

const char* coxRatio(const CoxRequest& request) {
  return request.cases ? "odds ratio" : "hazard ratio";
}

std::vector<report::Method> coxMethods(const CoxAnswer& answer, const CoxRequest& request) {
  std::vector<report::Method> methods = {tiesMethod(request)};
  if (!request.cases && request.tolerance() > 0) {
    methods.push_back({"times: those that differ by no more than " +
                           report::brief(request.tolerance(), 3) +
                           ", absolutely or in units of the mean distinct time, are tied",
                       ""});
  }
  if (answer.weighted) {
    methods.push_back({answer.sampling ? "weights: inverse probabilities of sampling"
                                       : "weights: frequencies, a row stands for so many",
                       ""});
  }
  if (answer.fit.robustCovariance.size() != 0) {
    methods.push_back({robustness(answer) + "; z, limits and Wald tests rest on it",
                       "Lin & Wei, JASA 84 (1989) 1074-1078"});
  }
  const std::string level = report::confidence(request.alpha);
  if (request.limits == CoxLimits::kProfile) {
    methods.push_back({"limits: " + level + ", profile likelihood, of the " + coxRatio(request),
                       "Venzon & Moolgavkar, Appl Stat 37 (1988) 87-94"});
  } else {
    methods.push_back({"limits: " + level + ", Wald, of the " + coxRatio(request), ""});
  }
  methods.push_back(
      {std::string("concordance: of the pairs ") +
           (request.cases ? "of a case and a control in one set, the share in which the case has "
                            "the higher predictor"
                          : "within strata whose order is known, the share in which the higher "
                            "risk fails first") +
           "; its error by the infinitesimal jackknife",
       "Harrell et al., Stat Med 15 (1996) 361-387"});
  addFollowUps(answer, request, methods);
  return methods;
}

report::Report describeCox(const CoxAnswer& answer, const CoxRequest& request) {
  report::Report report;
  report.title =
      request.cases ? "Conditional logistic regression" : "Proportional-hazards regression";
  report.summary = summaryOf(answer, request);
  report.facts = factsOf(answer, request);
  addCoxTables(answer, request, report);
  report::Figure forest = coxForest(answer, request);
  if (!forest.panels.empty()) report.figures.push_back(std::move(forest));
  if (answer.zph) report.figures.push_back(coxSchoenfeld(answer, request));
  report.methods = coxMethods(answer, request);
  report.notes = answer.notes;
  return report;
}

}  // namespace survmeth::analysis
