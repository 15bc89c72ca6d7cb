// Pairwise comparison of areas under ROC curves.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "Dist/Dist"
#include "survival/roc/components.h"
#include "survival/roc/roc.h"

namespace {

using survival::roc::ClassView;
using survival::roc::Components;

// What a cell of `significant` holds where no comparison was made.
constexpr int kNotCompared = INT_MIN;

struct Outputs {
  matrix* aucDiff;
  matrix* zStat;
  matrix* halfWidth;
  matrix* covariance;
  matrix* pValue;
  matrixInt* significant;

  void clear(int k) const {
    for (int j = 1; j <= k; ++j) {
      for (int i = 1; i <= k; ++i) {
        for (matrix* output : {aucDiff, zStat, halfWidth, covariance, pValue}) {
          output->vbset(i, j, kMissing);
        }
        significant->vbset(i, j, kNotCompared);
      }
    }
  }

  void setDifference(int i, int j, double difference) const {
    aucDiff->vbset(i, j, difference);
    aucDiff->vbset(j, i, -difference);
  }

  void setTest(int i, int j, double statistic, double p, double alpha) const {
    zStat->vbset(i, j, statistic);
    zStat->vbset(j, i, -statistic);
    pValue->vbset(i, j, p);
    pValue->vbset(j, i, p);
    // Half of alpha against a two-sided p-value: the flag that callers have always been given.
    const int below = p < alpha / 2.0 ? 1 : 0;
    significant->vbset(i, j, below);
    significant->vbset(j, i, below);
  }
};

// The tests of a paired design over rows sorted by class, the negatives first.
class PairedTests {
 public:
  PairedTests(const matrix& testValues, const matrix& weights, int n, int k, long long nNeg)
      : rows_(static_cast<std::size_t>(n)),
        negatives_(static_cast<std::size_t>(std::clamp<long long>(nNeg, 0, n))),
        weight_(rows_),
        tests_(static_cast<std::size_t>(std::max(k, 0))) {
    for (int r = 1; r <= n; ++r) weight_[r - 1] = weights.vbget(r, 1);
    for (std::size_t t = 0; t < tests_.size(); ++t) {
      Test& test = tests_[t];
      test.value.resize(rows_);
      for (int r = 1; r <= n; ++r) {
        const double value = testValues.vbget(r, static_cast<int>(t) + 1);
        test.value[r - 1] = value;
        if (isMissing(value)) test.missing.push_back(r - 1);
      }
    }
  }

  // DeLong's covariance of the areas of tests i and j (from 0) over the rows where neither is
  // missing.
  double covariance(std::size_t i, std::size_t j) {
    prepare(tests_[i]);
    prepare(tests_[j]);
    const Test& first = tests_[i];
    const Test& second = tests_[j];
    std::vector<int> missing;
    std::set_union(first.missing.begin(), first.missing.end(), second.missing.begin(),
                   second.missing.end(), std::back_inserter(missing));
    const Weighting weighting = weigh(missing);
    Components ofFirst;
    Components ofSecond;
    if (missing != first.missing) ofFirst = componentsUnder(weighting, first);
    if (missing != second.missing) ofSecond = componentsUnder(weighting, second);
    const Components& a = missing == first.missing ? first.components : ofFirst;
    const Components& b = missing == second.missing ? second.components : ofSecond;

    const double* weight = weighting.weight.data();
    const double S10 =
        product(weight, a.negative, a.area, b.negative, b.area) / (weighting.N - 1.0);
    const double S01 =
        product(weight + negatives_, a.positive, a.area, b.positive, b.area) / (weighting.P - 1.0);
    return S10 / weighting.N + S01 / weighting.P;
  }

 private:
  struct Test {
    std::vector<double> value;
    std::vector<int> missing;  // rows from 0, ascending
    bool prepared = false;
    std::vector<std::uint32_t> negativeOrder;
    std::vector<std::uint32_t> positiveOrder;
    Components components;  // over the rows where this test is not missing
  };

  // Weights with those of the missing rows at 0, and the class sizes they add up to.
  struct Weighting {
    std::vector<double> weight;
    double N = 0.0;
    double P = 0.0;
  };

  Weighting weigh(const std::vector<int>& missing) const {
    Weighting weighting{weight_};
    for (const int row : missing) weighting.weight[row] = 0.0;
    for (std::size_t r = 0; r < rows_; ++r) {
      (r < negatives_ ? weighting.N : weighting.P) += weighting.weight[r];
    }
    return weighting;
  }

  // A test that is not selected is never sorted.
  void prepare(Test& test) const {
    if (test.prepared) return;
    test.negativeOrder = survival::roc::ascendingRows(test.value.data(), negatives_);
    test.positiveOrder =
        survival::roc::ascendingRows(test.value.data() + negatives_, rows_ - negatives_);
    test.components = componentsUnder(weigh(test.missing), test);
    test.prepared = true;
  }

  Components componentsUnder(const Weighting& weighting, const Test& test) const {
    const ClassView negatives{test.value.data(), weighting.weight.data(), negatives_,
                              &test.negativeOrder};
    const ClassView positives{test.value.data() + negatives_, weighting.weight.data() + negatives_,
                              rows_ - negatives_, &test.positiveOrder};
    return survival::roc::componentsOf(negatives, positives, weighting.N, weighting.P,
                                       survival::roc::Pairs::weighty);
  }

