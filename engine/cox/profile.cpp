#include "engine/cox/profile.h"

#include <vector>

#include "engine/cox/likelihood.h"
#include "engine/cox/maximum.h"
#include "engine/cox/penalisedLikelihood.h"

namespace survmeth::engine::cox {
namespace {

class Plain : public Profile {
 public:
  Plain(const Fit& fit, std::size_t column, numerics::Progress& progress)
      : fit_(fit), column_(column), progress_(progress), at_(fit.working) {
    for (std::size_t j = 0; j < fit.working.size(); ++j) {
      if (j != column && fit.column[j] == Column::kEstimated) free_.push_back(j);
    }
  }

  Held at(double value) override {
    std::vector<double> start = at_;
    start[column_] = value;
    if (!evaluate(*fit_.problem, fit_.ties, start, hazards_, point_)) return {};
    const Maximum maximum =
        maximise(*fit_.problem, fit_.ties, start, free_, point_, fit_.iterationLimit, progress_);
    if (!maximum.converged) return {};
    at_ = maximum.at;
    return {true, maximum.point.value, maximum.point.gradient[column_]};
  }

 private:
  const Fit& fit_;
  std::size_t column_;
  numerics::Progress& progress_;
  std::vector<double> at_;
  std::vector<std::size_t> free_;
  Hazards hazards_;
  numerics::NewtonPoint point_;
};

class Penalised : public Profile {
 public:
  Penalised(const PenalisedFit& penalised, std::size_t column, numerics::Progress& progress)
      : column_(column),
        at_(penalised.fit.working),
        likelihood_(*penalised.fit.problem, penalised.fit.ties, penalised.penalty,
                    activeOf(penalised.fit), penalised.fit.iterationLimit, progress),
        others_(columnsWithout(likelihood_.active(), {column})) {}

  Held at(double value) override {
    at_[column_] = value;
    const PenalisedLikelihood::Found found = likelihood_.maximise(at_, others_);
    if (!found.converged) return {};
    at_ = found.at;
    return {true, found.point.value, found.point.gradient[column_]};
  }

 private:
  std::size_t column_;
  std::vector<double> at_;
  PenalisedLikelihood likelihood_;
  std::vector<std::size_t> others_;
};

}  // namespace

std::unique_ptr<Profile> profileOf(const Fit& fit, std::size_t column,
                                   numerics::Progress& progress) {
  return std::make_unique<Plain>(fit, column, progress);
}

std::unique_ptr<Profile> profileOf(const PenalisedFit& penalised, std::size_t column,
                                   numerics::Progress& progress) {
  return std::make_unique<Penalised>(penalised, column, progress);
}

}  // namespace survmeth::engine::cox
