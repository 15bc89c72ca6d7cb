// The stratified Cox log partial likelihood with its gradient and second derivatives.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Klikro/Klikro"
#include "numerics/elementary.h"
#include "numerics/hot.h"
#include "survival/cox/cox.h"
#include "survival/cox/likelihood.h"
#include "survival/cox/riskSums.h"
#include "survival/cox/strata.h"

namespace numerics = survmeth::numerics;

namespace {

using survival::cox::Group;
using survival::cox::GroupTables;
using survival::cox::kTileTerms;
using survival::cox::ReachedRows;
using survival::cox::RiskSets;
using survival::cox::Strata;
using survival::cox::Term;

using Vector = std::vector<double>;

enum Ties { kBreslow = 0, kEfron = 1 };

// The logarithmic likelihood and its derivatives, summed over the strata.
struct Totals {
  explicit Totals(int p)
      : gradient(static_cast<std::size_t>(p)),
        hessian(static_cast<std::size_t>(p) * static_cast<std::size_t>(p)) {}
  double logLik = 0.0;
  Vector gradient;
  Vector hessian;  // p x p
};

// terms[k] = d[k] (a[k] b[k] - s[k] / s0[k]).
SURVMETH_HOT void curvatureTerms(const double* d, const double* a, const double* b, const double* s,
                                 const double* s0, double* terms, int groups) {
  for (int k = 0; k < groups; ++k) terms[k] = d[k] * (a[k] * b[k] - s[k] / s0[k]);
}

// One stratum after the other, with scratch that is kept between them.
class PartialLikelihood {
 public:
  PartialLikelihood(int p, Ties ties, matrix* beta) : p_(p), ties_(ties), beta_(beta) {}

  void add(const Strata& strata, matrix* delta, matrix* X, Totals* totals) {
    load(strata, delta, X, totals);
    formRiskSets(strata.groups());
    if (ties_ == kBreslow) {
      addBreslow(totals);
    } else {
      addEfron(totals);
    }
  }

  // The stratum's part of the likelihood alone.
  void addLikelihood(const Strata& strata, matrix* delta, matrix* X, Totals* totals) {
    load(strata, delta, X, totals);
    if (ties_ == kBreslow) {
      formTotals(strata.groups());
      addBreslowLikelihood(totals);
    } else {
      formActiveTotals(strata.groups());
      addEfronLikelihood(totals);
    }
  }

 private:
  void load(const Strata& strata, matrix* delta, matrix* X, Totals* totals) {
    rows_.load(strata, X, p_, delta, beta_);
    groups_ = strata.groups().data();
    count_ = static_cast<int>(strata.groups().size());
    addCovariateSums(totals);
    formRisks();
    chooseActiveGroups();
  }

  // Room for a table with one row per group; its column j.
  static double* room(Vector& table, int columns, int rows) {
    const std::size_t size = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    if (table.size() < size) table.resize(size);
    return table.data();
  }
  static double* column(Vector& table, int j, int rows) {
    return table.data() + static_cast<std::size_t>(j) * static_cast<std::size_t>(rows);
  }
  double& at(Vector& hessian, int r, int c) const {
    return hessian[static_cast<std::size_t>(r) +
                   static_cast<std::size_t>(c) * static_cast<std::size_t>(p_)];
  }

  // Sums of delta x covariates over each group's own rows, and their product with beta.
  void addCovariateSums(Totals* totals) {
    room(covariateSums_, p_, count_);
    const double* delta = rows_.delta();
    for (int j = 0; j < p_; ++j) {
      const double* x = rows_.covariate(j);
      double* sums = column(covariateSums_, j, count_);
      for (int k = 0; k < count_; ++k) {
        double sum = 0.0;
        const std::ptrdiff_t end = rows_.at(groups_[k].last + 1);
        for (std::ptrdiff_t i = rows_.at(groups_[k].first); i < end; ++i) sum += delta[i] * x[i];
        sums[k] = sum;
      }
    }
    double linear = 0.0;
    for (int k = 0; k < count_; ++k) {
      for (int j = 0; j < p_; ++j)
        linear += column(covariateSums_, j, count_)[k] * beta_->vbget(j + 1, 1);
    }
    totals->logLik += linear;
  }

