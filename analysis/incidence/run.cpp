#include <algorithm>

#include "analysis/declare.h"
#include "analysis/groups.h"
#include "analysis/incidence/incidence.h"
#include "engine/curves/means.h"
#include "model/response.h"

namespace survmeth::analysis {
namespace {

namespace incidence = engine::incidence;
using engine::Refusal;
using engine::Role;

// The more groups, the longer Gray's test takes: its work grows with their square.
constexpr std::size_t kMostGroups = 100;

// Columns as the engine takes them.
struct Input {
  frame::Column time, entry, weight;
  std::vector<std::uint32_t> event;  // causes 1, 2, ... in the order of the statuses
  frame::Labels cluster, stratum;
  engine::Response response;
  engine::Rows rows;
  incidence::Groups groups;
};

void takeColumns(const frame::Frame& data, const IncidenceRequest& request, Input& input) {
  input.time = *data.numbers(request.time);
  input.response.exit = input.time.numbers;
  if (!request.entry.empty()) {
    input.entry = *data.numbers(request.entry);
    input.response.entry = input.entry.numbers;
    model::requireEntriesBefore(input.response.entry, input.response.exit,
                                {input.entry.isDate, input.time.isDate});
  }
  if (!request.weights.empty()) {
    input.weight = *data.numbers(request.weights);
    input.rows.weight = input.weight.numbers;
    input.rows.weightKind = request.weightsAre;
  }
  if (!request.cluster.empty()) {
    input.cluster = frame::labelsOf(*data.labels(request.cluster));
    input.rows.cluster = input.cluster.codes;
    input.rows.clusters = input.cluster.labels.size();
  }
  if (!request.strata.empty()) {
    input.stratum = frame::labelsOf(*data.labels(request.strata));
    input.rows.stratum = input.stratum.codes;
    input.rows.strata = input.stratum.labels.size();
  }
}

// What rows hold, and the causes in the order of the statuses.
IncidenceAnswer beginning(const frame::Frame& data, const IncidenceRequest& request, Input& input) {
  IncidenceAnswer answer;
  answer.event = model::eventTypesOf(*data.labels(request.status), request.censor, request.event);
  takeColumns(data, request, input);
  if (request.group.empty()) {
    answer.group = {{"all"}, {}, {data.rows}};
  } else {
    answer.group = groupsOf(data, request.group);
  }
  std::vector<std::uint32_t> causeOf(answer.event.status.labels.size() + 1, 0);
  for (std::size_t status = 0; status < answer.event.status.labels.size(); ++status) {
    if (answer.event.censored == status) continue;
    answer.causes.push_back(status);
    causeOf[status + 1] = static_cast<std::uint32_t>(answer.causes.size());
  }
  for (const std::uint32_t event : answer.event.events) input.event.push_back(causeOf[event]);
  input.response.event = input.event;
  input.response.causes =
      static_cast<std::uint32_t>(std::max<std::size_t>(answer.causes.size(), 1));
  input.groups = {answer.group.codes, answer.group.labels.size()};
  for (const std::size_t status : answer.event.types) {
    IncidenceOfType& type = answer.types.emplace_back();
    type.label = answer.event.status.labels[status];
    type.cause = causeOf[status + 1] - std::size_t{1};
  }
  return answer;
}

// The tests of all types of event that are asked for.
void test(const incidence::Ordered& ordered, const IncidenceRequest& request,
          std::vector<IncidenceOfType>& types) {
  incidence::GrayOptions options;
  options.rho = request.rho;
  std::vector<std::uint32_t> causes;
  for (const IncidenceOfType& type : types) {
    causes.push_back(static_cast<std::uint32_t>(type.cause) + 1);
  }
  std::vector<incidence::GrayTest> tests = incidence::grayTests(ordered, causes, options);
  for (std::size_t i = 0; i < types.size(); ++i) {
    types[i].test = std::move(tests[i]);
    if (request.pairs == Pairs::kNone) continue;
    options.cause = causes[i];
    types[i].pairs = incidence::grayPairs(ordered, options, adjustmentOf(request.pairs));
  }
}

void read(const incidence::Causes& sorted, const Input& input, const IncidenceRequest& request,
          const IncidenceAnswer& answer, IncidenceOfType& type) {
  const double z = engine::curves::normalQuantile(1 - request.alpha);
  for (const incidence::Curve& curve : answer.curves) {
    type.at.push_back(incidence::readings(curve, type.cause, answer.at, z, request.scale));
  }
  for (std::size_t g = 1; g < type.at.size(); ++g) {
    std::vector<engine::curves::Contrast>& differences = type.differences.emplace_back();
    for (std::size_t i = 0; i < answer.at.size(); ++i) {
      differences.push_back(incidence::difference(type.at[0][i], type.at[g][i], z));
    }
  }
  if (!request.tau) return;
  type.lost = incidence::timesLost(sorted, input.rows, answer.curves, type.cause, request.variance,
                                   *request.tau, 1 - request.alpha);
  for (std::size_t g = 1; g < type.lost.size(); ++g) {
    type.lostContrasts.push_back(
        incidence::compareLost(type.lost[0], type.lost[g], 1 - request.alpha));
  }
}

void requireWeighted(const IncidenceAnswer& answer, const Input& input) {
  if (answer.several()) return requireFilled(answer.group, input.rows.weight);
  const std::span<const double> weight = input.rows.weight;
  if (weight.empty() || std::any_of(weight.begin(), weight.end(), [](double w) { return w > 0; })) {
    return;
  }
  throw Refusal(Role::kWeight, Refusal::kNone, "every weight is 0", Refusal::kNone,
                "at least one above 0");
}

// The last time to which all groups are followed.
double commonEnd(const std::vector<incidence::Curve>& curves) {
  double end = curves.front().time.back();
  for (const incidence::Curve& curve : curves) end = std::min(end, curve.time.back());
  return end;
}

}  // namespace

IncidenceAnswer fitIncidence(const frame::Frame& data, const IncidenceRequest& request,
                             numerics::Progress& progress) {
  Input input;
  IncidenceAnswer answer = beginning(data, request, input);
  requireWeighted(answer, input);
  if (answer.several()) requireSeveral(answer.group, kMostGroups);
  answer.robust =
      incidence::varianceFor(input.rows, request.variance) == incidence::Variance::kRobust;
  const incidence::Ordered ordered(input.response, input.rows, input.groups);
  const incidence::Causes sorted(ordered);
  answer.curves = incidence::estimate(sorted, input.rows, request.variance);
  answer.at = request.at;
  if (answer.at.empty()) answer.at = {commonEnd(answer.curves)};
  const bool testable =
      answer.several() && input.response.entry.empty() && input.rows.cluster.empty() &&
      (input.rows.weight.empty() || input.rows.weightKind == engine::WeightKind::kFrequencies);
  if (testable) test(ordered, request, answer.types);
  for (std::size_t i = 0; i < answer.types.size(); ++i) {
    progress.at(static_cast<double>(i) / static_cast<double>(answer.types.size()));
    read(sorted, input, request, answer, answer.types[i]);
  }
  return answer;
}

IncidenceAnswer fitGray(const frame::Frame& data, const IncidenceRequest& request,
                        numerics::Progress& progress) {
  Input input;
  IncidenceAnswer answer = beginning(data, request, input);
  requireSeveral(answer.group, kMostGroups);
  const incidence::Ordered ordered(input.response, input.rows, input.groups);
  const incidence::Causes sorted(ordered);
  answer.curves = incidence::estimate(sorted, input.rows, request.variance);
  progress.at(0.5);
  test(ordered, request, answer.types);
  return answer;
}

}  // namespace survmeth::analysis
