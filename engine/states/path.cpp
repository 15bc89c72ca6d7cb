#include "engine/states/path.h"

#include <algorithm>

#include "numerics/sizes.h"

namespace survmeth::engine::states {
namespace {

using numerics::product;

constexpr std::size_t kRun = 16;  // steps, or runs, of one summary

}  // namespace

void Path::add(std::uint32_t from, std::uint32_t to, double share, double stay, double p,
               double n) {
  jumps_.push_back({from, to, share, stay, p / n, n});
}

void Path::apply(std::size_t s, double* u, std::size_t uStride, const double* y,
                 std::size_t yStride) {
  const std::size_t begin = first_[s];
  const std::size_t end = first_[s + 1];
  // The states that are left first, so that none is left by what comes to it at the same time.
  leaving_.resize(end - begin);
  for (std::size_t e = begin; e < end; ++e) {
    const Jump& jump = jumps_[e];
    if (e > begin && jump.from == jumps_[e - 1].from) {
      leaving_[e - begin] = leaving_[e - 1 - begin];
      continue;
    }
    double& of = u[jump.from * uStride];
    const double pushed = y[jump.from * yStride] * jump.push;
    leaving_[e - begin] = of - pushed;
    of = of * jump.stay + pushed * (1.0 - jump.stay);
  }
  for (std::size_t e = begin; e < end; ++e) {
    u[jumps_[e].to * uStride] += leaving_[e - begin] * jumps_[e].share;
  }
}

Path::Left Path::left(std::size_t s, std::uint32_t from) const {
  for (std::size_t e = first_[s]; e < first_[s + 1]; ++e) {
    if (jumps_[e].from == from) return {jumps_[e].push, jumps_[e].atRisk};
  }
  return {0.0, 0.0};
}

void Path::pullBack(std::size_t s, std::vector<double>& k, std::vector<double>& drift) {
  after_ = k;
  for (std::size_t e = first_[s]; e < first_[s + 1]; ++e) {
    const Jump& jump = jumps_[e];
    for (std::size_t j = 0; j < states_; ++j) {
      const double gain =
          jump.share * (after_[jump.to * states_ + j] - after_[jump.from * states_ + j]);
      k[jump.from * states_ + j] += gain;
      drift[jump.from * states_ + j] += jump.push * gain;
    }
  }
}

void Path::applyMap(const double* map, double* u, const double* y) {
  const std::size_t k = states_;
  moved_.assign(k, 0.0);
  for (std::size_t h = 0; h < k; ++h, map += k) {
    for (std::size_t j = 0; u[h] != 0.0 && j < k; ++j) moved_[j] += u[h] * map[j];
  }
  for (std::size_t h = 0; h < k; ++h, map += k) {
    for (std::size_t j = 0; y[h] != 0.0 && j < k; ++j) moved_[j] += y[h] * map[j];
  }
  std::copy_n(moved_.begin(), k, u);
}

void Path::summarise() {
  const std::size_t k = states_;
  levels_.clear();
  for (std::size_t size = kRun; size <= steps(); size *= kRun) {
    Level level{size, std::vector<double>(product(steps() / size, product(2 * k, k)), 0.0)};
    std::vector<double> none(k, 0.0);
    for (std::size_t run = 0; run < steps() / size; ++run) {
      for (std::size_t row = 0; row < 2 * k; ++row) {
        double* u = &level.maps[(run * 2 * k + row) * k];
        std::vector<double> y(k, 0.0);
        (row < k ? u[row] : y[row - k]) = 1.0;
        advance(run * size, (run + 1) * size, u, y.data());
      }
    }
    levels_.push_back(std::move(level));
  }
}

void Path::advance(std::size_t begin, std::size_t end, double* u, const double* y) {
  while (begin < end) {
    std::size_t level = levels_.size();
    while (level > 0 &&
           (begin % levels_[level - 1].size != 0 || begin + levels_[level - 1].size > end)) {
      --level;
    }
    if (level == 0) {
      apply(begin++, u, 1, y, 1);
      continue;
    }
    const Level& of = levels_[level - 1];
    applyMap(&of.maps[begin / of.size * 2 * states_ * states_], u, y);
    begin += of.size;
  }
}

}  // namespace survmeth::engine::states
