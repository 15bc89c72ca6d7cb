// Sums of cross products, in tiles that stay in registers while a block of rows goes by.
#include "survival/param/normalEquations.h"

#include <algorithm>

#include "numerics/hot.h"
#include "survival/param/lanes.h"

namespace survival::param {

namespace {

// sums[0..3] += x[0..3] factor, row after row, for two factors.
SURVMETH_HOT void addTiles(const double* x, int width, const double* factors,
                           const double* otherFactors, int rows, double* sums, double* otherSums) {
  Lanes total;
  Lanes other;
  load(sums, &total);
  load(otherSums, &other);
  for (int i = 0; i < rows; ++i, x += width) {
    Lanes row;
    load(x, &row);
    total += row * factors[i];
    other += row * otherFactors[i];
  }
  store(total, sums);
  store(other, otherSums);
}

// sums(a, b) += x[a] factor y[b] for a, b = 0..3, row after row.
SURVMETH_HOT void addProductTile(const double* x, const double* y, int width, const double* factors,
                                 int rows, double* sums) {
  Lanes totals[kLanes];
  for (int a = 0; a < kLanes; ++a) load(sums + a * width, &totals[a]);
  for (int i = 0; i < rows; ++i, x += width, y += width) {
    Lanes scaled;
    Lanes row;
    load(x, &scaled);
    load(y, &row);
    scaled *= factors[i];
    for (int a = 0; a < kLanes; ++a) totals[a] += scaled[a] * row;
  }
  for (int a = 0; a < kLanes; ++a) store(totals[a], sums + a * width);
}

}  // namespace

DesignBlock::DesignBlock(int columns, int rowLimit)
    : width(columns),
      design(static_cast<std::size_t>(columns) * rowLimit),
      eta(rowLimit),
      etaEta(rowLimit),
      etaSigma(rowLimit) {}

void DesignBlock::clear(int i) {
  std::fill_n(row(i), width, 0.0);
  eta[i] = etaEta[i] = etaSigma[i] = 0.0;
}

DesignSums::DesignSums(int columns)
    : width(columns),
      gradient(columns),
      etaSigma(columns),
      etaEta(static_cast<std::size_t>(columns) * columns) {}

void DesignSums::addFirstOrder(const DesignBlock& block, int rows) {
  for (int s = 0; s < width; s += kLanes) {
    addTiles(block.design.data() + s, width, block.eta.data(), block.etaSigma.data(), rows,
             gradient.data() + s, etaSigma.data() + s);
  }
}

void DesignSums::addSecondOrder(const DesignBlock& block, int rows) {
  for (int r = 0; r < width; r += kLanes) {
    for (int s = r; s < width; s += kLanes) {
      addProductTile(block.design.data() + r, block.design.data() + s, width, block.etaEta.data(),
                     rows, etaEta.data() + static_cast<std::size_t>(r) * width + s);
    }
  }
}

}  // namespace survival::param
