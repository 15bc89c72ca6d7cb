// The facade's functions that compute by themselves: ROC curves, agreement, Deming regression.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/agreement.h"
#include "analysis/demingFit.h"
#include "engine/roc/curves.h"
#include "tests/bits/results.h"
#include "tests/bits/sequence.h"
#include "tests/support/csv.h"

namespace survmeth::test {
namespace {

namespace roc = engine::roc;
using Numbers = std::vector<double>;

template <class Estimate>
void add(Numbers& all, const Estimate& estimate) {
  all.insert(all.end(), {estimate.value, estimate.lower, estimate.upper});
}

// Two methods, in a unit of any size.
struct Methods {
  std::string name;
  Numbers first, second;
};

std::vector<Methods> methods() {
  const Csv peakFlow(std::string(SURVMETH_DATA) + "/pefr.csv");
  std::vector<Methods> all = {{"pefr", peakFlow.numbers("wright1"), peakFlow.numbers("mini1")}};
  Sequence sequence(21);
  for (const double unit : {1.0, 1e-150, 1e120}) {
    for (int set = 0; set < 4; ++set) {
      Methods made{"made " + std::to_string(all.size()), {}, {}};
      for (int i = 0; i < 200; ++i) {
        const double truth = 3.0 + 10.0 * sequence.share();
        made.first.push_back(unit * (truth + sequence.share()));
        made.second.push_back(unit * (0.5 + 1.1 * truth + sequence.share() * (1 + set)));
      }
      all.push_back(made);
    }
  }
  return all;
}

void takeAgreement(const TakeNumbers& take, const Methods& pair) {
  for (const auto kind :
       {DifferenceKind::kAbsolute, DifferenceKind::kRelative, DifferenceKind::kRatio}) {
    const AgreementResult result =
        agreement({.first = pair.first, .second = pair.second, .kind = kind});
    Numbers all = result.means;
    all.insert(all.end(), result.differences.begin(), result.differences.end());
    all.push_back(result.sd);
    for (const Estimate& each : {result.bias, result.lowerLimit, result.upperLimit}) add(all, each);
    take("agreement of " + pair.name + ", kind " + std::to_string(static_cast<int>(kind)), all);
  }
}

void takeDeming(const TakeNumbers& take, const Methods& pair) {
  for (const double ratio : {0.25, 1.0, 40.0}) {
    const DemingResult result =
        demingFit({.first = pair.first, .second = pair.second, .ratio = ratio});
    Numbers all = result.fitted;
    all.insert(all.end(), result.residuals.begin(), result.residuals.end());
    all.insert(all.end(), {result.correlation, result.interceptSe, result.slopeSe});
    add(all, result.intercept);
    add(all, result.slope);
    take("Deming of " + pair.name + ", ratio " + std::to_string(ratio), all);
  }
}

void takeRepeatability(const TakeNumbers& take) {
  const Csv peakFlow(std::string(SURVMETH_DATA) + "/pefr.csv");
  Numbers values = peakFlow.numbers("wright1");
  const Numbers second = peakFlow.numbers("wright2");
  values.insert(values.end(), second.begin(), second.end());
  std::vector<std::uint32_t> subject;
  for (std::size_t i = 0; i < values.size(); ++i) {
    subject.push_back(static_cast<std::uint32_t>(i % second.size()));
  }
  const RepeatabilityResult result =
      repeatability({.values = values, .subject = subject, .subjects = second.size()});
  Numbers all = {result.repeatability};
  add(all, result.withinSd);
  take("repeatability of pefr", all);
}

void takeCurves(const TakeNumbers& take, const std::string& name, const roc::Request& request) {
  const roc::Result result = roc::curves(request);
  for (std::size_t i = 0; i < result.curves.size(); ++i) {
    const roc::Curve& curve = result.curves[i];
    Numbers all = {curve.standardError, curve.z, curve.pValue, curve.leastCost};
    add(all, curve.area);
    for (const roc::Threshold& at : curve.thresholds) {
      add(all, at.sensitivity);
      add(all, at.specificity);
      all.insert(all.end(), {at.threshold, at.youden, at.positiveRatio, at.negativeRatio,
                             at.positiveValue, at.negativeValue, at.cost});
    }
    take("curve " + std::to_string(i) + " of " + name, all);
  }
  Numbers all;
  for (const roc::Comparison& each : result.comparisons) {
    add(all, each.difference);
    all.insert(all.end(), {each.standardError, each.z, each.pValue});
  }
  take("comparisons of " + name, all);
}

void takeRoc(const TakeNumbers& take) {
  const Csv data(std::string(SURVMETH_DATA) + "/sah.csv");
  std::vector<std::uint8_t> positive;
  for (const std::string& outcome : data.texts("outcome")) positive.push_back(outcome == "Poor");
  const Numbers wfns = data.numbers("wfns"), s100b = data.numbers("s100b"),
                ndka = data.numbers("ndka");

  Sequence sequence(22);
  std::vector<std::uint8_t> madeClass;
  Numbers madeMarker, madeOther;
  for (int i = 0; i < 1500; ++i) {
    const bool ill = sequence.share() < 0.3;
    madeClass.push_back(ill ? 1 : 0);
    madeMarker.push_back(sequence.share() + (ill ? 0.4 : 0.0));
    madeOther.push_back(static_cast<double>(static_cast<int>(8.0 * sequence.share())));
  }
  using enum roc::RateInterval;
  for (const auto interval : {kWilson, kWald, kClopperPearson, kAgresti}) {
    const std::string number = std::to_string(static_cast<int>(interval));
    takeCurves(take, "sah, interval " + number,
               {.positive = positive,
                .markers = {{wfns, false}, {s100b, false}, {ndka, false}},
                .weight = {},
                .interval = interval,
                .prevalence = 0.2,
                .costs = {1, 5, 20, 0}});
    takeCurves(take, "made, interval " + number,
               {.positive = madeClass,
                .markers = {{madeMarker, false}, {madeOther, true}},
                .weight = {},
                .interval = interval,
                .prevalence = {},
                .costs = {}});
  }
}

}  // namespace

void facadeResults(const TakeNumbers& take) {
  for (const Methods& pair : methods()) {
    takeAgreement(take, pair);
    takeDeming(take, pair);
  }
  takeRepeatability(take);
  takeRoc(take);
}

}  // namespace survmeth::test
