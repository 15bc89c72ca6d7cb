#include "analysis/life/permutation.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "analysis/life/describe.h"
#include "analysis/option.h"
#include "report/build.h"
#include "report/keys.h"
#include "report/numbers.h"
#include "text/numbers.h"
#include "text/words.h"

namespace survmeth::analysis {
namespace {

namespace curves = engine::curves;
namespace key = report::key;
using report::Kind;

struct Row {
  std::string test;
  curves::PermutationTest found;
};

std::string arrangementsInWords(double number) {
  if (std::isinf(number)) return "more than 1e+308";
  return number < 1e15 ? text::grouped(static_cast<std::uint64_t>(number)) : text::brief(number, 3);
}

std::string lookedAt(const LifePermutation& permutation) {
  const std::string all = arrangementsInWords(permutation.found.arrangements);
  if (permutation.asked.exact) return "All " + all + " arrangements of the groups.";
  return text::grouped(permutation.asked.count) + " random arrangements of the groups, seed " +
         std::to_string(permutation.asked.seed) + ", of " + all +
         "; limits of what all of them would give.";
}

}  // namespace

std::optional<LifePermutation> permuteLife(const LifeRows& rows, const LifeRequest& request,
                                           numerics::Progress& progress) {
  if (request.permutations.empty()) return {};
  LifePermutation result;
  result.asked = request.permutationsAsked();
  const auto permute = [&](const std::vector<curves::Weighting>& weightings) {
    return curves::permute(rows.response(), rows.testRows(), rows.groupCodes(), weightings,
                           result.asked, curves::Alternative::kTwoSided, &progress,
                           request.tolerance());
  };
  if (result.asked.exact) {
    const double number =
        curves::arrangementsOf(rows.response(), rows.testRows(), rows.groupCodes());
    if (number > curves::kMostArrangements) {
      throw BadOption("permutations", "exact would go through " + arrangementsInWords(number) +
                                          " arrangements of the groups; expected at most " +
                                          arrangementsInWords(curves::kMostArrangements) +
                                          ", or a number of random ones");
    }
  }
  result.found = permute(request.weightings());
  if (!request.combination.empty() && rows.groups.labels.size() == 2) {
    result.combination = permute(request.combinationWeightings()).combination;
  }
  return result;
}

void addLifePermutation(const LifeAnswer& answer, report::Report& report) {
  if (!answer.permutation) return;
  const LifePermutation& permutation = *answer.permutation;
  std::vector<Row> items;
  for (std::size_t i = 0; i < permutation.found.tests.size(); ++i) {
    items.push_back({answer.comparison.tests[i].name, permutation.found.tests[i]});
  }
  if (permutation.combination) items.push_back({"Maximum combination", *permutation.combination});
  auto rows = report::rowsOf("permutation", "Equal survival, by permutation?", items);
  rows.column(key::kTest, "test", Kind::kLabel, &Row::test)
      .column(key::kChiSquare, "chi-square", Kind::kStatistic,
              [](const Row& row) { return row.found.chiSquare; })
      .column(key::kPValue, "p-value", Kind::kPValue,
              [](const Row& row) { return row.found.pValue; });
  if (!permutation.asked.exact) {
    rows.limits(report::confidence(answer.request.alpha), Kind::kPValue,
                [](const Row& row) -> const curves::PermutationTest& { return row.found; });
  }
  report.tables.push_back(rows.table());
  report.tables.back().remarks.push_back(lookedAt(permutation));
  report.methods.push_back(
      {"permutation: rows exchange their groups" +
           std::string(answer.rows.stratified() ? " within strata" : "") +
           ", which answers whether the groups are alike in survival and censoring together; "
           "chi-square with the variance over all arrangements; p-value " +
           (permutation.asked.exact ? "the share of the arrangements that are as extreme"
                                    : "(b + 1) / (n + 1), b of n random arrangements being as "
                                      "extreme, with Clopper and "
                                      "Pearson's limits"),
       "Heimann & Neuhaus, Biometrics 54 (1998) 168-184; Phipson & Smyth, Stat Appl Genet Mol Biol "
       "9 (2010) 39"});
}

}  // namespace survmeth::analysis
