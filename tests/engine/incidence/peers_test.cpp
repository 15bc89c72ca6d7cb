// Incidences and their errors against prodlim (tests/reference/incidence/make_peers.R).
//
// Its errors are the infinitesimal jackknife's, which those of Greenwood's type equal where rows are
// persons; caseweights are frequencies, for which only the latter stand. Both sides sum the same
// terms in another order, prodlim by differences that cancel.
#include "tests/engine/incidence/peers.h"

#include <gtest/gtest.h>

#include "tests/engine/incidence/data.h"

namespace survmeth {
namespace {

using engine::incidence::Variance;

class IncidencePeers : public testing::TestWithParam<test::PeerCase> {};

TEST_P(IncidencePeers, HaveTheSameNumbers) {
  const auto& items = GetParam().items.at(0);
  const bool weighted = GetParam().program != "prodlim";
  const test::CauseData data = test::causeData(GetParam().data, "", weighted ? "count" : "");
  for (const Variance variance : {Variance::kDelta, Variance::kRobust}) {
    if (weighted && variance == Variance::kRobust) continue;
    const engine::incidence::Curve curve = data.curves(variance).front();
    const auto& of = curve.causes.at(GetParam().cause - 1);
    const std::vector<double>& times = items.at("time");
    for (std::size_t m = 0; m < times.size(); ++m) {
      const auto after = std::upper_bound(curve.time.begin(), curve.time.end(), times[m]);
      const auto i = static_cast<std::size_t>(after - curve.time.begin()) - 1;
      const double incidence = items.at("incidence")[m], error = items.at("error")[m];
      EXPECT_NEAR(of.incidence[i], incidence, 1e-9 * std::max(incidence, error)) << times[m];
      EXPECT_NEAR(of.standardError(i), error, 1e-9 * std::max(incidence, error)) << times[m];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, IncidencePeers, testing::ValuesIn(test::peerCasesOf("prodlim")),
                         [](const auto& of) { return of.param.name(); });

}  // namespace
}  // namespace survmeth
