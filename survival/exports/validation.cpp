// Flat-array entry points of the validation family.
#include "survival/calls/validation.h"

#include "survival/exports/frame.h"
#include "survival/validation/validation.h"

using survival::Apart;
using survival::Block;
using survival::cells;
using survival::raised;
using survival::reads;
using survival::view;
using survival::writes;

void Cpp_ComputeBootOut(int B, double alpha, double* statistics, double* summary) {
  Apart apart{reads(statistics, 5LL * B), writes(summary, 20)};
  matrix statisticsBlock = view(B, 5, statistics);
  Block summaryBlock(5, 4, summary);
  ComputeBootOut(B, alpha, &statisticsBlock, &summaryBlock);
  summaryBlock.copyBack();
  apart.giveBack();
}

void Cpp_ComputeCVTable(int n, int p, double* time, double* status, double* X, double* beta,
                        double* H, double* F, int row, int nOut, double* table) {
  Apart apart{reads(time, n),           reads(status, n), reads(X, cells(n, raised(p))),
              reads(beta, raised(p)),   reads(H, 9),      reads(F, 12),
              writes(table, 5LL * nOut)};
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
  apart.giveBack();
}
