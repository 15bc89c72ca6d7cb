// Flat-array entry points of the interval and judge data.
#include "survival/calls/judge.h"

#include "survival/exports/frame.h"
#include "survival/judge/judge.h"

using survival::Apart;
using survival::Block;
using survival::cells;
using survival::IntBlock;
using survival::reads;
using survival::sets;
using survival::view;
using survival::writes;

int Cpp_PrepareIntervalData(double* answers, int n, int k, double* times, double* covariates, int p,
                            int* nRemoved, int* removeFlags, int* nKept, double* bounds,
                            double* type, double* sortKey, double* covariatesOut, double* summary) {
  Apart apart{reads(answers, cells(n, k)),
              reads(times, k),
              reads(covariates, cells(n, p)),
              sets(nRemoved),
              writes(removeFlags, n),
              sets(nKept),
              writes(bounds, 2LL * n),
              writes(type, n),
              writes(sortKey, n),
              writes(covariatesOut, cells(n, p)),
              writes(summary, 2LL * k)};
  matrix answersBlock = view(n, k, answers);
  matrix timesBlock = view(k, 1, times);
  Block covariatesBlock(n, p, covariates);
  IntBlock flagsBlock(n, 1, removeFlags);
  Block boundsBlock(n, 2, bounds);
  Block typeBlock(n, 1, type);
  Block sortKeyBlock(n, 1, sortKey);
  Block covariatesOutBlock(n, p, covariatesOut);
  Block summaryBlock(k, 2, summary);
  const int code = PrepareIntervalData(&answersBlock, n, k, &timesBlock, &covariatesBlock, p,
                                       nRemoved, &flagsBlock, nKept, &boundsBlock, &typeBlock,
                                       &sortKeyBlock, &covariatesOutBlock, &summaryBlock);
  flagsBlock.copyBack();
  for (const Block* out :
       {&boundsBlock, &typeBlock, &sortKeyBlock, &covariatesOutBlock, &summaryBlock}) {
    out->copyBack();
  }
  apart.giveBack();
  return code;
}

int Cpp_TransformJudgeToInt(double* rating, int n, int K, double* subjectKey, int G,
                            double* subjectSizes, double* X, int p, double* indicators,
                            double* subjectX, double* levels) {
  Apart apart{reads(rating, n),
              reads(subjectKey, n),
              reads(subjectSizes, G),
              reads(X, cells(n, p)),
              writes(levels, K),
              writes(subjectX, cells(G, p)),
              writes(indicators, cells(G, K))};
  Block ratingBlock(n, 1, rating);
  Block keyBlock(n, 1, subjectKey);
  Block sizesBlock(1, G, subjectSizes);
  Block covariatesBlock(n, p, X);
  Block indicatorsBlock(G, K, indicators);
  Block subjectBlock(G, p, subjectX);
  Block levelsBlock(K, 1, levels);
  const int code =
      TransformJudgeToInt(&ratingBlock, n, K, &keyBlock, G, &sizesBlock, &covariatesBlock, p,
                          &indicatorsBlock, &subjectBlock, &levelsBlock);
  for (const Block* out : {&levelsBlock, &subjectBlock, &indicatorsBlock}) out->copyBack();
  apart.giveBack();
  return code;
}
