/* Survival in the lung cancer data, from C: Kaplan-Meier curves by sex with their quartiles, means
 * and comparison, then a Cox regression, all through libsurvival's flat arrays. By hand, from the
 * root of the tree:
 *
 *   cc -std=c11 -I. examples/c/lung.c -o lung -Lbuild/release/lib -lsurvival -lm
 *   LD_LIBRARY_PATH=build/release/lib ./lung data/lung.csv
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "survival/survival.h"

enum { ROWS = 1000, COLUMNS = 9, TIME = 0, STATUS = 1, AGE = 2, SEX = 3, ECOG = 4 };
enum { YES = -1, NO = 0 }; /* flags: 1 would be false */

static const double MISSING = -1.79769313486231e308;
static const double ALPHA = 0.05;

/* The rows of the file; an empty cell is MISSING, and male is 1, female 0. */
static double data[COLUMNS][ROWS];

static int readData(const char* path) {
  char line[256];
  int n = 0;
  FILE* file = fopen(path, "r");
  if (file == NULL || fgets(line, sizeof line, file) == NULL) {
    fprintf(stderr, "cannot read %s\n", path);
    exit(2);
  }
  while (n < ROWS && fgets(line, sizeof line, file) != NULL) {
    char* cell = line;
    for (int j = 0; j < COLUMNS; ++j) {
      const size_t length = strcspn(cell, ",\r\n");
      if (length == 0) {
        data[j][n] = MISSING;
      } else if (j == SEX) {
        data[j][n] = *cell == 'm';
      } else {
        data[j][n] = strtod(cell, NULL);
      }
      cell += length;
      if (*cell == ',') ++cell;
    }
    ++n;
  }
  fclose(file);
  return n;
}

/* Arrays of zeros, as the library wants them; at least one element, also for a count of 0. */
static void* zeros(int count, size_t size) {
  void* array = calloc(count > 0 ? (size_t)count : 1, size);
  if (array == NULL) {
    fputs("out of memory\n", stderr);
    exit(2);
  }
  return array;
}
static double* reals(int count) { return zeros(count, sizeof(double)); }
static int* integers(int count) { return zeros(count, sizeof(int)); }

/* Element (i, j), counted from 1, of a column-major array. */
static double at(const double* array, int rows, int i, int j) {
  return array[(i - 1) + (j - 1) * rows];
}

/* One cell of a table; what does not exist is a dash. */
static void show(double value) {
  if (value <= MISSING) {
    printf("%14s", "-");
  } else {
    printf("%14.6f", value);
  }
}

static void heading(const char* first, const char* const* names, int count) {
  printf("%-18s", first);
  for (int j = 0; j < count; ++j) printf("%14s", names[j]);
  putchar('\n');
}

static void rowOf(const char* name, const double* array, int rows, int i, int firstColumn,
                  int count) {
  printf("%-18s", name);
  for (int j = 0; j < count; ++j) show(at(array, rows, i, firstColumn + j));
  putchar('\n');
}

/* The curve of one sex: a line for each distinct time. */
static void showCurve(const double* table, int m, int rows) {
  const char* const names[] = {"at risk", "deaths", "censored", "survival", "std error"};
  heading("time", names, 5);
  for (int i = 2; i <= rows + 1; ++i) { /* row 1 is the origin */
    const double survival = at(table, m + 2, i, 8);
    printf("%-18.0f%14.0f%14.0f%14.0f", at(table, m + 2, i, 1), at(table, m + 2, i, 3),
           at(table, m + 2, i, 4), at(table, m + 2, i, 5));
    show(survival);
    show(survival * sqrt(at(table, m + 2, i, 11))); /* Greenwood's sum */
    putchar('\n');
  }
}

static void showSummary(double* table, int m, int rows) {
  const char* const quarters[] = {"survival 0.25", "survival 0.50", "survival 0.75"};
  const char* const limits[] = {"time", "lower", "upper"};
  const char* const means[] = {"mean", "std error", "lower", "upper", "cut"};
  double cut = 0;
  double mean[4] = {0};
  double quartiles[3 * 4] = {0};
  ComputeKaplanMeanMedian(table, m, ALPHA, m, rows, &cut, mean, quartiles);

  heading("falls to", limits, 3);
  for (int i = 1; i <= 3; ++i) rowOf(quarters[i - 1], quartiles, 3, i, 2, 3);
  heading("", means, 5);
  printf("%-18s", "restricted");
  for (int j = 0; j < 4; ++j) show(mean[j]);
  show(cut);
  putchar('\n');
}

