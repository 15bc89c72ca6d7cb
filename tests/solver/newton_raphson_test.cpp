// The Newton-Raphson step.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "solver/solver.h"
#include "tests/support/matrices.h"

namespace {

using survmeth::test::Column;
using survmeth::test::elements;
using survmeth::test::Rows;

// One step from (10, 20) with gradient (2, 8) and second derivatives diag(-2, -4): to (11, 22).
struct Step {
  Column parameters{{10, 20}};
  Column mask{{0, 0}};
  Column gradient{{2, 8}};
  Rows secondDerivatives{{{-2, 0}, {0, -4}}};
  Column work{{0, 0}};
  Rows inverse{{{9, 9}, {9, 9}}};
  double tolerance = 1e-8;
  int run(short mode = 0, double factor = 0.5) {
    return cNewtonRaphson(&parameters, 2, &mask, &gradient, &secondDerivatives, tolerance, &work,
                          &inverse, mode, factor);
  }
};

TEST(NewtonRaphson, TakesTheFullStep) {
  Step step;
  EXPECT_EQ(step.run(), 0);
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{11, 22}));
  EXPECT_EQ(elements(step.inverse), (std::vector<double>{-0.5, 0, 0, -0.25}));
  EXPECT_EQ(elements(step.gradient), (std::vector<double>{2, 8}));
  EXPECT_EQ(elements(step.secondDerivatives), (std::vector<double>{-2, 0, 0, -4}));
}

TEST(NewtonRaphson, IgnoresModeAndFactor) {
  Step step;
  EXPECT_EQ(step.run(-1, 1.0), 0);
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{11, 22}));
}

TEST(NewtonRaphson, SolvesTheCoupledSystem) {
  Step step;
  step.secondDerivatives.vbset(1, 2, -1);
  step.secondDerivatives.vbset(2, 1, -1);  // inverse 1/7 (-4 1; 1 -2), step (0, -2)
  EXPECT_EQ(step.run(), 0);
  EXPECT_NEAR(step.parameters.vbget(1, 1), 10, 1e-14);
  EXPECT_NEAR(step.parameters.vbget(2, 1), 22, 1e-14);
}

TEST(NewtonRaphson, AMaskedEntryStaysAndTheOthersTakeTheWholeVectorsStep) {
  Step step;
  step.secondDerivatives.vbset(1, 2, -1);
  step.secondDerivatives.vbset(2, 1, -1);
  step.mask.vbset(1, 1, 1.0);
  EXPECT_EQ(step.run(), 0);
  EXPECT_EQ(step.parameters.vbget(1, 1), 10);
  EXPECT_NEAR(step.parameters.vbget(2, 1), 22, 1e-14);  // not 20 + 8/4, the constrained step
}

TEST(NewtonRaphson, ASingularMatrixLeavesTheParametersAlone) {
  Step step;
  step.secondDerivatives.vbset(2, 2, 0);
  EXPECT_EQ(step.run(), -1);
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{10, 20}));
  EXPECT_EQ(elements(step.inverse), (std::vector<double>(4, 0.0)));
}

TEST(NewtonRaphson, ReportsAStepBelowTheTolerance) {
  Step step;
  step.tolerance = 2.5;  // the steps are 1 and 2
  EXPECT_EQ(step.run(), 1);
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{11, 22}));
}

TEST(NewtonRaphson, AStepAtTheToleranceIsNotBelowIt) {
  Step step;
  step.tolerance = 2.0;
  EXPECT_EQ(step.run(), 0);
}

TEST(NewtonRaphson, OnlyFreeEntriesAreMeasured) {
  Step step;
  step.tolerance = 1.5;
  step.mask.vbset(2, 1, 1.0);
  EXPECT_EQ(step.run(), 1);
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{11, 20}));
}

TEST(NewtonRaphson, AStepThatIsNotANumberIsNeverNegligible) {
  Step step;
  step.tolerance = 1e9;
  step.gradient.vbset(1, 1, std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(step.run(), 0);
}

TEST(NewtonRaphson, WritesTheInverseOnlyWhereItFits) {
  Step step;
  Column narrow({9, 9});
  EXPECT_EQ(cNewtonRaphson(&step.parameters, 2, &step.mask, &step.gradient, &step.secondDerivatives,
                           1e-8, &step.work, &narrow, 0, 0.5),
            0);
  EXPECT_EQ(elements(narrow), (std::vector<double>{-0.5, 0}));
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{11, 22}));
}

TEST(NewtonRaphson, UsesTheFirstBlockOfALargerMatrix) {
  Step step;
  Rows larger({{-2, 0, 5}, {0, -4, 5}, {5, 5, 5}});
  Rows inverse({{9, 9, 9}, {9, 9, 9}, {9, 9, 9}});
  EXPECT_EQ(cNewtonRaphson(&step.parameters, 2, &step.mask, &step.gradient, &larger, 1e-8,
                           &step.work, &inverse, 0, 0.5),
            0);
  EXPECT_EQ(elements(step.parameters), (std::vector<double>{11, 22}));
  EXPECT_EQ(elements(inverse), (std::vector<double>{-0.5, 0, 9, 0, -0.25, 9, 9, 9, 9}));
}

TEST(NewtonRaphson, OfNoParametersIsNegligible) {
  Step step;
  EXPECT_EQ(cNewtonRaphson(&step.parameters, 0, &step.mask, &step.gradient, &step.secondDerivatives,
                           1e-8, &step.work, &step.inverse, 0, 0.5),
            1);
}

}  // namespace
