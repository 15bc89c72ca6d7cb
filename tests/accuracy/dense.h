// The largest error in ulp of elementary functions over 100,000 arguments in each of the regions
// where they compute differently. The exact value is taken from the double-double functions, good
// to 2^-98 and made of series instead of tables.
#ifndef TESTS_ACCURACY_DENSE_H_
#define TESTS_ACCURACY_DENSE_H_

namespace accuracy_tests {

double denseExp();
double denseExpm1();
double denseLog();
double denseLog1p();
double densePow();

}  // namespace accuracy_tests

#endif  // TESTS_ACCURACY_DENSE_H_