  void formRisks() {
    const Vector& eta = rows_.eta();
    risk_.resize(eta.size());
    leftOut_.assign(ties_ == kBreslow ? eta.size() : 0, false);
    numerics::expArray(eta, risk_);
    if (ties_ != kBreslow) return;
    for (std::size_t i = 0; i < eta.size(); ++i) {
      if (!(eta[i] >= survival::cox::kLargestPredictor)) continue;
      risk_[i] = 0.0;
      leftOut_[i] = true;
    }
  }

  // Whether no sum over risk sets can overflow or be other than a number.
  bool sumsAreFinite() const {
    double largest = 1.0;
    const auto include = [&largest](double x) {
      if (!(std::fabs(x) <= largest)) largest = std::fabs(x);
      return !std::isnan(x);
    };
    for (int j = 0; j < p_; ++j) {
      const double* x = rows_.covariate(j);
      for (std::ptrdiff_t i = 0; i < rows_.count(); ++i) {
        if (!include(x[i])) return false;
      }
    }
    const double covariate = largest;
    largest = 0.0;
    for (const double risk : risk_) {
      if (!include(risk)) return false;
    }
    return covariate <= 1e100 && largest * covariate * covariate <= 1e290;
  }

  // Groups without events have no part in the derivatives: their sums, as long as they are finite,
  // are only multiplied by 0, and the unguarded form does not look at them at all.
  void chooseActiveGroups() {
    active_.clear();
    const bool finite = ties_ == kBreslow && sumsAreFinite();
    for (int k = 0; k < count_; ++k) {
      const int events = groups_[k].events;
      if (ties_ == kEfron ? events > 0 : events != 0 || !finite) active_.push_back(k);
    }
    activeCount_ = static_cast<int>(active_.size());
  }

  static constexpr Term kRisk{nullptr, nullptr};

  // Sums of exp(eta) over the risk sets of all groups.
  void formTotals(const std::vector<Group>& groups) {
    room(totals_, 1, count_);
    riskSets_.load(rows_, groups, risk_, leftOut_);
    riskSets_.sum(&kRisk, 1, totals_.data());
  }

  void loadActiveGroups(const std::vector<Group>& groups) {
    room(riskSums_, p_ + 1, activeCount_);
    activeGroups_.clear();
    for (const int k : active_) activeGroups_.push_back(groups[static_cast<std::size_t>(k)]);
    riskSets_.load(rows_, activeGroups_, risk_, leftOut_);
  }

  // The same for the active groups, as the first column of the risk sums.
  void formActiveTotals(const std::vector<Group>& groups) {
    loadActiveGroups(groups);
    riskSets_.sum(&kRisk, 1, riskSums_.data());
  }

  // Sums over the risk sets: exp(eta) for every group, covariate x exp(eta) for the active ones.
  void formRiskSets(const std::vector<Group>& groups) {
    if (ties_ == kBreslow) {
      formTotals(groups);
      loadActiveGroups(groups);
      for (int a = 0; a < activeCount_; ++a) {
        riskSums_[static_cast<std::size_t>(a)] = totals_[static_cast<std::size_t>(active_[a])];
      }
    } else {
      formActiveTotals(groups);
    }
    terms_.clear();
    for (int j = 0; j < p_; ++j) terms_.push_back({rows_.covariate(j), nullptr});
    riskSets_.sum(terms_.data(), p_, column(riskSums_, 1, activeCount_));
  }

  // Calls use(r, c, sums over the risk sets of covariate r x covariate c x exp(eta)) for r <= c.
  template <typename Use>
  void forEachPair(Use use) {
    struct Pair {
      int r;
      int c;
    };
    Pair pairs[kTileTerms];
    Term terms[kTileTerms];
    double* sums = room(pairSums_, kTileTerms, activeCount_);
    int waiting = 0;
    const auto flush = [&] {
      riskSets_.sum(terms, waiting, sums);
      for (int t = 0; t < waiting; ++t)
        use(pairs[t].r, pairs[t].c, column(pairSums_, t, activeCount_));
      waiting = 0;
    };
    for (int r = 0; r < p_; ++r) {
      for (int c = r; c < p_; ++c) {
        pairs[waiting] = {r, c};
        terms[waiting] = {rows_.covariate(r), rows_.covariate(c)};
        if (++waiting == kTileTerms) flush();
      }
    }
    flush();
  }

