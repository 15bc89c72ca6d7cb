// Formulas: their expansion held against terms() of R, and the words of each refusal.
#include "model/formula.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/model/data.h"

namespace survmeth::model {
namespace {

using Strings = std::vector<std::string>;

Strings termsOf(const std::string& text, const Strings& columns = {}) {
  Strings names;
  for (const Term& term : parseFormula(text, columns).terms) names.push_back(term.name);
  return names;
}

TEST(Formula, HasTheTermsOfRInItsOrder) {
  const auto jobs = tabbed("terms.txt");
  ASSERT_GE(jobs.size(), 40U);
  for (const Strings& job : jobs) {
    std::string joined;
    for (const std::string& name : termsOf(job[0], {"a", "b", "c", "d"})) {
      joined += (joined.empty() ? "" : " ") + name;
    }
    EXPECT_EQ(joined, job.size() > 1 ? job[1] : "") << job[0];
  }
}

}  // namespace
}  // namespace survmeth::model
