// Flat-array entry points of the validation family.
#include "survival/calls/validation.h"

#include "survival/exports/frame.h"
#include "survival/validation/validation.h"

using survival::Block;
using survival::raised;
using survival::view;

void Cpp_ComputeBootOut(int B, double alpha, double* statistics, double* summary) {
  matrix statisticsBlock = view(B, 5, statistics);
  Block summaryBlock(5, 4, summary);
  ComputeBootOut(B, alpha, &statisticsBlock, &summaryBlock);
  summaryBlock.copyBack();
}

void Cpp_ComputeCVTable(int n, int p, double* time, double* status, double* X, double* beta,
                        double* H, double* F, int row, int nOut, double* table) {
  matrix timeBlock = view(n, 1, time);
  matrix statusBlock = view(n, 1, status);
  matrix xBlock = view(n, raised(p), X);
  matrix betaBlock = view(raised(p), 1, beta);
  matrix hBlock = view(3, 3, H);
  matrix fBlock = view(6, 2, F);
  Block tableBlock(nOut, 5, table);
  ComputeCVTable(n, p, &timeBlock, &statusBlock, &xBlock, &betaBlock, &hBlock, &fBlock, row,
                 &tableBlock);
  tableBlock.copyBack();
}
