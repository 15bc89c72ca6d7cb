#include "engine/cox/concordance.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "engine/cox/chunks.h"
#include "engine/risk/parts.h"
#include "numerics/order.h"
#include "numerics/runningSum.h"
#include "numerics/threads.h"

namespace survmeth::engine::cox {
namespace {

// Sums of weights below a place, in O(log n): a binary indexed tree.
template <typename Number>
class Tree {
 public:
  explicit Tree(std::size_t size) : sums_(size + 1, 0) {}
  void add(std::size_t place, Number weight) {
    for (std::size_t i = place + 1; i < sums_.size(); i += i & (~i + 1)) sums_[i] += weight;
    total_ += weight;
  }
  void remove(std::size_t place, Number weight) {
    for (std::size_t i = place + 1; i < sums_.size(); i += i & (~i + 1)) sums_[i] -= weight;
    total_ -= weight;
  }
  Number below(std::size_t place) const {
    Number sum = 0;
    for (std::size_t i = place; i > 0; i &= i - 1) sum += sums_[i];
    return sum;
  }
  Number total() const { return total_; }

 private:
  std::vector<Number> sums_;
  Number total_ = 0;
};

// Strata of fewer rows are done before another thread has begun.
constexpr std::size_t kMany = 1 << 14;

// Sums of both kinds of partner of one row: those of lower, equal and higher score.
struct Partners {
  double lower = 0.0, equal = 0.0, higher = 0.0;
};

// The pairs of one stratum. Number: unsigned where every weight is 1, which needs half the memory
// and is exact, else double.
template <typename Number>
class Stratum {
 public:
  Stratum(const risk::Arrangement& a, std::size_t s, std::span<const double> score)
      : a_(a), begin_(a.stratumRow[s]), stop_(a.stratumRow[s + 1]) {
    findRanks(score.subspan(begin_, stop_ - begin_));
    if (a.entryCode.empty()) return;
    for (std::size_t i = begin_; i < stop_; ++i) byEntry_.push_back(static_cast<std::uint32_t>(i));
    std::stable_sort(byEntry_.begin(), byEntry_.end(), [&](std::uint32_t x, std::uint32_t y) {
      return a.entryCode[x] < a.entryCode[y];
    });
  }

  // Counts the pairs and adds to each row's sums: `balance` the concordant less the discordant
  // partners, `comparable` all of them.
  void count(Concordance& result, std::vector<double>& balance, std::vector<double>& comparable) {
    double* ofRows = balance.data() + begin_;
    double* pairs = comparable.data() + begin_;
    const std::size_t n = stop_ - begin_;
    if (n < kMany) {
      eventsAgainstRows(result, ofRows, pairs);
      rowsAgainstEvents(ofRows, pairs);
    } else {
      std::vector<double> moreOfRows(n, 0.0);
      std::vector<double> morePairs(n, 0.0);
      numerics::inParallel(2, [&](std::size_t part) {
        if (part == 0) {
          eventsAgainstRows(result, ofRows, pairs);
        } else {
          rowsAgainstEvents(moreOfRows.data(), morePairs.data());
        }
      });
      risk::inParts(n, [&](std::size_t i) {
        ofRows[i] += moreOfRows[i];
        pairs[i] += morePairs[i];
      });
    }
    tiedTimes(result);
  }

 private:
  // The rank of each row's score among the distinct ones.
  void findRanks(std::span<const double> score) {
    std::vector<double> sorted;
    const std::vector<std::uint32_t> order = numerics::ascendingOrder(score, sorted);
    rank_.resize(order.size());
    const Chunks parts(order.size(), kMany);
    // Scores of a part that differ from those before them, then those before the part.
    std::vector<std::uint32_t> distinct(parts.count(), 0);
    const auto differs = [&](std::size_t m) { return m > 0 && sorted[m - 1] < sorted[m]; };
    parts.inParallel([&](std::size_t part, std::size_t begin, std::size_t end) {
      std::uint32_t count = 0;
      for (std::size_t m = begin; m < end; ++m) count += differs(m) ? 1 : 0;
      distinct[part] = count;
    });
    std::uint32_t before = 0;
    for (std::uint32_t& count : distinct) before += std::exchange(count, before);
    parts.inParallel([&](std::size_t part, std::size_t begin, std::size_t end) {
      std::uint32_t rank = distinct[part];
      for (std::size_t m = begin; m < end; ++m) {
        rank += differs(m) ? 1 : 0;
        rank_[order[m]] = rank;
      }
    });
    ranks_ = order.empty() ? 0 : before + std::size_t{1};
  }

  Number weight(std::size_t i) const { return static_cast<Number>(a_.weight[i]); }
  std::size_t rank(std::size_t i) const { return rank_[i - begin_]; }

  // Of a row that is not in the tree.
  Partners partners(const Tree<Number>& tree, std::size_t i) const {
    const Number lower = tree.below(rank(i));
    const bool alone = ranks_ == stop_ - begin_;  // nobody has the score of another
    const Number notHigher = alone ? lower : tree.below(rank(i) + 1);
    return {static_cast<double>(lower), static_cast<double>(notHigher - lower),
            static_cast<double>(tree.total() - notHigher)};
  }

