// Flat-array entry points of the competing-risks family.
#include "survival/calls/cuminc.h"

#include "survival/cuminc/cuminc.h"
#include "survival/exports/frame.h"

using survival::Apart;
using survival::Block;
using survival::raised;
using survival::reads;
using survival::sets;
using survival::shape;
using survival::view;
using survival::writes;

int Cpp_CheckStatusFormat(double* status, int n, double* eventCodes, int* eventCodeCount,
                          int censorCode, double* recodedStatus) {
  Apart apart{reads(status, n), writes(eventCodes, n), sets(eventCodeCount),
              writes(recodedStatus, n)};
  matrix statusBlock = view(n, 1, status);
  Block codeBlock(n, 1, eventCodes);
  Block recodedBlock(n, 1, recodedStatus);
  const int code =
      CheckStatusFormat(&statusBlock, n, &codeBlock, eventCodeCount, censorCode, &recodedBlock);
  codeBlock.copyBack();
  recodedBlock.copyBack();
  apart.giveBack();
  return code;
}

int Cpp_ReorganizeDataCum(double* time, int n, double* status, double* eventFlag, double* stratum,
                          double* stratumSizes, int S, double* maxTime) {
  Apart apart{writes(time, n),
              writes(status, n),
              writes(eventFlag, n),
              writes(stratum, n),
              writes(stratumSizes, raised(S)),
              sets(maxTime)};
  Block timeBlock(n, 1, time);
  Block statusBlock(n, 1, status);
  Block flagBlock(n, 1, eventFlag);
  Block stratumBlock(n, 1, stratum);
  Block sizeBlock(1, raised(S), stratumSizes);
  const int code = ReorganizeDataCum(&timeBlock, n, &statusBlock, &flagBlock, &stratumBlock,
                                     &sizeBlock, S, maxTime);
  timeBlock.copyBack();
  statusBlock.copyBack();
  flagBlock.copyBack();
  stratumBlock.copyBack();
  sizeBlock.copyBack();
  apart.giveBack();
  return code;
}

int Cpp_CumIncCalc(int r, int n, double* time, double* status, int eventCode, double alpha, int m,
                   int offset, double* kmTable, double* incidence, double* complement) {
  const int tableRows = shape(m + 2LL);
  Apart apart{reads(time, n), reads(status, n), reads(kmTable, 12LL * tableRows),
              writes(incidence, 10LL * r), writes(complement, 10LL * r)};
  matrix timeBlock = view(n, 1, time);
  matrix statusBlock = view(n, 1, status);
  matrix kmBlock = view(tableRows, 12, kmTable);
  Block incidenceBlock(r, 10, incidence);
  Block complementBlock(r, 10, complement);
  CumIncCalc(r, n, &timeBlock, &statusBlock, eventCode, alpha, m, offset, &kmBlock, &incidenceBlock,
             &complementBlock);
  incidenceBlock.copyBack();
  complementBlock.copyBack();
  apart.giveBack();
  return 0;
}

void Cpp_GrayTest(int n, int K, double* time, double* status, double* group, int eventCode,
                  double rho, double* statistic, double* df, double* pValue) {
  Apart apart{reads(time, n),  reads(status, n), reads(group, n),
              sets(statistic), sets(df),         sets(pValue)};
  Block timeBlock(n, 1, time);
  Block statusBlock(n, 1, status);
  Block groupBlock(n, 1, group);
  GrayTest(n, K, &timeBlock, &statusBlock, &groupBlock, eventCode, rho, statistic, df, pValue);
  apart.giveBack();
}

int Cpp_TransNelsonAalen(double* kmTable, double* table, int m, int r, double alpha, int ciMethod,
                         int varianceMethod) {
  const int tableRows = shape(m + 2LL);
  Apart apart{reads(kmTable, 12LL * tableRows), writes(table, 9LL * r)};
  matrix kmBlock = view(tableRows, 12, kmTable);
  Block tableBlock(r, 9, table);
  TransNelsonAalen(&kmBlock, &tableBlock, m, r, alpha, ciMethod, varianceMethod);
  tableBlock.copyBack();
  apart.giveBack();
  return 0;
}
