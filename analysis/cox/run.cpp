#include "analysis/cox/run.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "analysis/cox/procedures.h"
#include "analysis/cox/profile.h"
#include "analysis/cox/subjects.h"
#include "analysis/option.h"
#include "frame/labels.h"
#include "numerics/elementary.h"
#include "numerics/partOfProgress.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;
using engine::Refusal;
using engine::Role;

class Run {
 public:
  Run(const frame::Frame& data, const CoxRequest& request, numerics::Progress& progress)
      : data_(data), request_(request), progress_(progress) {}

  CoxAnswer answer() {
    input_.formula = coxFormula(request_, frame::columnNames(data_));
    takeModel();
    requireEvents();
    takeRows();
    requireLikelihoodRatios();
    const std::size_t profiles =
        request_.limits == CoxLimits::kProfile ? input_.model.design.design.size() : 0;
    parts_ = 1 + (request_.select != CoxSelection::kNone ? 2 : 0) + profiles +
             (request_.bootstrap ? 5 : 0) + (request_.dropOne ? 1 : 0) +
             (request_.versus.empty() ? 0 : 1);
    fit();
    if (request_.select != CoxSelection::kNone) selectTerms();
    requireCoxAnswer(request_, input_, answer_);
    describeCoxColumns(input_, answer_);
    noteCoxOutcomes(request_, input_, answer_);
    answer_.concordance = cox::concordance(answer_.fit);
    if (profiles > 0) findProfiles();
    if (request_.dropOne) answer_.dropOne = cox::dropEachTerm(answer_.fit, *nextPart());
    if (!request_.versus.empty()) {
      answer_.versus = compareCox(data_, request_, input_, answer_.fit, *nextPart());
    }
    if (request_.bootstrap) {
      const std::size_t from = std::exchange(part_, parts_);
      numerics::PartOfProgress rest(progress_, from, parts_, parts_);
      answer_.units = coxUnits(input_);
      const auto& columns = answer_.fit.column;
      if (std::find(columns.begin(), columns.end(), cox::Column::kEstimated) != columns.end()) {
        answer_.bootstrap = bootstrapCox(request_, input_, answer_.fit, answer_.units, rest);
      }
    }
    followUp(data_, request_, input_, answer_);
    return std::move(answer_);
  }

  CoxAnswer again(const model::Formula& formula) {
    input_.formula = formula;
    takeModel();
    requireEvents();
    takeRows();
    fit();
    describeCoxColumns(input_, answer_);
    return std::move(answer_);
  }

 private:
  std::unique_ptr<numerics::Progress> nextPart() {
    part_ = std::min(part_ + 1, parts_);
    return std::make_unique<numerics::PartOfProgress>(progress_, part_ - 1, parts_);
  }

  void takeModel() {
    answer_.coding = model::Coding::learn(input_.formula, data_, coxCoding(request_));
    requireCoxLevels(request_, answer_.coding);
    input_.model = model::modelData(answer_.coding, data_, request_.eventValues);
    requireCoxUnits(input_.model.design.design);
  }

  void requireEvents() const {
    const auto& event = input_.model.event;
    if (std::find(event.begin(), event.end(), 1u) != event.end()) return;
    throw Refusal(Role::kEvent, Refusal::kNone,
                  request_.cases ? "no row is a case" : "no row is an event", Refusal::kNone,
                  request_.cases ? "at least one case among the complete rows"
                                 : "at least one event among the complete rows");
  }

  // What rows carry besides the response.
  void takeRows() {
    input_.rows = input_.model.rows();
    input_.rows.weightKind = request_.weightsAre;
    if (!request_.weights.empty()) {
      input_.rows.weight = data_.numbers(request_.weights)->numbers;
      const auto& weight = input_.rows.weight;
      if (std::none_of(weight.begin(), weight.end(), [](double w) { return w > 0; })) {
        throw Refusal(Role::kWeight, Refusal::kNone, "every weight is 0", Refusal::kNone,
                      "at least one above 0");
      }
    }
    answer_.clusters = input_.model.clusterNames;
    if (!request_.cluster.empty()) takeClusters(frame::labelsOf(*data_.labels(request_.cluster)));
    if (!request_.id.empty()) takeSubjects();
    input_.options.ties = request_.ties;
    input_.options.tieTolerance = request_.tolerance();
    input_.options.robust = request_.robust;
    input_.options.dropAliased = true;
    answer_.weighted = !request_.weights.empty();
    answer_.sampling = request_.weightsAre == engine::WeightKind::kSampling;
    answer_.strata = input_.model.strataNames;
    if (request_.byCluster && input_.rows.cluster.empty()) {
      throw BadOption("by-cluster", "there are no clusters; expected --cluster or --id besides");
    }
  }

  void takeClusters(frame::Labels labels) {
    clusters_ = std::move(labels.codes);
    answer_.clusters = std::move(labels.labels);
    input_.rows.cluster = clusters_;
    input_.rows.clusters = answer_.clusters.size();
  }

