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
  std::vector<report::Fact> facts = {
      {key::kN, "Rows", Kind::kCount, static_cast<double>(fit.rows)},
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
  if (request.firth) {
    facts.push_back({key::kPenalisedLogLikelihood, "Penalised log-likelihood", Kind::kStatistic,
                     answer.penalised->logLikelihood});
  }
  if (request.ridge) {
    facts.push_back({key::kEffectiveDegreesOfFreedom, "Effective degrees of freedom",
                     Kind::kEstimate, answer.penalised->effectiveDegrees});
  }
  if (answer.bootstrap) {
    facts.push_back({key::kReplicates, "Bootstrap replicates", Kind::kCount,
                     static_cast<double>(answer.bootstrap->replicates.size())});
    facts.push_back({key::kFailed, "Replicates without a fit", Kind::kCount,
                     static_cast<double>(answer.bootstrap->failed)});
  }
  return facts;
}

void addPenalty(const CoxRequest& request, std::vector<report::Method>& methods) {
  if (request.firth) {
    methods.push_back(
        {"penalty: half the logarithm of the determinant of the information; likelihood ratios are "
         "of penalised likelihoods, all columns in the determinant; standard errors, z and Wald "
         "limits by the information at the estimates",
         "Firth, Biometrika 80 (1993) 27-38; Heinze & Schemper, Biometrics 57 (2001) 114-119"});
  }
  if (request.ridge) {
    methods.push_back({"penalty: ridge, " + report::brief(*request.ridge / 2) +
                           " times the sum of squares of the coefficients" +
                           (request.ridgeRaw ? "" : " times their columns' standard deviations") +
                           "; covariance: inverse of information and penalty; likelihood ratio and "
                           "AIC by effective degrees of freedom, and of the likelihood without the "
                           "penalty",
                       "Verweij & van Houwelingen, Stat Med 13 (1994) 2427-2436; Gray, JASA 87 "
                       "(1992) 942-951"});
  }
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

report::Method selectionMethod(const CoxRequest& request) {
  const std::string remove = report::brief(request.remove.value_or(0.1)),
                    enter = report::brief(request.enter.value_or(0.05));
  std::string what;
  switch (request.select) {
    case CoxSelection::kForward:
      what = "selection: forward from the forced terms";
      break;
    case CoxSelection::kBoth:
      what = "selection: from all terms, backward and forward";
      break;
    default:
      what = "selection: backward";
  }
  if (request.criterion.empty() || request.criterion == "p") {
    if (request.select != CoxSelection::kForward) {
      what += ", the term with the largest Wald p-value goes while that is at least " + remove;
    }
    if (request.select != CoxSelection::kBackward) {
      what +=
          ", the term with the smallest Wald p-value in the larger model comes in while that is "
          "below " +
          enter;
    }
  } else {
    what += std::string(", by ") + (request.criterion == "aic" ? "AIC" : "BIC, n the events");
  }
  return {what +
              "; interactions stay beside their parts; intervals and p-values after selection are "
              "optimistic",
          ""};
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
  if (request.select != CoxSelection::kNone) methods.push_back(selectionMethod(request));
  if (request.bootstrap) {
    const std::string kind =
        request.bootstrapLimits.empty() ? "percentile" : request.bootstrapLimits;
    methods.push_back(
        {"bootstrap: " + text::grouped(static_cast<std::uint64_t>(*request.bootstrap)) +
             " replicates of " + (answer.clusters.empty() ? "rows" : "clusters") +
             " drawn with replacement, seed " + report::brief(request.seed.value_or(1)) +
             "; limits: " + (kind == "bca" ? "bias-corrected and accelerated" : kind),
         "Davison & Hinkley, Bootstrap Methods and their Application (1997), ch. 5"});
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
  addPenalty(request, methods);
  const std::string level = report::confidence(request.alpha);
  if (request.limits == CoxLimits::kProfile) {
    methods.push_back({"limits: " + level + ", profile " +
                           (request.firth ? "of the penalised " : "") + "likelihood, of the " +
                           coxRatio(request),
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
