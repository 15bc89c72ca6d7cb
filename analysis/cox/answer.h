// What survmeth cox found: the fit with what it learnt of the data, and what was asked besides.
#ifndef ANALYSIS_COX_ANSWER_H_
#define ANALYSIS_COX_ANSWER_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/cox/smooth.h"
#include "analysis/estimate.h"
#include "engine/cox/baseline.h"
#include "engine/cox/concordance.h"
#include "engine/cox/fit.h"
#include "engine/cox/penalised.h"
#include "engine/cox/proportionality.h"
#include "model/design.h"
#include "procedures/bootstrap.h"
#include "procedures/profile.h"
#include "report/report.h"

namespace survmeth::analysis {

// Rows and those of them that fail; sums of weights where these are frequencies.
struct CoxCount {
  double rows = 0, events = 0;
};

// A column of the design beside the coefficient that the fit has for it.
struct CoxColumn {
  std::string name;
  std::size_t term = 0;  // into CoxAnswer::terms
  double mean = kNone;   // over the rows that take part, weighted
  // Of an indicator of one level: the factor, the level and the reference.
  std::string factor, level, reference;
  CoxCount count, referenceCount;
};

// A change of the model on the way to what is selected.
struct CoxStep {
  std::string term;
  bool added = false;
  engine::cox::ChiSquareTest test;  // that decided
  double aic = kNone, bic = kNone;  // of the model after it
};

// The comparison with --versus.
struct CoxComparison {
  std::string larger, smaller;  // as formulas of terms
  bool versusIsSmaller = true;
  engine::cox::Fit other;
  engine::cox::ChiSquareTest test;
};

struct CoxBaseline {
  std::string stratum;  // "all" without strata
  engine::cox::CumulativeHazard hazard;
};

// Residuals of rows, or of clusters.
struct CoxResiduals {
  std::vector<double> line, time, event;  // of rows
  std::vector<std::string> cluster;       // of clusters
  struct Column {
    std::string kind, covariate;  // covariate empty: one number for a row
    std::vector<double> values;
  };
  std::vector<Column> columns;
};

struct CoxProportionality {
  engine::cox::Proportionality test;
  std::vector<Smooth> smooth;  // of each of test.scaledTerms; without points where there is none
};

struct CoxAnswer {
  model::Coding coding;  // applies to other data
  engine::cox::Fit fit;
  std::optional<engine::cox::PenalisedFit> penalised;  // whose fit `fit` is
  std::vector<CoxColumn> columns;
  std::vector<std::string> terms;
  std::vector<std::string> strata;    // by code; empty without strata
  std::vector<std::string> clusters;  // by code; empty without
  bool clustersAreSubjects = false;   // from --id, which nobody asked to be a cluster
  bool sampling = false;              // weights are inverse probabilities
  bool weighted = false;
  std::optional<engine::cox::Concordance> concordance;
  std::vector<procedures::ProfileLimits> profile;  // of each column, where asked for
  std::vector<CoxStep> steps;
  std::size_t leftOut = 0;                         // terms that were not selected
  std::optional<procedures::Bootstrap> bootstrap;  // of the estimated coefficients
  std::vector<std::vector<std::uint32_t>> units;   // rows that it draws together
  std::vector<engine::cox::TermTest> dropOne;
  std::optional<CoxComparison> versus;
  std::optional<CoxProportionality> zph;
  std::vector<CoxBaseline> baseline;
  std::optional<CoxResiduals> residuals;
  std::vector<report::Note> notes;
};

}  // namespace survmeth::analysis

#endif  // ANALYSIS_COX_ANSWER_H_
