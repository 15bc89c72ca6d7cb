// Laws of the largest deviation of a Brownian bridge W over an interval [a, b] of [0, 1]: what
// critical values of simultaneous bands are taken from.
#ifndef ENGINE_CURVES_BRIDGE_H_
#define ENGINE_CURVES_BRIDGE_H_

namespace survmeth::engine::curves {

// P(|W(x)| <= k for all x in [a, b]), to 1e-12.
//
// W(a), the way from W(a) to W(b) and the way back to 0 at 1 are independent pieces of a Brownian
// motion that is held at 0, so that the probability is
//
//   sqrt(2 pi)  integral over |y| <= k, |z| <= k of  f_a(y) q(y, z; b - a) f_(1 - b)(z) dy dz
//
// with f_v the normal density of variance v and q the density of a motion that ends at +-k, a
// series of images. One integral is a sum of normal probabilities, the other Gauss-Legendre's over
// panels that grow from the edge inwards.
//
// In   0 <= a < b <= 1, k > 0
// Cost some thousand normal probabilities
// Source Chung & Williams, Introduction to Stochastic Integration (1990); images: Billingsley,
//        Convergence of Probability Measures (1968) 11
double bridgeWithin(double k, double a, double b);

// P(|W(x)| <= c sqrt(x (1 - x)) for all x in [a, b]), to 1e-11.
//
// In the time s = log(x / (1 - x)) / 2 the standardised bridge is a stationary process with the
// generator f'' - x f', and the probability depends on the length T of the interval only: with
// the even solutions psi of psi'' - x psi' + lambda psi = 0, psi(0) = 1, psi'(0) = 0, that vanish
// at c it is
//
//   sum over them of exp(-lambda T) 2 phi(c) psi'(c) / (lambda^2 d psi(c) / d lambda).
//
// psi is carried from 0 to c by Taylor steps, the eigenvalues are found by bisection on the number
// of its zeros and Newton's method.
//
// In   length   T = log(b (1 - a) / (a (1 - b))) / 2, at least kShortestBand
// Cost the number of eigenvalues, about c sqrt(40 / T), squared
// Source DeLong, Comm Statist A 10 (1981) 2197-2213; Nair, Technometrics 26 (1984) 265-275
double standardizedBridgeWithin(double c, double length);

inline constexpr double kShortestBand = 0x1p-10;

// The values that are kept within with this probability, to 1e-10.
double bridgeQuantile(double level, double a, double b);
double standardizedBridgeQuantile(double level, double length);

}  // namespace survmeth::engine::curves

#endif  // ENGINE_CURVES_BRIDGE_H_