  // Rows of a subject depend on each other where it has several events, and count as a cluster
  // wherever a robust covariance or sums by cluster are asked for.
  void takeSubjects() {
    frame::Labels labels = frame::labelsOf(*data_.labels(request_.id));
    CoxSubjects subjects =
        checkSubjects(data_, input_.model.response(), input_.rows, labels, input_.model.dated());
    if (subjects.gaps) answer_.notes.push_back(*std::move(subjects.gaps));
    const bool robust =
        request_.robust || answer_.sampling || request_.byCluster || subjects.severalEvents;
    if (!input_.rows.cluster.empty() || !robust) return;
    takeClusters(std::move(labels));
    answer_.clustersAreSubjects = true;
  }

  void fit() {
    if (request_.isPenalised()) {
      const cox::Penalty penalty{
          request_.firth ? cox::Penalty::Kind::kDeterminant : cox::Penalty::Kind::kRidge,
          request_.ridge.value_or(0), !request_.ridgeRaw};
      answer_.penalised =
          cox::fitPenalised(input_.model.response(), input_.rows, input_.model.design.design,
                            input_.options, penalty, *nextPart());
      answer_.fit = answer_.penalised->fit;
      return;
    }
    answer_.fit = cox::fit(input_.model.response(), input_.rows, input_.model.design.design,
                           input_.options, *nextPart());
  }

  // Fits the selected terms, where they are not all.
  void selectTerms() {
    const procedures::Selection made = selectCoxTerms(request_, input_, answer_.fit, *nextPart());
    const double events = answer_.fit.eventsCounted;
    for (const procedures::SelectionStep& step : made.steps) {
      const auto parameters = static_cast<double>(step.parameters);
      answer_.steps.push_back({input_.formula.terms[step.term].name,
                               step.added,
                               {step.test.chiSquare, step.test.degreesOfFreedom, step.test.pValue},
                               2 * parameters - 2 * step.logLikelihood,
                               parameters * numerics::log(events) - 2 * step.logLikelihood});
    }
    for (std::size_t term = made.in.size(); term-- > 0;) {
      if (made.in[term]) continue;
      input_.formula.terms.erase(input_.formula.terms.begin() + static_cast<std::ptrdiff_t>(term));
      ++answer_.leftOut;
    }
    if (answer_.leftOut == 0) return;
    const engine::Rows rows = input_.rows;
    takeModel();
    input_.rows = rows;
    if (request_.cluster.empty() && !answer_.clustersAreSubjects) {
      input_.rows.cluster = input_.model.cluster;
    }
    input_.rows.stratum = input_.model.stratum;
    input_.rows.offset = input_.model.offset;
    fit();
    nameWhatIsLeft();
  }

  // The formula of the model that was fitted, in place of the one that was asked for.
  void nameWhatIsLeft() {
    model::Formula left = answer_.coding.formula();
    left.text = model::textOf(left);
    answer_.coding = model::Coding(std::move(left), answer_.coding.variables());
  }

  // A likelihood ratio has no chi-square law where the rows are not independent.
  void requireLikelihoodRatios() const {
    if (input_.rows.cluster.empty() && !answer_.sampling) return;
    const std::pair<const char*, bool> asked[] = {
        {"limits", request_.limits == CoxLimits::kProfile},
        {"drop-one", request_.dropOne},
        {"versus", !request_.versus.empty()}};
    for (const auto& [option, given] : asked) {
      if (!given) continue;
      throw BadOption(option,
                      std::string("rests on likelihood ratios, which have no chi-square law "
                                  "with ") +
                          (answer_.sampling ? "sampling weights" : "clusters") +
                          "; expected Wald tests and limits");
    }
  }

  void findProfiles() {
    for (std::size_t j = 0; j < answer_.columns.size(); ++j) {
      const double level = 1 - request_.alpha;
      answer_.profile.push_back(coxProfileLimits(
          answer_.fit, answer_.penalised ? &*answer_.penalised : nullptr, j, level, *nextPart()));
      if (answer_.profile.back().found || answer_.fit.column[j] == cox::Column::kAliased) continue;
      const std::string& name = answer_.columns[j].name;
      answer_.notes.push_back(
          {"notConverged", "the profile of " + name + " has no maximum", {name}});
    }
  }

  const frame::Frame& data_;
  const CoxRequest& request_;
  numerics::Progress& progress_;
  std::size_t part_ = 0, parts_ = 1;
  CoxInput input_;
  std::vector<std::uint32_t> clusters_;
  CoxAnswer answer_;
};

}  // namespace

CoxAnswer fitCox(const frame::Frame& data, const CoxRequest& request,
                 numerics::Progress& progress) {
  return Run(data, request, progress).answer();
}

CoxAnswer refitCox(const frame::Frame& data, const CoxRequest& request,
                   const model::Formula& formula) {
  numerics::Progress none;
  return Run(data, request, none).again(formula);
}

}  // namespace survmeth::analysis
