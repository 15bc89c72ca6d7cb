// The means over risk sets whose outer products the information is short of.
#ifndef ENGINE_COX_MEANS_H_
#define ENGINE_COX_MEANS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/cox/problem.h"
#include "numerics/gram.h"
#include "numerics/largeArray.h"
#include "numerics/squareMatrix.h"

namespace survmeth::engine::cox {

// One time's means as two outer products: u2 (a + m E)(a + m E)' + rest E E' with a the sum of the
// others, E that of the failing rows, both over D0. Every term is positive.
struct MeanTerms {
  double mean, weight, failingWeight;
};
MeanTerms meanTerms(const TieMoments& moments);

// The means where everybody is at risk from the beginning: sums of r x from each row to the end of
// its stratum, block after block from the last one of some neighbouring ones. Memory for two blocks.
class BackwardMeans {
 public:
  static constexpr std::size_t kBlock = numerics::BlockedColumns::kBlock;

  // In   factor   none, or one number for each event time that multiplies its terms
  //      stop     one past the block that comes first
  BackwardMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                std::span<const double> factor, std::size_t stop);

  // Takes the outer products of the block's event times from the lower triangle. Blocks have to
  // come in descending order, none left out.
  void subtract(std::size_t block, numerics::SquareMatrix& information);

 private:
  // What happens at one row: `hold` keeps the sum over the rows at risk that do not fail.
  enum class Kind { kHoldNothing, kHold, kSingle, kTied };
  struct Action {
    Kind kind;
    std::size_t row;
    double scale, mean;
    double weight, failingWeight;
    std::size_t slot;  // of the mean among the block's; of a tied time's second one the next
  };

  void holdBehind(std::size_t stop);
  bool tied(std::size_t k) const;
  bool findSingles(std::size_t block);
  void findActions(std::size_t block);
  void addTerms(std::size_t k, bool together, std::size_t row);
  void placeMeans(std::size_t rows);
  void spreadOut(std::size_t rows);
  void formMeans(const double* sums, std::size_t j);

  const Problem& problem_;
  const Hazards& hazards_;
  Ties ties_;
  std::span<const double> factor_;
  numerics::LargeArray<double> sums_;
  numerics::LargeArray<double> means_;
  // Of each column: the held sum, and the one mean more than a block has rows.
  std::vector<double> others_, extra_;
  std::size_t time_;  // one past the next event time to come
  bool held_ = false;
  std::vector<Action> actions_;
  // A tied time gives two means and has two rows in the block, but for the block's last time: its
  // other rows may stand in the next block.
  double weight_[kBlock + 1] = {};
  std::size_t count_ = 0;
  // Rows that fail alone. Where they are many their means stand where the rows do, with a scale for
  // every row, 0 for the others; else side by side, with the scale and the row of each.
  bool dense_ = false;
  std::size_t singles_ = 0;
  double scale_[kBlock] = {};
  std::uint32_t row_[kBlock] = {};
};

// value[i] = risk times column j.
void riskTimes(const Problem& problem, const Hazards& hazards, std::size_t j,
               std::span<double> value);

// The means where rows enter late or have units of their own: column after column over all event times. Memory for p numbers
// an event time, and p more for a tied one.
void subtractMeans(const Problem& problem, const Hazards& hazards, Ties ties,
                   std::span<const double> factor, numerics::SquareMatrix& information);

}  // namespace survmeth::engine::cox

#endif  // ENGINE_COX_MEANS_H_
