#include "engine/curves/permutation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "Dist/Dist"
#include "engine/curves/enumeration.h"
#include "engine/curves/scores.h"
#include "engine/curves/weights.h"
#include "engine/curves/yardstick.h"
#include "numerics/elementary.h"
#include "numerics/random.h"
#include "numerics/sizes.h"
#include "numerics/threads.h"

namespace survmeth::engine::curves {
namespace {

// Random arrangements, each by the numbers of a stream of its own.
class Draws {
 public:
  Draws(const Scores& scores, std::size_t groups)
      : scores_(scores), groups_(groups), size_(scores.strata() * groups) {
    for (std::size_t s = 0; s < scores.strata(); ++s) {
      for (std::size_t i = scores.first[s]; i < scores.first[s + 1]; ++i) {
        ++size_[s * groups + scores.group[i]];
      }
    }
  }

  // What is judged of `count` arrangements from number `from` on.
  void run(const Judge& judge, std::uint64_t seed, std::uint64_t from, std::uint64_t count,
           std::span<std::uint64_t> extreme) const {
    std::vector<std::uint32_t> order(scores_.rows());
    std::vector<std::int64_t> sums(numerics::product(scores_.score.size(), groups_));
    for (std::uint64_t number = from; number < from + count; ++number) {
      numerics::Random random(seed, number);
      std::iota(order.begin(), order.end(), 0U);
      std::fill(sums.begin(), sums.end(), 0);
      for (std::size_t s = 0; s < scores_.strata(); ++s) deal(s, random, order, sums);
      judge.count(sums, extreme);
    }
  }

 private:
  // The first rows of the order are drawn without replacement for one group after the other; the
  // largest group has what is left.
  void deal(std::size_t s, numerics::Random& random, std::vector<std::uint32_t>& order,
            std::vector<std::int64_t>& sums) const {
    const std::uint64_t* size = size_.data() + s * groups_;
    const auto largest = static_cast<std::size_t>(std::max_element(size, size + groups_) - size);
    std::size_t at = scores_.first[s];
    const std::size_t end = scores_.first[s + 1];
    for (std::size_t g = 0; g < groups_; ++g) {
      if (g == largest || size[g] == 0) continue;
      const std::size_t from = at;
      for (; at < from + size[g]; ++at) {
        std::swap(order[at], order[at + random.below(static_cast<std::uint32_t>(end - at))]);
      }
      add(g, from, at, order, sums);
    }
    add(largest, at, end, order, sums);
  }

  void add(std::size_t g, std::size_t from, std::size_t to, const std::vector<std::uint32_t>& order,
           std::vector<std::int64_t>& sums) const {
    for (std::size_t w = 0; w < scores_.score.size(); ++w) {
      const std::int64_t* score = scores_.score[w].data();
      std::int64_t sum = 0;
      for (std::size_t i = from; i < to; ++i) sum += score[order[i]];
      sums[w * groups_ + g] += sum;
    }
  }