  static bool usable(double total) { return std::fabs(total) > kEpsilon; }

  void addBreslowLikelihood(Totals* totals) const {
    for (int k = 0; k < count_; ++k) {
      if (totals_[k] > kEpsilon) totals->logLik -= groups_[k].events * numerics::log(totals_[k]);
    }
  }

  void addBreslow(Totals* totals) {
    addBreslowLikelihood(totals);
    const double* total = riskSums_.data();
    double* events = room(events_, 1, activeCount_);
    bool allUsable = true;
    for (int a = 0; a < activeCount_; ++a) {
      events[a] = groups_[active_[a]].events;
      allUsable = allUsable && usable(total[a]);
    }

    // The covariate sums of groups without a usable total are in the likelihood and not in its
    // gradient.
    room(means_, p_, activeCount_);
    for (int j = 0; j < p_; ++j) {
      const double* sums = column(riskSums_, j + 1, activeCount_);
      const double* observed = column(covariateSums_, j, count_);
      double* means = column(means_, j, activeCount_);
      double gradient = totals->gradient[j];
      int a = 0;
      for (int k = 0; k < count_; ++k) {
        const bool active = a < activeCount_ && active_[a] == k;
        if (active) means[a] = sums[a] / total[a];
        if (usable(totals_[k])) {
          gradient += active ? observed[k] - events[a] * sums[a] / total[a] : observed[k];
        }
        if (active) ++a;
      }
      totals->gradient[j] = gradient;
    }

    double* terms = room(hessianTerms_, 1, activeCount_);
    forEachPair([&](int r, int c, const double* sums) {
      curvatureTerms(events, column(means_, c, activeCount_), column(means_, r, activeCount_), sums,
                     total, terms, activeCount_);
      double second = at(totals->hessian, r, c);
      for (int a = 0; a < activeCount_; ++a) {
        if (allUsable || usable(total[a])) second += terms[a];
      }
      // The terms are products of the same factors either way round.
      at(totals->hessian, r, c) = second;
      at(totals->hessian, c, r) = second;
    });
  }

  // Sum over a group's own rows of delta x exp(eta), times one or two covariates.
  double tiedSum(const Group& group, const double* first, const double* second) const {
    const double* delta = rows_.delta();
    double sum = 0.0;
    const std::ptrdiff_t end = rows_.at(group.last + 1);
    for (std::ptrdiff_t i = rows_.at(group.first); i < end; ++i) {
      double term = delta[i];
      if (first != nullptr) term *= first[i];
      if (second != nullptr) term *= second[i];
      sum += term * risk_[i];
    }
    return sum;
  }

  // Takes the share of the tied events' sums off the risk sums. The share of the m-th of d events
  // is (m - 1) / d in integers, hence 0 for every one of them: results are those of the Breslow
  // form, which existing analyses rely on, except that sums which overflowed become NaN here.
  void takeTiedShare(double* sums, const double* first, const double* second) const {
    constexpr double share = 0.0;
    for (int a = 0; a < activeCount_; ++a) {
      sums[a] -= share * tiedSum(groups_[active_[a]], first, second);
    }
  }

  // Adds `term` once for each event of active group a.
  void addForEachEvent(int a, double term, double* sum) const {
    const int events = std::min<int>(groups_[active_[a]].events,
                                     static_cast<int>(rows_.count()) + survival::cox::kReach);
    for (int m = 0; m < events; ++m) *sum += term;
  }

  void addEfronLikelihood(Totals* totals) {
    double* total = riskSums_.data();
    takeTiedShare(total, nullptr, nullptr);
    for (int a = 0; a < activeCount_; ++a) {
      double logs = 0.0;
      addForEachEvent(a, numerics::log(total[a]), &logs);
      totals->logLik -= logs;
    }
  }