static void kaplanMeier(int nRows) {
  enum { STRATA = 2 };
  const char* const sexes[STRATA] = {"female", "male"};
  const char* const tests[] = {"log-rank", "Gehan-Breslow", "Tarone-Ware"};
  const char* const results[] = {"chi-square", "critical", "p-value"};
  const int gridRows = 3 * STRATA + 1;
  int n = nRows;
  int nTimes = nRows;
  double maxTime = 0;
  double sizes[STRATA] = {0};
  double result[3 * 4] = {0};
  double unusedBounds[1] = {0};
  double* time = reals(n);
  double* status = reals(n);
  double* weight = reals(n);
  double* stratum = reals(n);
  double* grid = reals(gridRows * n);
  int offset = 0;
  int code;

  for (int i = 0; i < n; ++i) {
    time[i] = data[TIME][i];
    status[i] = data[STATUS][i];
    weight[i] = 1;
    stratum[i] = 1 + data[SEX][i];
    sizes[(int)data[SEX][i]] += 1;
  }

  /* Sorts the four columns together, by stratum and by time. */
  code = ReorganizeData(time, &n, status, weight, stratum, sizes, STRATA, NO, &maxTime);
  if (code == -1 || code == -2) { /* the other codes are soft */
    fprintf(stderr, "refused with code %d\n", code);
    exit(1);
  }
  printf("Survival by sex: %d patients, code %d, last time %.0f\n", n, code, maxTime);

  /* The distinct times of both sexes, into row 1 of the grid, which has n columns. */
  LoadKaplanTest(&nTimes, n, STRATA, time, grid);

  for (int s = 1; s <= STRATA; ++s) {
    const int m = (int)sizes[s - 1];
    double* intervals = reals((m + 1) * 2);
    double* table = reals((m + 2) * 12);
    double total = 0;
    int rows = 0;
    RunLife(n, s, &offset, 0, 0, n, STRATA, m, 1, 0, 0, time, status, weight, NO, YES, NO, NO,
            unusedBounds, intervals, &total, table, &rows, grid);
    printf("\n%s: %d patients, %d times\n", sexes[s - 1], m, rows);
    showCurve(table, m, rows);
    showSummary(table, m, rows);
    offset += m;
    free(table);
    free(intervals);
  }

  ComputeLifeTests(grid, nTimes, n, STRATA, ALPHA, result);
  printf("\nComparison over %d times\n", nTimes);
  heading("", results, 3);
  for (int i = 1; i <= 3; ++i) rowOf(tests[i - 1], result, 3, i, 1, 3);

  free(grid);
  free(stratum);
  free(weight);
  free(status);
  free(time);
}

static void cox(int nRows) {
  enum { P = 3 };
  const int columns[P] = {AGE, SEX, ECOG};
  const char* const names[P] = {"age", "male", "ph.ecog"};
  const char* const estimates[] = {"coefficient",  "std error", "chi-square", "p-value",
                                   "hazard ratio", "lower",     "upper"};
  const char* const models[] = {"without", "fitted"};
  const char* const criterionNames[] = {"events", "covariates", "-2 log L", "AIC", "SBC"};
  const char* const results[] = {"df", "chi-square", "p-value"};
  const char* const tests[] = {"likelihood ratio", "score", "Wald"};
  int n = 0;
  double* time = reals(nRows);
  double* status = reals(nRows);
  double* covariates = reals(nRows * P);

  /* Complete rows only, the covariates centred: far from 0 their risk sums over- or underflow. */
  for (int i = 0; i < nRows; ++i) {
    if (data[AGE][i] > MISSING && data[ECOG][i] > MISSING) ++n;
  }
  for (int j = 0; j < P; ++j) {
    double mean = 0;
    int row = 0;
    for (int i = 0; i < nRows; ++i) {
      if (data[AGE][i] <= MISSING || data[ECOG][i] <= MISSING) continue;
      time[row] = data[TIME][i];
      status[row] = data[STATUS][i];
      covariates[row + j * n] = data[columns[j]][i];
      mean += data[columns[j]][i] / n;
      ++row;
    }
    for (int i = 0; i < n; ++i) covariates[i + j * n] -= mean;
  }

  double* extra = reals(n);
  double* tieKey = reals(n);
  double* stratum = reals(n);
  double sizes[1] = {n};
  int* starts = integers(n);
  int* groupSizes = integers(n);
  int* events = integers(n);
  int distinct[1] = {0};
  int censored[1] = {0};
  int groups = 0; /* raised to the largest number of groups */
  for (int i = 0; i < n; ++i) {
    tieKey[i] = 1;
    stratum[i] = 1;
  }
  const int code =
      Cpp_ReorganizeDataCox(time, n, P, status, extra, tieKey, covariates, stratum, sizes, 1,
                            distinct, censored, starts, groupSizes, events, &groups);
  if (code != 0) {
    fprintf(stderr, "refused with code %d\n", code);
    exit(1);
  }

  /* With one stratum the first `groups` elements are the tables cut to their columns. Baseline and
   * residuals are not asked for: an array of one element, which becomes 0, is enough. */
  int covariatesLeft = 0;
  int iterations = 50;
  int steps = 0;
  int order[P] = {0};
  double beta[P] = {0};
  double criteria[6 * 2] = {0};
  double testTable[3 * 3] = {0};
  double coefficients[P * 9] = {0};
  double history[3 * P] = {0};
  double baseline[1] = {1};
  double atMeans[1] = {1};
  double residuals[1] = {1};
  RunCoxReg(time, n, P, &covariatesLeft, status, 0, covariates, 0, sizes, 1, &iterations, 1e-9, 0,
            distinct, groupSizes, events, censored, starts, -1, 0, 0.05, 0.1, ALPHA, groups, NO, 0,
            0, 0, beta, criteria, testTable, coefficients, baseline, atMeans, residuals, history,
            &steps, order);

  printf("\nCox regression: %d patients, %d censored, %d distinct times, %d iterations\n", n,
         censored[0], distinct[0], iterations);
  heading("", estimates, 7);
  for (int j = 1; j <= covariatesLeft; ++j) rowOf(names[j - 1], coefficients, P, j, 1, 7);
  heading("model", models, 2);
  for (int i = 1; i <= 5; ++i) rowOf(criterionNames[i - 1], criteria, 6, i, 1, 2);
  heading("", results, 3);
  for (int i = 1; i <= 3; ++i) rowOf(tests[i - 1], testTable, 3, i, 1, 3);
  printf("not asked for: %.0f %.0f %.0f\n", baseline[0], atMeans[0], residuals[0]);

  free(events);
  free(groupSizes);
  free(starts);
  free(stratum);
  free(tieKey);
  free(extra);
  free(covariates);
  free(status);
  free(time);
}

int main(int count, char** words) {
  if (count != 2) {
    fputs("usage: lung DATA\n", stderr);
    return 2;
  }
  const int n = readData(words[1]);
  kaplanMeier(n);
  cox(n);
  return 0;
}
