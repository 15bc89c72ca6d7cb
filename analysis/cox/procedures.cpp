#include "analysis/cox/procedures.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "analysis/option.h"
#include "numerics/elementary.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace cox = engine::cox;

// The columns of some terms of a design.
engine::Design partOf(const engine::Design& whole, const std::vector<bool>& in) {
  engine::Design part;
  part.termNames = whole.termNames;
  for (std::size_t j = 0; j < whole.size(); ++j) {
    if (!in[whole.term[j]]) continue;
    part.columns.push_back(whole.columns[j]);
    part.names.push_back(whole.names[j]);
    part.term.push_back(whole.term[j]);
  }
  return part;
}

// Models of some terms of a request's. With interactions only beside their parts, columns of the
// whole design are those of each part.
class CoxFamily : public procedures::Family {
 public:
  CoxFamily(const CoxInput& input, const cox::Fit& full) : input_(input), full_(full) {}

  std::size_t terms() const override { return input_.formula.terms.size(); }

  bool isWithin(std::size_t inner, std::size_t outer) const override {
    const auto& own = input_.formula.terms[inner].variables;
    const auto& all = input_.formula.terms[outer].variables;
    return all.size() > own.size() && std::includes(all.begin(), all.end(), own.begin(), own.end());
  }

  procedures::Fit fit(const std::vector<bool>& in, numerics::Progress& progress) override {
    const engine::Design part = partOf(input_.model.design.design, in);
    if (part.columns.empty()) {
      return {true, full_.logLikelihoodNull, 0, std::vector<procedures::Test>(terms())};
    }
    if (part.columns.size() == input_.model.design.design.size()) return of(full_);
    return of(cox::fit(input_.model.response(), input_.rows, part, input_.options, progress));
  }

 private:
  procedures::Fit of(const cox::Fit& fit) const {
    procedures::Fit made;
    made.exists = fit.converged;
    made.logLikelihood = fit.logLikelihood;
    for (const cox::Column column : fit.column) {
      made.parameters += column != cox::Column::kAliased ? 1 : 0;
    }
    made.terms.resize(terms());
    for (const cox::TermTest& each : fit.terms) {
      made.terms[each.term] = {each.test.chiSquare, each.test.degreesOfFreedom, each.test.pValue};
    }
    return made;
  }

  const CoxInput& input_;
  const cox::Fit& full_;
};

// What a replicate is made of: rows of a response, gathered.
struct Drawn {
  std::vector<double> entry, exit, weight, offset;
  std::vector<std::uint32_t> event, stratum;
  std::vector<std::vector<double>> columns;

  Drawn(const CoxInput& input, const std::vector<std::uint32_t>& rows) {
    const engine::Response response = input.model.response();
    const auto gather = [&rows](const auto& from, auto& to) {
      if (from.empty()) return;
      to.reserve(rows.size());
      for (const std::uint32_t row : rows) to.push_back(from[row]);
    };
    gather(response.entry, entry);
    gather(response.exit, exit);
    gather(response.event, event);
    gather(input.rows.weight, weight);
    gather(input.rows.offset, offset);
    gather(input.rows.stratum, stratum);
    columns.resize(input.model.design.design.size());
    for (std::size_t j = 0; j < columns.size(); ++j) {
      gather(input.model.design.design.columns[j], columns[j]);
    }
  }
};

}  // namespace

procedures::Selection selectCoxTerms(const CoxRequest& request, const CoxInput& input,
                                     const cox::Fit& full, numerics::Progress& progress) {
  procedures::SelectionOptions options;
  options.direction = request.select == CoxSelection::kBackward  ? procedures::Direction::kBackward
                      : request.select == CoxSelection::kForward ? procedures::Direction::kForward
                                                                 : procedures::Direction::kBoth;
  options.byPValue = request.criterion.empty() || request.criterion == "p";
  options.remove = request.remove.value_or(0.1);
  options.enter = request.enter.value_or(0.05);
  options.penalty = request.criterion == "bic" ? numerics::log(full.eventsCounted) : 2.0;
  std::vector<std::string> names;
  for (const model::Term& term : input.formula.terms) names.push_back(term.name);
  options.forced.assign(names.size(), false);
  for (const std::string& name : request.force) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
      throw BadOption("force", text::quote(name) + " is no term of the model; expected some of " +
                                   text::nearestFirst(name, names));
    }
    options.forced[static_cast<std::size_t>(found - names.begin())] = true;
  }
  CoxFamily family(input, full);
  return procedures::select(family, options, progress);
}

std::vector<std::vector<std::uint32_t>> coxUnits(const CoxInput& input) {
  const std::size_t rows = input.model.event.size();
  const auto& cluster = input.rows.cluster;
  std::vector<std::vector<std::uint32_t>> units(cluster.empty() ? rows : input.rows.clusters);
  for (std::uint32_t i = 0; i < rows; ++i) units[cluster.empty() ? i : cluster[i]].push_back(i);
  std::erase_if(units, [](const auto& each) { return each.empty(); });
  return units;
}

std::vector<std::uint32_t> coxRowsOf(const std::vector<std::vector<std::uint32_t>>& units,
                                     std::span<const std::uint32_t> drawn) {
  std::vector<std::uint32_t> rows;
  for (const std::uint32_t unit : drawn) {
    rows.insert(rows.end(), units[unit].begin(), units[unit].end());
  }
  return rows;
}

procedures::BootstrapOptions coxBootstrapOptions(const CoxRequest& request) {
  procedures::BootstrapOptions options;
  options.replicates = static_cast<std::size_t>(*request.bootstrap);
  options.seed = static_cast<std::uint64_t>(request.seed.value_or(1));
  options.accelerated = coxBootstrapLimits(request) == procedures::BootstrapLimits::kBca;
  return options;
}

procedures::BootstrapLimits coxBootstrapLimits(const CoxRequest& request) {
  using procedures::BootstrapLimits;
  return request.bootstrapLimits == "bca"     ? BootstrapLimits::kBca
         : request.bootstrapLimits == "basic" ? BootstrapLimits::kBasic
                                              : BootstrapLimits::kPercentile;
}

procedures::Bootstrap bootstrapCox(const CoxRequest& request, const CoxInput& input,
                                   const cox::Fit& fit,
                                   const std::vector<std::vector<std::uint32_t>>& units,
                                   numerics::Progress& progress) {
  cox::Options options = input.options;
  options.robust = false;
  engine::Design names = input.model.design.design;
  const auto statistic = [&](std::span<const std::uint32_t> drawn) -> std::vector<double> {
    const Drawn data(input, coxRowsOf(units, drawn));
    engine::Design design = names;
    for (std::size_t j = 0; j < design.size(); ++j) design.columns[j] = data.columns[j];
    engine::Rows carried = input.rows;
    carried.weight = data.weight;
    carried.offset = data.offset;
    carried.stratum = data.stratum;
    carried.cluster = {};
    carried.clusters = 0;
    numerics::Progress none;
    const cox::Fit replicate =
        cox::fit({data.entry, data.exit, data.event, 1}, carried, design, options, none);
    if (!replicate.converged || replicate.column != fit.column) return {};
    std::vector<double> values;
    for (std::size_t j = 0; j < fit.column.size(); ++j) {
      if (fit.column[j] == cox::Column::kEstimated) values.push_back(replicate.coefficients[j]);
    }
    return values;
  };
  return procedures::bootstrap(units.size(), statistic, coxBootstrapOptions(request), progress);
}

}  // namespace survmeth::analysis