  void addEfron(Totals* totals) {
    addEfronLikelihood(totals);
    const double* total = riskSums_.data();
    for (int j = 0; j < p_; ++j) {
      double* sums = column(riskSums_, j + 1, activeCount_);
      takeTiedShare(sums, rows_.covariate(j), nullptr);
      const double* observed = column(covariateSums_, j, count_);
      for (int k = 0; k < count_; ++k) totals->gradient[j] += observed[k];
      double expected = 0.0;
      for (int a = 0; a < activeCount_; ++a) addForEachEvent(a, sums[a] / total[a], &expected);
      totals->gradient[j] -= expected;
    }

    forEachPair([&](int r, int c, const double* sums) {
      addEfronCurvature(r, c, sums, totals);
      if (r != c) addEfronCurvature(c, r, sums, totals);
    });
  }

  void addEfronCurvature(int r, int c, const double* sums, Totals* totals) {
    const double* total = riskSums_.data();
    const double* ofR = column(riskSums_, r + 1, activeCount_);
    const double* ofC = column(riskSums_, c + 1, activeCount_);
    double* second = room(hessianTerms_, 1, activeCount_);
    std::copy_n(sums, activeCount_, second);
    takeTiedShare(second, rows_.covariate(r), rows_.covariate(c));
    double curvature = 0.0;
    for (int a = 0; a < activeCount_; ++a) {
      addForEachEvent(a, ofC[a] * (ofR[a] / total[a]) / total[a] - second[a] / total[a],
                      &curvature);
    }
    at(totals->hessian, r, c) += curvature;
  }

  int p_;
  Ties ties_;
  matrix* beta_;
  ReachedRows rows_;
  const Group* groups_ = nullptr;
  int count_ = 0;
  RiskSets riskSets_;
  Vector risk_;  // exp(eta)
  std::vector<bool> leftOut_;
  std::vector<Term> terms_;
  std::vector<int> active_;  // groups whose sums count, ascending
  int activeCount_ = 0;
  std::vector<Group> activeGroups_;
  Vector covariateSums_;  // tables with one row per group
  Vector totals_;
  Vector riskSums_;  // one row per active group, like the rest: exp(eta), covariate x exp(eta)
  Vector means_;
  Vector pairSums_;
  Vector events_;
  Vector hessianTerms_;
};

bool isKnown(int ties) { return ties == kBreslow || ties == kEfron; }

}  // namespace

double survival::cox::logLikelihood(int p, matrix* delta, matrix* X, int ties, matrix* beta,
                                    const GroupTables& tables) {
  Totals totals(0);
  if (!isKnown(ties)) return totals.logLik;
  PartialLikelihood likelihood(p, static_cast<Ties>(ties), beta);
  for (Strata strata(tables); strata.next();) likelihood.addLikelihood(strata, delta, X, &totals);
  return totals.logLik;
}

void ComputeLogLikeDerivativesCox(int p, matrix* delta, matrix* X, int ties, matrix* beta,
                                  matrixInt* distinctTimes, matrixInt* groupSize,
                                  matrixInt* groupStart, int S, matrix* stratumSizes,
                                  matrixInt* groupEvents, double* logLik, matrix* gradient,
                                  matrix* hessian) {
  p = survival::cox::coefficientsWithin(p, X, hessian);
  Totals totals(p);
  if (isKnown(ties)) {
    const GroupTables tables{stratumSizes, S, distinctTimes, groupStart, groupSize, groupEvents};
    PartialLikelihood likelihood(p, static_cast<Ties>(ties), beta);
    for (Strata strata(tables); strata.next();) likelihood.add(strata, delta, X, &totals);
  }

  *logLik = totals.logLik;
  matrix::matCheck(gradient, p, 1, 0.0);
  for (int j = 1; j <= p; ++j) {
    gradient->vbset(j, 1, totals.gradient[j - 1]);
    for (int i = 1; i <= p; ++i) {
      hessian->vbset(
          i, j,
          totals.hessian[static_cast<std::size_t>(i - 1) + static_cast<std::size_t>(j - 1) * p]);
    }
  }
}