  // From the last time to the first, the rows at risk in the tree.
  void eventsAgainstRows(Concordance& result, double* balance, double* comparable) {
    Tree<Number> atRisk(ranks_);
    std::size_t entered = byEntry_.size();
    for (std::size_t i = stop_; i > begin_;) {
      const std::uint32_t code = a_.exitCode[i - 1];
      std::size_t from = i;
      while (from > begin_ && a_.exitCode[from - 1] == code) --from;
      std::size_t events = from;
      while (events < i && a_.event[events] != 0) ++events;
      for (std::size_t row = events; row < i; ++row) atRisk.add(rank(row), weight(row));
      for (; entered > 0 && a_.entryCode[byEntry_[entered - 1]] >= code; --entered) {
        const std::uint32_t row = byEntry_[entered - 1];
        atRisk.remove(rank(row), weight(row));
      }
      for (std::size_t row = from; row < events; ++row) {
        const Partners p = partners(atRisk, row);
        result.concordant += a_.weight[row] * p.lower;
        result.discordant += a_.weight[row] * p.higher;
        result.tiedScore += a_.weight[row] * p.equal;
        balance[row - begin_] += p.lower - p.higher;
        comparable[row - begin_] += p.lower + p.equal + p.higher;
      }
      for (std::size_t row = from; row < events; ++row) atRisk.add(rank(row), weight(row));
      i = from;
    }
  }

  // From the first time to the last, the events so far in the tree.
  void rowsAgainstEvents(double* balance, double* comparable) {
    Tree<Number> failed(ranks_);
    const auto addTo = [&](std::size_t row, double sign) {
      const Partners p = partners(failed, row);
      balance[row - begin_] += sign * (p.higher - p.lower);
      comparable[row - begin_] += sign * (p.lower + p.equal + p.higher);
    };
    std::size_t entering = 0;
    const auto enterBefore = [&](std::uint32_t code) {
      for (; entering < byEntry_.size() && a_.entryCode[byEntry_[entering]] < code; ++entering) {
        addTo(byEntry_[entering], -1.0);
      }
    };
    for (std::size_t i = begin_; i < stop_;) {
      const std::uint32_t code = a_.exitCode[i];
      enterBefore(code);
      std::size_t events = i;
      for (; events < stop_ && a_.exitCode[events] == code && a_.event[events] != 0; ++events) {
        addTo(events, 1.0);
      }
      for (std::size_t row = i; row < events; ++row) failed.add(rank(row), weight(row));
      std::size_t to = events;
      for (; to < stop_ && a_.exitCode[to] == code; ++to) addTo(to, 1.0);
      i = to;
    }
  }

  void tiedTimes(Concordance& result) const {
    std::vector<std::pair<std::size_t, double>> group;  // rank, weight
    for (std::size_t i = begin_; i < stop_;) {
      const std::uint32_t code = a_.exitCode[i];
      if (i + 1 == stop_ || a_.exitCode[i + 1] != code) {
        ++i;
        continue;
      }
      group.clear();
      for (; i < stop_ && a_.exitCode[i] == code; ++i) {
        if (a_.event[i] != 0) group.emplace_back(rank(i), a_.weight[i]);
      }
      if (group.size() < 2) continue;
      std::sort(group.begin(), group.end());
      double all = 0.0;
      double same = 0.0;
      for (std::size_t m = 0; m < group.size(); ++m) {
        if (m > 0 && group[m].first != group[m - 1].first) same = 0.0;
        result.tiedBoth += group[m].second * same;
        result.tiedTime += group[m].second * (all - same);
        same += group[m].second;
        all += group[m].second;
      }
    }
  }

  const risk::Arrangement& a_;
  std::size_t begin_, stop_, ranks_ = 0;
  std::vector<std::uint32_t> rank_, byEntry_;
};

}  // namespace

Concordance concordance(const risk::Arrangement& arrangement, std::span<const double> score,
                        std::span<const std::uint32_t> cluster, std::size_t clusters) {
  const risk::Arrangement& a = arrangement;
  const std::size_t n = a.rows();
  Concordance result;
  std::vector<double> balance(n, 0.0);
  std::vector<double> comparable(n, 0.0);
  for (std::size_t s = 0; s < a.strata(); ++s) {
    if (!a.weighted) {
      Stratum<std::uint32_t>(a, s, score).count(result, balance, comparable);
    } else {
      Stratum<double>(a, s, score).count(result, balance, comparable);
    }
  }
  const double pairs = result.concordant + result.discordant + result.tiedScore;
  if (!(pairs > 0.0)) return result;
  result.estimate = (result.concordant + 0.5 * result.tiedScore) / pairs;
  // The derivative of the estimate in a row's weight, times the weight.
  std::vector<double> influence(cluster.empty() ? n : clusters, 0.0);
  const auto influenceOf = [&](std::size_t i) {
    const double agreeing = 0.5 * (comparable[i] + balance[i]);
    return a.weight[i] * (agreeing - result.estimate * comparable[i]) / pairs;
  };
  if (cluster.empty()) {
    risk::inParts(n, [&](std::size_t i) { influence[i] += influenceOf(i); });
  } else {
    for (std::size_t i = 0; i < n; ++i) influence[cluster[a.source[i]]] += influenceOf(i);
  }
  numerics::RunningSum squares;
  for (const double value : influence) squares.add(value * value);
  result.standardError = std::sqrt(squares.value());
  return result;
}

Concordance concordance(const Fit& fit) {
  const Problem& problem = *fit.problem;
  std::vector<double> predictor(problem.arrangement.offset);
  predictor.resize(problem.arrangement.rows(), 0.0);
  Chunks(problem.x).inParallel([&](std::size_t, std::size_t begin, std::size_t end) {
    for (std::size_t block = begin; block < end; ++block) {
      numerics::addProduct(problem.x.column(block, 0), fit.working, problem.x.rowsOf(block),
                           predictor.data() + block * numerics::BlockedColumns::kBlock);
    }
  });
  return concordance(problem.arrangement, predictor, problem.cluster, problem.clusters);
}

}  // namespace survmeth::engine::cox