  static double product(const double* weight, const std::vector<double>& a, double areaA,
                        const std::vector<double>& b, double areaB) {
    double sum = 0.0;
    for (std::size_t r = 0; r < a.size(); ++r) {
      sum += weight[r] * (a[r] - areaA) * (b[r] - areaB);
    }
    return sum;
  }

  std::size_t rows_;
  std::size_t negatives_;
  std::vector<double> weight_;
  std::vector<Test> tests_;
};

// p of a two-sided test whose statistic has this probability below it.
double twoSided(double lowerTail) { return 2.0 * Min(lowerTail, 1.0 - lowerTail); }

void comparePaired(matrix* status, int n, matrix* testValues, matrix* weights, int k, double alpha,
                   const matrix& aucs, matrix* aucVariances, const matrixInt& selected,
                   const Outputs& out) {
  const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
  SortQ(testValues, n, k, 1, n, status, weights, 1, 0, kTrue);
  const long long nPos = truncated(V_Sum2(status, n));
  PairedTests tests(*testValues, *weights, n, k, n - nPos);

  for (int i = 1; i <= k; ++i) {
    const bool chosen = selected.vbget(i, 1) == 1;
    out.pValue->vbset(i, i, chosen ? 1.0 : kMissing);
    aucVariances->vbset(i, 1, kMissing);
    if (!chosen) continue;
    for (int j = 1; j <= i; ++j) {
      if (selected.vbget(j, 1) != 1) continue;
      const double covariance = tests.covariance(j - 1, i - 1);
      out.covariance->vbset(i, j, covariance);
      out.covariance->vbset(j, i, covariance);
    }
    // A standard error, whatever the array is called.
    aucVariances->vbset(i, 1, sqr(out.covariance->vbget(i, i)));
  }

  for (int i = 1; i <= k; ++i) {
    for (int j = i + 1; j <= k; ++j) {
      if (selected.vbget(i, 1) != 1 || selected.vbget(j, 1) != 1) continue;
      const double difference = aucs.vbget(i, 1) - aucs.vbget(j, 1);
      out.setDifference(i, j, difference);
      const double s = sqr(out.covariance->vbget(i, i) + out.covariance->vbget(j, j) -
                           2.0 * out.covariance->vbget(i, j));
      if (!(s > 0.0)) continue;
      out.halfWidth->vbset(i, j, z * s);
      out.setTest(i, j, difference / s, twoSided(CDFNormalStd(std::fabs(difference) / s)), alpha);
    }
  }
}

void compareIndependent(const matrix& sampleSizes, int k, double alpha, const matrix& aucs,
                        const matrix& variances, const matrixInt& selected, const Outputs& out) {
  for (int i = 1; i <= k; ++i) {
    if (selected.vbget(i, 1) == 1) out.pValue->vbset(i, i, 1.0);
    for (int j = i + 1; j <= k; ++j) {
      if (selected.vbget(i, 1) != 1 || selected.vbget(j, 1) != 1) continue;
      if (!(variances.vbget(i, 1) > 0.0) || !(variances.vbget(j, 1) > 0.0)) continue;
      const double sizeI = truncated(sampleSizes.vbget(1, i));
      const double sizeJ = truncated(sampleSizes.vbget(1, j));
      const double a = variances.vbget(i, 1) / sizeI;
      const double b = variances.vbget(j, 1) / sizeJ;
      const double s = sqr(a + b);
      const double df = (a + b) * (a + b) / (b * b / (sizeJ - 1.0) + a * a / (sizeI - 1.0));
      const double difference = aucs.vbget(i, 1) - aucs.vbget(j, 1);
      out.setDifference(i, j, difference);
      out.covariance->vbset(i, j, 0.0);
      out.covariance->vbset(j, i, 0.0);
      out.halfWidth->vbset(i, j, std::fabs(InvCDFStudent(1.0 - alpha / 2.0, df)) * s);
      if (!(s > 0.0)) continue;
      out.setTest(i, j, difference / s, twoSided(CDFStudent(std::fabs(difference) / s, df)), alpha);
    }
  }
}

}  // namespace

int ComputeROCComparisonsDep(matrix* status, int n, matrix* testValues, matrix* weights,
                             matrix* sampleSizes, int k, double alpha, short paired, matrix* aucs,
                             matrix* aucVariances, matrixInt* selected, matrix* aucDiff,
                             matrix* zStat, matrix* halfWidth, matrix* covariance, matrix* pValue,
                             matrixInt* significant) {
  n = std::clamp(n, 0, std::min({status->count(), testValues->rows(), weights->count()}));
  k = std::min(k, selected->count());
  // Callers leave the first weight unset and count on it being 1.
  weights->vbset(1, 1, 1.0);
  const Outputs out{aucDiff, zStat, halfWidth, covariance, pValue, significant};
  out.clear(k);
  if (paired == kTrue) {
    comparePaired(status, n, testValues, weights, k, alpha, *aucs, aucVariances, *selected, out);
  } else {
    compareIndependent(*sampleSizes, k, alpha, *aucs, *aucVariances, *selected, out);
  }
  return 0;
}
