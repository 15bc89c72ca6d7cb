// Score residuals block after block, where everybody is at risk from the beginning.
#ifndef ENGINE_COX_SCORES_H_
#define ENGINE_COX_SCORES_H_

#include <cstddef>
#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "numerics/gram.h"
#include "numerics/largeArray.h"

namespace survmeth::engine::cox {

// Row i has delta (x - xbar) - exp(eta) (x A - B) with A the hazard that it has been exposed to and
// B the sum of increments times means over its time at risk: sums that run forward over the rows,
// from means of sums that run backward. Rows that fail together take the mean and the part of B
// that are theirs; what B grows by beyond that comes with the row behind them.
class ForwardScores {
 public:
  static constexpr std::size_t kBlock = numerics::BlockedColumns::kBlock;

  ForwardScores(const Problem& problem, const Hazards& hazards, Ties ties);

  // B of the row before the next block, p numbers: 0 at first.
  std::vector<double>& carried() { return carried_; }

  // Blocks have to come in ascending order, none left out. `pass` only carries on.
  //
  // Out  scores[p * kBlock]  unweighted
  void pass(std::size_t block) { work(block, nullptr); }
  void form(std::size_t block, double* scores) { work(block, scores); }

 private:
  // Rows of one event time that has several, as far as they are in the block.
  struct Group {
    std::size_t begin, stop;
    bool starts;                                                     // the first of them is there
    enum class Others { kNone, kInBlock, kBefore, kBehind } others;  // where their sum is found
    std::size_t othersRow;
    bool follows;                 // row `stop` is of the same stratum, behind the last of them
    double once;                  // 1 / D0
    double u, uf, u2, u2f, u2ff;  // moments; the first two for each event's weight
  };

  void work(std::size_t block, double* scores);
  void findRows(std::size_t block);
  void findGroups(std::size_t block);
  void addGroup(std::size_t block, std::size_t k);
  void addGroups(const double* sums, std::size_t j, double* mean, double* grows) const;
  void runForward(std::size_t block, std::size_t j, std::size_t columns, bool kept);

  const Problem& problem_;
  const Hazards& hazards_;
  Ties ties_;
  std::vector<double> carried_;
  std::vector<Group> groups_;
  // Of each column: the sums from the first row and from behind the last row of the events that
  // reach into the block, and from behind those that reach out of it.
  std::vector<double> wholeBefore_, othersBefore_, othersBehind_;
  // Of the columns that are at work.
  numerics::LargeArray<double> sums_, means_, grows_;
  // Of the block's rows: what sums are multiplied with for the mean, and the mean for the growth
  // of B, of rows that fail alone; the risk without the weight.
  double scale_[kBlock], increment_[kBlock], event_[kBlock], risk_[kBlock];
};

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_SCORES_H_
