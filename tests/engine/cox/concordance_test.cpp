// Concordance against counting every pair.
#include "engine/cox/concordance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "numerics/threads.h"

namespace survmeth::engine::cox {
namespace {

struct Sample {
  std::vector<double> entry, exit, weight, score;
  std::vector<std::uint32_t> event, stratum;
};

std::uint32_t next(std::uint64_t& state) {
  state = state * 6364136223846793005U + 1442695040888963407U;
  return static_cast<std::uint32_t>(state >> 33);
}

// Few distinct times and scores, so that every kind of tie occurs.
Sample sample(bool late, bool weighted, std::uint64_t seed) {
  Sample s;
  for (int i = 0; i < 120; ++i) {
    s.exit.push_back(2 + next(seed) % 20);
    if (late) s.entry.push_back(s.exit.back() - 1 - next(seed) % 9);
    s.event.push_back(next(seed) % 3 != 0 ? 1 : 0);
    s.stratum.push_back(next(seed) % 2);
    s.score.push_back(next(seed) % 15);
    if (weighted) s.weight.push_back(0.5 + next(seed) % 4);
  }
  return s;
}

void expectPairs(const Sample& s) {
  Rows rows;
  rows.weight = s.weight;
  rows.stratum = s.stratum;
  rows.strata = 2;
  const risk::Arrangement a({s.entry, s.exit, s.event, 1}, rows, 0.0);
  std::vector<double> score;
  for (const std::uint32_t row : a.source) score.push_back(s.score[row]);
  const Concordance c = concordance(a, score, {}, 0);

  const std::size_t n = s.exit.size();
  Concordance direct;
  std::vector<double> agreeing(n, 0.0);
  std::vector<double> comparable(n, 0.0);
  const auto weight = [&](std::size_t i) { return s.weight.empty() ? 1.0 : s.weight[i]; };
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      if (i == j || s.event[i] == 0 || s.stratum[i] != s.stratum[j]) continue;
      const double both = weight(i) * weight(j);
      if (s.exit[i] == s.exit[j] && s.event[j] != 0) {
        (s.score[i] == s.score[j] ? direct.tiedBoth : direct.tiedTime) += both / 2;
        continue;
      }
      const double entry = s.entry.empty() ? -1.0 : s.entry[j];
      if (s.exit[j] < s.exit[i] || entry >= s.exit[i]) continue;
      const double agrees = s.score[i] > s.score[j] ? 1.0 : s.score[i] == s.score[j] ? 0.5 : 0.0;
      (agrees == 1.0   ? direct.concordant
       : agrees == 0.5 ? direct.tiedScore
                       : direct.discordant) += both;
      agreeing[i] += both * agrees;
      agreeing[j] += both * agrees;
      comparable[i] += both;
      comparable[j] += both;
    }
  }
  // Sums of multiples of 1/4: exact.
  EXPECT_EQ(c.concordant, direct.concordant);
  EXPECT_EQ(c.discordant, direct.discordant);
  EXPECT_EQ(c.tiedScore, direct.tiedScore);
  EXPECT_EQ(c.tiedTime, direct.tiedTime);
  EXPECT_EQ(c.tiedBoth, direct.tiedBoth);
  const double pairs = direct.concordant + direct.discordant + direct.tiedScore;
  const double estimate = (direct.concordant + direct.tiedScore / 2) / pairs;
  EXPECT_NEAR(c.estimate, estimate, 1e-15);
  double squares = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const double influence = (agreeing[i] - estimate * comparable[i]) / pairs;
    squares += influence * influence;
  }
  EXPECT_NEAR(c.standardError, std::sqrt(squares), 1e-13);
}

TEST(Concordance, CountsEveryPair) {
  expectPairs(sample(false, false, 1));
  expectPairs(sample(false, true, 2));
}

TEST(Concordance, CountsOnlyPairsThatAreAtRiskTogetherWhereRowsEnterLate) {
  expectPairs(sample(true, false, 3));
  expectPairs(sample(true, true, 4));
}

TEST(Concordance, CountsEveryPairOfManyRows) {
  // Distinct times at which every other row fails, and scores of which many are alike.
  constexpr std::size_t kRows = 50000;
  constexpr std::uint32_t kScores = 200;
  std::uint64_t seed = 5;
  std::vector<double> exit;
  std::vector<double> score;
  std::vector<std::uint32_t> event;
  for (std::size_t i = 0; i < kRows; ++i) {
    exit.push_back(static_cast<double>(i));
    event.push_back(i % 2 == 0 ? 1 : 0);
    score.push_back(next(seed) % kScores);
  }
  std::vector<std::uint64_t> behind(kScores, 0);
  std::uint64_t concordant = 0;
  std::uint64_t discordant = 0;
  std::uint64_t tied = 0;
  for (std::size_t i = kRows; i-- > 0;) {
    for (std::uint32_t other = 0; other < kScores && event[i] != 0; ++other) {
      (other < score[i] ? concordant : other > score[i] ? discordant : tied) += behind[other];
    }
    ++behind[static_cast<std::size_t>(score[i])];
  }
  const risk::Arrangement a({{}, exit, event, 1}, {}, 0.0);
  for (const unsigned threads : {1U, 2U, 7U}) {
    numerics::setThreads(threads);
    const Concordance c = concordance(a, score, {}, 0);
    EXPECT_EQ(c.concordant, static_cast<double>(concordant));
    EXPECT_EQ(c.discordant, static_cast<double>(discordant));
    EXPECT_EQ(c.tiedScore, static_cast<double>(tied));
    EXPECT_EQ(c.tiedTime, 0.0);
  }
  numerics::setThreads(0);
}

TEST(Concordance, WithoutAComparablePairThereIsNone) {
  const std::vector<double> exit = {1, 2};
  const std::vector<std::uint32_t> event = {0, 1};
  const risk::Arrangement a({{}, exit, event, 1}, {}, 0.0);
  const Concordance c = concordance(a, std::vector<double>{1, 2}, {}, 0);
  EXPECT_TRUE(std::isnan(c.estimate));
  EXPECT_TRUE(std::isnan(c.standardError));
}

}  // namespace
}  // namespace survmeth::engine::cox
