// The one vocabulary of keys: members of the JSON, headers of CSV files, columns of data frames. A
// thing has one spelling wherever it stands, and an analysis that reports something new adds a
// line here.
#ifndef REPORT_KEYS_H_
#define REPORT_KEYS_H_

namespace survmeth::report::key {

// What a row is about.
inline constexpr char kName[] = "name";            // a covariate; column=level for an indicator
inline constexpr char kStatistic[] = "statistic";  // what a row of estimates is
inline constexpr char kTest[] = "test";            // a test's name
inline constexpr char kGroup[] = "group";
inline constexpr char kStratum[] = "stratum";
inline constexpr char kCluster[] = "cluster";
inline constexpr char kModel[] = "model";          // terms of one of two
inline constexpr char kReference[] = "reference";  // level of a factor; empty for numbers
inline constexpr char kMarker[] = "marker";
inline constexpr char kSubject[] = "subject";
inline constexpr char kFirst[] = "first";  // of two methods or markers
inline constexpr char kSecond[] = "second";
inline constexpr char kLine[] = "line";  // of the file; of data from memory the row
inline constexpr char kTime[] = "time";
inline constexpr char kEvent[] = "event";  // the event, or the type of event
inline constexpr char kStatus[] = "status";
inline constexpr char kState[] = "state";
inline constexpr char kAbsorbing[] = "absorbing";  // nobody is seen to leave it
inline constexpr char kWeight[] = "weight";
inline constexpr char kEventLabels[] = "eventLabels";  // those that are events, joined by ", "
inline constexpr char kCensorCode[] = "censorCode";    // whether a status is censoring
inline constexpr char kInterval[] = "interval";
inline constexpr char kIntervalStart[] = "intervalStart";  // included
inline constexpr char kIntervalEnd[] = "intervalEnd";      // not included
inline constexpr char kFrom[] = "from";  // of an interval, not included; of a transition
inline constexpr char kTo[] = "to";      // included; likewise
inline constexpr char kThreshold[] = "threshold";
inline constexpr char kPositive[] = "positive";  // label of the positives
inline constexpr char kNegative[] = "negative";
inline constexpr char kPositiveWhen[] = "positiveWhen";  // high or low
inline constexpr char kChange[] = "change";              // added or removed
inline constexpr char kReason[] = "reason";              // why numbers do not exist
inline constexpr char kCase[] = "case";                  // of the self-test
inline constexpr char kQuantity[] = "quantity";
inline constexpr char kSource[] = "source";  // where an expected number comes from
inline constexpr char kResult[] = "result";  // agrees or DIFFERS
inline constexpr char kProgram[] = "program";
inline constexpr char kMachine[] = "machine";
inline constexpr char kDate[] = "date";

// Counts; sums of weights where there are weights.
inline constexpr char kRows[] = "rows";
inline constexpr char kN[] = "n";
inline constexpr char kNewDigest[] = "newDigest";  // of the columns of new data that were used
inline constexpr char kNewRows[] = "newRows";      // of these
inline constexpr char kEvents[] = "events";
inline constexpr char kCensored[] = "censored";
inline constexpr char kCompeting[] = "competing";  // events of other types
inline constexpr char kAtRisk[] = "atRisk";        // just before the time
inline constexpr char kEntering[] = "entering";
inline constexpr char kEffective[] = "effective";  // entering less half of the censored
inline constexpr char kObserved[] = "observed";
inline constexpr char kPersonTime[] = "personTime";
inline constexpr char kCumulativeEvents[] = "cumulativeEvents";
inline constexpr char kCumulativeCensored[] = "cumulativeCensored";
inline constexpr char kExpected[] = "expected";
inline constexpr char kIncluded[] = "included";  // has part in a test
inline constexpr char kPairs[] = "pairs";
inline constexpr char kExcluded[] = "excluded";
inline constexpr char kSubjects[] = "subjects";
inline constexpr char kMeasurements[] = "measurements";
inline constexpr char kPositives[] = "positives";
inline constexpr char kNegatives[] = "negatives";
inline constexpr char kTruePositives[] = "truePositives";
inline constexpr char kFalsePositives[] = "falsePositives";
inline constexpr char kFalseNegatives[] = "falseNegatives";
inline constexpr char kTrueNegatives[] = "trueNegatives";
inline constexpr char kReplicates[] = "replicates";  // of the bootstrap, that exist
inline constexpr char kFailed[] = "failed";          // replicates without a fit
inline constexpr char kIterations[] = "iterations";
inline constexpr char kCases[] = "cases";
inline constexpr char kQuantities[] = "quantities";
inline constexpr char kAgreeing[] = "agreeing";
inline constexpr char kDiffering[] = "differing";

// Estimates. lower and upper are the limits of the one quantity of a row that has limits; where
// several have, they are sensitivityLower and so on. The same holds for standardError.
inline constexpr char kEstimate[] = "estimate";
inline constexpr char kStandardError[] = "standardError";
inline constexpr char kLower[] = "lower";
inline constexpr char kUpper[] = "upper";
inline constexpr char kBias[] = "bias";  // mean of the replicates less the estimate
inline constexpr char kCoef[] = "coef";
inline constexpr char kRobustStandardError[] = "robustStandardError";  // sandwich
inline constexpr char kLinearPredictor[] = "linearPredictor";
inline constexpr char kRisk[] = "risk";                // its exponential
inline constexpr char kHazardRatio[] = "hazardRatio";  // with limits where a row has coef too
inline constexpr char kOddsRatio[] = "oddsRatio";      // likewise
inline constexpr char kCovariance[] = "covariance";    // a space and the coefficient follow
inline constexpr char kMean[] = "mean";
inline constexpr char kMedian[] = "median";
inline constexpr char kLowerQuartile[] = "lowerQuartile";  // time by which a quarter has failed
inline constexpr char kUpperQuartile[] = "upperQuartile";
inline constexpr char kFollowUp[] = "followUp";  // its median, by reverse Kaplan-Meier
inline constexpr char kTimeLost[] = "timeLost";  // horizon less the restricted mean
inline constexpr char kTimeLostLower[] = "timeLostLower";
inline constexpr char kTimeLostUpper[] = "timeLostUpper";
inline constexpr char kTimeInState[] = "timeInState";
inline constexpr char kDifference[] = "difference";
inline constexpr char kObtained[] = "obtained";    // beside what is expected
inline constexpr char kTolerance[] = "tolerance";  // largest difference that counts for none
inline constexpr char kRatio[] = "ratio";
inline constexpr char kCorrelation[] = "correlation";
inline constexpr char kFitted[] = "fitted";
inline constexpr char kResidual[] = "residual";
inline constexpr char kMartingale[] = "martingale";
inline constexpr char kDeviance[] = "deviance";
inline constexpr char kScore[] = "score";            // a space and the covariate follow,
inline constexpr char kSchoenfeld[] = "schoenfeld";  // here and below
inline constexpr char kScaledSchoenfeld[] = "scaledSchoenfeld";
inline constexpr char kDfbeta[] = "dfbeta";
inline constexpr char kDfbetas[] = "dfbetas";
inline constexpr char kMedianResidual[] = "medianResidual";  // life time
inline constexpr char kMedianResidualStandardError[] = "medianResidualStandardError";
inline constexpr char kCost[] = "cost";
inline constexpr char kLevel[] = "level";  // confidence level of limits

// Probabilities and rates.
inline constexpr char kSurvival[] = "survival";  // just after the time
inline constexpr char kSurvivalAtStart[] = "survivalAtStart";
inline constexpr char kSurvivalAtEnd[] = "survivalAtEnd";
inline constexpr char kCumulativeHazard[] = "cumulativeHazard";
inline constexpr char kCumulativeHazardStandardError[] = "cumulativeHazardStandardError";
inline constexpr char kCumulativeHazardLower[] = "cumulativeHazardLower";
inline constexpr char kCumulativeHazardUpper[] = "cumulativeHazardUpper";
inline constexpr char kBandLower[] = "bandLower";  // limits that hold for all times together
inline constexpr char kBandUpper[] = "bandUpper";
inline constexpr char kCritical[] = "critical";  // value of a band
inline constexpr char kRate[] = "rate";          // events / person-time
inline constexpr char kCumulativeIncidence[] = "cumulativeIncidence";
inline constexpr char kKaplanMeierComplement[] = "kaplanMeierComplement";  // 1 - Kaplan-Meier
inline constexpr char kProbability[] = "probability";            // that the event has happened
inline constexpr char kEventProbability[] = "eventProbability";  // events / effective
inline constexpr char kDensity[] = "density";
inline constexpr char kDensityStandardError[] = "densityStandardError";
inline constexpr char kHazard[] = "hazard";
inline constexpr char kHazardStandardError[] = "hazardStandardError";
inline constexpr char kConcordance[] = "concordance";  // Harrell's
inline constexpr char kConcordanceStandardError[] = "concordanceStandardError";
inline constexpr char kArea[] = "area";  // under the curve
inline constexpr char kFirstArea[] = "firstArea";
inline constexpr char kSecondArea[] = "secondArea";
inline constexpr char kSensitivity[] = "sensitivity";
inline constexpr char kSensitivityLower[] = "sensitivityLower";
inline constexpr char kSensitivityUpper[] = "sensitivityUpper";
inline constexpr char kSpecificity[] = "specificity";
inline constexpr char kSpecificityLower[] = "specificityLower";
inline constexpr char kSpecificityUpper[] = "specificityUpper";
inline constexpr char kYouden[] = "youden";
inline constexpr char kPrevalence[] = "prevalence";
inline constexpr char kPositivePredictiveValue[] = "positivePredictiveValue";
inline constexpr char kNegativePredictiveValue[] = "negativePredictiveValue";
inline constexpr char kPositiveLikelihoodRatio[] = "positiveLikelihoodRatio";
inline constexpr char kNegativeLikelihoodRatio[] = "negativeLikelihoodRatio";

// Statistics.
inline constexpr char kZ[] = "z";
inline constexpr char kChiSquare[] = "chiSquare";
inline constexpr char kDegreesOfFreedom[] = "degreesOfFreedom";
inline constexpr char kPValue[] = "pValue";  // two-sided unless a method says otherwise
inline constexpr char kModelChiSquare[] = "modelChiSquare";  // by the information alone
inline constexpr char kModelPValue[] = "modelPValue";
inline constexpr char kAdjustedPValue[] = "adjustedPValue";  // for the number of tests
inline constexpr char kTrend[] = "trend";                    // z of a test against scores
inline constexpr char kTrendPValue[] = "trendPValue";
inline constexpr char kLogLikelihood[] = "logLikelihood";          // of the model
inline constexpr char kNullLogLikelihood[] = "nullLogLikelihood";  // without covariates
inline constexpr char kPenalisedLogLikelihood[] = "penalisedLogLikelihood";
inline constexpr char kEffectiveDegreesOfFreedom[] = "effectiveDegreesOfFreedom";  // of a ridge
inline constexpr char kAic[] = "aic";
inline constexpr char kBic[] = "bic";

}  // namespace survmeth::report::key

#endif  // REPORT_KEYS_H_