  const Scores& scores_;
  std::size_t groups_;
  std::vector<std::uint64_t> size_;  // of each stratum's groups
};

using Counts = std::vector<std::uint64_t>;

// Rounds of parts on all threads, after each of which the caller may end it.
template <class Work>
Counts inRounds(std::size_t parts, std::size_t statistics, numerics::Progress* progress,
                const Work& work) {
  constexpr std::size_t kRound = 32;
  Counts total(statistics + 1);
  for (std::size_t from = 0; from < parts; from += kRound) {
    if (progress != nullptr) progress->at(static_cast<double>(from) / static_cast<double>(parts));
    const std::size_t count = std::min(kRound, parts - from);
    std::vector<Counts> counts(count, Counts(statistics + 1));
    numerics::inParallel(count, [&](std::size_t part) { work(from + part, counts[part]); });
    for (const Counts& part : counts) {
      for (std::size_t i = 0; i < total.size(); ++i) total[i] += part[i];
    }
  }
  return total;
}

Counts enumerated(const Scores& scores, std::size_t groups, const Judge& judge,
                  numerics::Progress* progress) {
  const Enumeration enumeration(scores, groups);
  return inRounds(
      enumeration.parts(), judge.statistics(), progress, [&](std::size_t part, Counts& extreme) {
        enumeration.run(part,
                        [&](std::span<const std::int64_t> sums) { judge.count(sums, extreme); });
      });
}

Counts drawn(const Scores& scores, std::size_t groups, const Judge& judge,
             const Permutations& permutations, numerics::Progress* progress) {
  // Parts of some 2^18 rows, so that a thread's beginning and a round's end cost nothing.
  const std::uint64_t each = std::clamp<std::uint64_t>(
      (1U << 18) / std::max<std::uint64_t>(1, scores.rows()), 1, 1U << 12);
  const std::uint64_t parts = (permutations.count + each - 1) / each;
  const Draws draws(scores, groups);
  return inRounds(parts, judge.statistics(), progress, [&](std::size_t part, Counts& extreme) {
    const std::uint64_t from = part * each;
    draws.run(judge, permutations.seed, from, std::min(each, permutations.count - from), extreme);
  });
}

void setPValue(PermutationTest& test, std::uint64_t extreme, std::uint64_t looked,
               const Permutations& permutations) {
  test.extreme = extreme;
  const auto b = static_cast<double>(extreme);
  const auto n = static_cast<double>(looked);
  if (permutations.exact) {
    test.pValue = b / n;
    return;
  }
  test.pValue = (b + 1.0) / (n + 1.0);
  GetInfSupClopper(b, n, 1.0 - permutations.level, &test.lower, &test.upper);
}

void setLaw(PermutationTest& test, const Judge& judge, std::size_t w, std::size_t groups,
            Alternative alternative) {
  const Yardstick& yardstick = judge[w];
  test.degreesOfFreedom = yardstick.freedom();
  if (groups != 2) {
    test.chiSquare = judge.observed(w) * judge.observed(w);
    test.asymptotic = pValChiSq(test.chiSquare, static_cast<double>(test.degreesOfFreedom));
    return;
  }
  test.z = yardstick.z(judge.sums(w));
  test.chiSquare = test.z * test.z;
  if (alternative == Alternative::kTwoSided) {
    test.asymptotic = 2.0 * CDFNormalStd(-std::fabs(test.z));
  } else {
    test.asymptotic = CDFNormalStd(alternative == Alternative::kGreater ? -test.z : test.z);
  }
}

// The product over the strata of n! / (n1! n2! ...), rounded where it is a whole number that a
// double holds.
double arrangementsOf(const Scores& scores, std::size_t groups) {
  double logarithm = 0.0;
  for (std::size_t s = 0; s < scores.strata(); ++s) {
    std::vector<double> count(groups);
    for (std::size_t i = scores.first[s]; i < scores.first[s + 1]; ++i) ++count[scores.group[i]];
    logarithm += numerics::lgamma(1.0 + std::accumulate(count.begin(), count.end(), 0.0));
    for (const double c : count) logarithm -= numerics::lgamma(1.0 + c);
  }
  const double number = numerics::exp(logarithm);
  return number < 1e12 ? std::nearbyint(number) : number;
}

void requireEqualWeights(const Rows& rows) {
  for (std::size_t i = 0; i < rows.weight.size(); ++i) {
    if (rows.weight[i] == 0.0 || rows.weight[i] == 1.0) continue;
    throw Refusal(Role::kWeight, i, "permutations exchange rows: they take no weights but 0 and 1");
  }
}

}  // namespace

double arrangementsOf(const Response& response, const Rows& rows, const Groups& groups) {
  requireEqualWeights(rows);
  const Pooled pooled(response, rows, groups, risk::kTieTolerance);
  return arrangementsOf(scoresOf(pooled, {}), groups.size());
}

PermutationComparison permute(const Response& response, const Rows& rows, const Groups& groups,
                              std::span<const Weighting> weightings,
                              const Permutations& permutations, Alternative alternative,
                              numerics::Progress* progress, double tieTolerance) {
  for (const Weighting& weighting : weightings) requireWeighting(weighting);
  requireEqualWeights(rows);
  const std::size_t k = groups.size();
  if (alternative != Alternative::kTwoSided && k != 2) {
    throw Refusal(Role::kGroup, Refusal::kNone, "a one-sided test is of two groups");
  }
  if (!permutations.exact && permutations.count == 0) {
    throw Refusal(Role::kValue, Refusal::kNone, "no permutation is asked for");
  }
  const Pooled pooled(response, rows, groups, tieTolerance);
  const Scores scores = scoresOf(pooled, weightings);
  PermutationComparison result;
  result.arrangements = arrangementsOf(scores, k);
  if (permutations.exact && result.arrangements > kMostArrangements) {
    throw Refusal(Role::kValue, Refusal::kNone,
                  "there are more than 10,000,000 arrangements of the groups to enumerate");
  }
  result.looked =
      permutations.exact ? static_cast<std::uint64_t>(result.arrangements) : permutations.count;
  const Judge judge(scores, k, alternative);
  const Counts extreme = permutations.exact ? enumerated(scores, k, judge, progress)
                                            : drawn(scores, k, judge, permutations, progress);
  result.tests.resize(weightings.size());
  bool any = false;
  for (std::size_t w = 0; w < weightings.size(); ++w) {
    if (judge[w].freedom() == 0) continue;
    setLaw(result.tests[w], judge, w, k, alternative);
    setPValue(result.tests[w], extreme[w], result.looked, permutations);
    any = true;
  }
  if (k == 2 && any) {
    result.combination.z = judge.largest();
    setPValue(result.combination, extreme.back(), result.looked, permutations);
  }
  return result;
}

}  // namespace survmeth::engine::curves
