// Selection of terms over a family whose models are written down.
#include "procedures/selection.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace survmeth::procedures {
namespace {

// Terms a, b, a:b (within which a and b are) and c. A term adds its own gain to the log-likelihood;
// its p-value is given, wherever it stands.
class Written : public Family {
 public:
  std::vector<double> gain = {5.0, 0.4, 0.3, 3.0};
  std::vector<double> pValue = {0.001, 0.5, 0.6, 0.02};
  std::vector<bool> absent;  // the model of these terms has no maximum
  std::size_t fits = 0;

  std::size_t terms() const override { return 4; }
  bool isWithin(std::size_t inner, std::size_t outer) const override {
    return outer == 2 && inner < 2;
  }
  Fit fit(const std::vector<bool>& in, numerics::Progress& /*progress*/) override {
    ++fits;
    Fit made{in != absent, -100.0, 0, std::vector<Test>(4)};
    for (std::size_t term = 0; term < 4; ++term) {
      if (!in[term]) continue;
      made.logLikelihood += gain[term];
      ++made.parameters;
      made.terms[term] = {1.0, 1, pValue[term]};
    }
    return made;
  }
};

std::string selected(Family& family, const SelectionOptions& options) {
  static const char* kNames[] = {"a", "b", "a:b", "c"};
  numerics::Progress progress;
  std::string text;
  for (const SelectionStep& step : select(family, options, progress).steps) {
    text += (text.empty() ? "" : " ") + std::string(step.added ? "+" : "-") + kNames[step.term];
  }
  return text;
}

TEST(Selection, AnInteractionGoesBeforeItsParts) {
  Written family;
  family.pValue = {0.001, 0.9, 0.6, 0.02};
  EXPECT_EQ(selected(family, {}), "-a:b -b");
  EXPECT_EQ(family.fits, 3u);
}

TEST(Selection, APartOfAnInteractionThatStaysIsNeedless) {
  Written family;
  family.pValue[2] = 0.04;  // b has 0.5
  EXPECT_EQ(selected(family, {}), "");
}

TEST(Selection, TheLastTermCanGo) {
  Written family;
  family.pValue = {0.2, 0.3, 0.4, 0.5};
  EXPECT_EQ(selected(family, {}), "-c -a:b -b -a");
}

TEST(Selection, ForcedTermsStayAndAreWhereForwardBegins) {
  Written family;
  family.pValue = {0.2, 0.3, 0.4, 0.5};
  SelectionOptions options;
  options.forced = {false, true, false, true};
  EXPECT_EQ(selected(family, options), "-a:b -a");
  options.direction = Direction::kForward;
  options.byPValue = false;
  EXPECT_EQ(selected(family, options), "+a");
}

TEST(Selection, ForwardTakesTheSmallestPValueAndPartsBeforeInteractions) {
  Written family;
  family.pValue = {0.01, 0.04, 0.0001, 0.02};
  SelectionOptions options;
  options.direction = Direction::kForward;
  EXPECT_EQ(selected(family, options), "+a +c +b +a:b");
  options.enter = 0.015;
  EXPECT_EQ(selected(family, options), "+a");
}

// A parameter costs 2 / 2 of log-likelihood for AIC, 8 / 2 for the other penalty.
TEST(Selection, ACriterionWeighsGainsAgainstParameters) {
  Written family;
  SelectionOptions options;
  options.byPValue = false;
  EXPECT_EQ(selected(family, options), "-a:b -b");
  options.penalty = 8.0;
  EXPECT_EQ(selected(family, options), "-a:b -b -c");
  options.direction = Direction::kForward;
  EXPECT_EQ(selected(family, options), "+a");
}

TEST(Selection, AStepByACriterionHasTheLikelihoodRatio) {
  Written family;
  SelectionOptions options;
  options.byPValue = false;
  numerics::Progress progress;
  const Selection made = select(family, options, progress);
  // Sums of a few numbers of size 100.
  EXPECT_NEAR(made.steps[0].test.chiSquare, 0.6, 1e-12);  // 2 0.3
  EXPECT_EQ(made.steps[0].test.degreesOfFreedom, 1u);
  EXPECT_NEAR(made.steps[0].logLikelihood, -91.6, 1e-12);  // -100 + 5 + 0.4 + 3
  EXPECT_EQ(made.steps[0].parameters, 3u);
  EXPECT_EQ(made.in, (std::vector<bool>{true, false, false, true}));
}

TEST(Selection, AModelWithoutAMaximumIsPassedOver) {
  Written family;
  family.absent = {true, true, false, true};  // without a:b
  EXPECT_EQ(selected(family, {}), "");
  SelectionOptions options;
  options.byPValue = false;
  options.penalty = 8.0;
  EXPECT_EQ(selected(family, options), "-c -a:b -b");
}

// b is needless beside c, and c beside nothing but b.
class Turning : public Written {
 public:
  bool isWithin(std::size_t /*inner*/, std::size_t /*outer*/) const override { return false; }
  Fit fit(const std::vector<bool>& in, numerics::Progress& progress) override {
    Fit made = Written::fit(in, progress);
    if (in[1]) made.terms[1].pValue = in[3] ? 0.9 : 0.01;
    if (in[2]) made.terms[2].pValue = 0.001;
    if (in[3]) made.terms[3].pValue = in[1] ? 0.2 : 0.5;
    return made;
  }
};

TEST(Selection, WhatHasLeftMayComeBack) {
  Turning family;
  SelectionOptions options;
  EXPECT_EQ(selected(family, options), "-b -c");
  options.direction = Direction::kBoth;
  EXPECT_EQ(selected(family, options), "-b -c +b");
}

}  // namespace
}  // namespace survmeth::procedures
