// Sums of weighted outer products of the rows of a matrix: X'WX at the speed of the machine's
// multiplier, from blocks that fit the cache.
#ifndef NUMERICS_GRAM_H_
#define NUMERICS_GRAM_H_

#include <algorithm>
#include <cstddef>
#include <span>

#include "numerics/largeArray.h"
#include "numerics/sizes.h"
#include "numerics/squareMatrix.h"

namespace survmeth::numerics {

// n rows of p numbers in blocks of kBlock rows; within a block column after column, so that a
// column's numbers of one block stand together. The rows that fill up the last block are 0.
class BlockedColumns {
 public:
  static constexpr std::size_t kBlock = 256;

  BlockedColumns() = default;
  BlockedColumns(std::size_t rows, std::size_t columns)
      : rows_(rows), columns_(columns), values_(product(blocks() * kBlock, columns), 0.0) {}

  // Rows that are yet to be filled in: memory that nobody has touched. Those that fill up the last
  // block are 0.
  static BlockedColumns unfilled(std::size_t rows, std::size_t columns) {
    BlockedColumns result;
    result.rows_ = rows;
    result.columns_ = columns;
    result.values_.resize(product(result.blocks() * kBlock, columns));
    for (std::size_t j = 0; j < columns && rows > 0; ++j) {
      const std::size_t last = result.blocks() - 1;
      std::fill(result.column(last, j) + result.rowsOf(last), result.column(last, j) + kBlock, 0.0);
    }
    return result;
  }

  std::size_t rows() const { return rows_; }
  std::size_t columns() const { return columns_; }
  std::size_t blocks() const { return (rows_ + kBlock - 1) / kBlock; }
  // Rows of a block, without those that fill it up.
  std::size_t rowsOf(std::size_t block) const {
    return block + 1 < blocks() ? kBlock : rows_ - block * kBlock;
  }
  double* column(std::size_t block, std::size_t j) {
    return values_.data() + (block * columns_ + j) * kBlock;
  }
  const double* column(std::size_t block, std::size_t j) const {
    return values_.data() + (block * columns_ + j) * kBlock;
  }
  double& operator()(std::size_t i, std::size_t j) { return column(i / kBlock, j)[i % kBlock]; }
  double operator()(std::size_t i, std::size_t j) const {
    return column(i / kBlock, j)[i % kBlock];
  }

 private:
  std::size_t rows_ = 0, columns_ = 0;
  LargeArray<double> values_;
};

// result[i] += sum over j of coefficient[j] x(i, j), the columns in their order.
//
// In   coefficient[p]
// Out  result[n]
void addProduct(const BlockedColumns& x, std::span<const double> coefficient,
                std::span<double> result);

// The same for one block: result[i] += sum over j of coefficient[j] x[j * kBlock + i].
void addProduct(const double* x, std::span<const double> coefficient, std::size_t rows,
                double* result);

// sum(j, k) += sign * sum over the rows of weight[i] x(i, j) x(i, k), lower triangle, for one
// block of columns of kBlock numbers each.
//
// In   x[p * kBlock]     columns of the block, finite numbers also in the rows that do not count
//      weight[rows]      any sign
//      rows              the first rows that count
//      sign              1 or -1
// Out  sum               p x p
// Cost p (p + 1) / 2 multiplications and additions a row. The order of the additions is fixed:
//      eight partial sums a block, then block after block.
void addWeightedGram(const double* x, const double* weight, std::size_t rows, double sign,
                     SquareMatrix& sum);

// sum[j] += sum over the rows of weight[i] x(i, j), for one block as above.
void addWeightedSums(const double* x, const double* weight, std::size_t rows,
                     std::span<double> sum);

// The upper triangle from the lower one.
void mirror(SquareMatrix& matrix);

}  // namespace survmeth::numerics

#endif  // NUMERICS_GRAM_H_
