#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include <kinetra/spatial/simd.hpp>

// Sines and cosines of floats: for every float the floats nearest to the true values, and the same on every processor,
// because only sums and products of IEEE 754 are used. For an angle x below 2^17 rad:
//
// 1. Reduction, |x| = k pi/2 + r. k is |x| 2/pi, rounded; single precision finds it well enough for |r| < 0.8. pi/2 is
//    P1 + P2 to within 2^-92. P1 has 36 bits and k has 17, so that k P1 and |x| - k P1 are exact. The errors of k P2
//    are below 2^-74 together; where k is not 0, |r| is above 2^-28. Then r is rounded, by 2^-53 |r| at most.
// 2. Polynomials in double precision: sin r = r + s and cos r = (1 - h) + c. Their own errors are below 2^-54.7 |r| for
//    the sine and 2^-60 for the cosine. With all that is rounded, the sine is off by less than 2^-51.5 |r| + 2^-74 and
//    the cosine by less than 2^-52 + 2^-74.
// 3. One rounding to single precision. k mod 4 tells which of the two is the sine of x, and their signs.
//
// So a result is right unless the true value is within that error of the middle of two floats. That happens to a few
// of the 2^32 floats, and lumo-sines, which tries all of them, finds all results right. The hardest is the sine of
// 9830.39844: the double nearest to it is the middle of two floats itself, and would be rounded to the wrong one. The
// polynomials are fitted to a wider interval than they are used in, which here yields the double on the right side.

namespace kinetra::Spatial {

/// The floats nearest to the sine and the cosine of an angle (rad). For an infinity or NaN both are NaN.
struct SinCos {
  float s;
  float c;

  /// s and c are left unset.
  // cppcheck-suppress uninitMemberVar ; on purpose: sinCos fills whole arrays
  SinCos() = default;
  SinCos(float sine, float cosine) : s(sine), c(cosine) {}
  explicit SinCos(float angle);
};

namespace sines {

using simd::Float4;
using Bits4 = std::uint32_t __attribute__((vector_size(16)));
using Double2 = double __attribute__((vector_size(16)));
using Double4 = double __attribute__((vector_size(32)));  // two registers

template <typename Real>
struct Parts {
  Real s, c, h;
};

/// The parts of sin r = r + s and cos r = (1 - h) + c, for one double or for two. The coefficients are those of sollya:
///   fpminimax(sin(x), [|3,5,7,9,11,13|], [|D...|], [2^-30;0.92], floating, relative, x);
///   fpminimax(cos(x), [|4,6,8,10,12,14|], [|D...|], [2^-30;0.92], floating, absolute, 1-x^2/2);
/// They are summed in pairs, which is faster than one after another.
template <typename Real>
Parts<Real> parts(Real r) {
  const Real r2 = r * r;
  const Real r4 = r2 * r2;
  const Real r8 = r4 * r4;
  const Real s = (-0x1.55555555554fep-3 + 0x1.111111110955ep-7 * r2) +
                 (-0x1.a01a01917896p-13 + 0x1.71de2d932ad8dp-19 * r2) * r4 +
                 (-0x1.ae5910a7ccb3ap-26 + 0x1.5c3b4ab9ac98p-33 * r2) * r8;
  const Real c = (0x1.5555555555515p-5 - 0x1.6c16c16c0eb4p-10 * r2) +
                 (0x1.a01a019411844p-16 - 0x1.27e4f2a3cca6fp-22 * r2) * r4 +
                 (0x1.1ee6bacff80fcp-29 - 0x1.8e3ce3ee7335bp-37 * r2) * r8;
  return {r * r2 * s, r4 * c, 0.5 * r2};
}

/// Makes the sine and cosine of r those of x: swaps them where k is odd, then sets the signs. `signs` holds those of x.
inline void turn(Float4& s, Float4& c, Bits4 k, Bits4 signs) {
  constexpr std::uint32_t signBit = 0x80000000U;
  const auto sine = reinterpret_cast<Bits4>(s);
  const auto cosine = reinterpret_cast<Bits4>(c);
  const Bits4 swap = (sine ^ cosine) & -(k & 1U);
  s = reinterpret_cast<Float4>((sine ^ (((k << 30U) & signBit) ^ signs)) ^ swap);
  c = reinterpret_cast<Float4>((cosine ^ (((k + 1U) << 30U) & signBit)) ^ swap);
}

/// The float nearest to a + b, where |a| >= |b|. A rounded sum is given an odd last bit, on the side where the true sum
/// is, so that it never is the middle of two floats.
inline float roundedSum(double a, double b) {
  double sum = a + b;
  const double rest = b - (sum - a);
  std::uint64_t bits;
  std::memcpy(&bits, &sum, sizeof bits);
  if (rest != 0.0 && bits % 2 == 0) (rest > 0.0) == (sum > 0.0) ? ++bits : --bits;
  std::memcpy(&sum, &bits, sizeof sum);
  return static_cast<float>(sum);
}

/// For angles of 2^17 rad or more: takes k and r from the bits of 2/pi. |x| is m 2^e with a whole number m below 2^24.
/// All bits of 2/pi that are multiples of 2^(2-e) only add whole turns. The next 96 determine k mod 4 and, within
/// 2^-70, the fraction r 2/pi; |r| is above 2^-30.
[[gnu::noinline]] inline SinCos ofBigAngle(float x) {
  static constexpr std::uint64_t twoByPi[] = {0,  // before the point, then 256 bits after it
                                              0xa2f9836e4e441529U, 0xfc2757d1f534ddc0U,  //
                                              0xdb6295993c439041U, 0xfe5163abdebbc561U};
  std::uint32_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  const std::uint32_t exponent = (bits >> 23U) & 0xffU;  // e + 150
  const std::uint64_t m = (bits & 0x7fffffU) | 0x800000U;
  const std::uint32_t first = exponent - 88;  // of the table's bits, the first that counts
  const auto word = [first](std::uint32_t i) {
    const std::uint64_t* at = twoByPi + first / 64 + i;
    return (at[0] << first % 64) | (at[1] >> 1U >> (63 - first % 64));
  };
  const std::uint64_t low = m * (word(1) >> 32U);
  const std::uint64_t high = m * word(0) + (low >> 32U);
  const auto k = static_cast<std::uint32_t>((high + (1ULL << 61U)) >> 62U);

  // The fraction is (a + b) 2^-32, with a whole number a from -2^31 to 2^31 and b from 0 to 1. Because a P1 is exact, r
  // is rounded only once.
  const auto a = static_cast<double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(high >> 30U)));
  const auto b = static_cast<double>((high << 34U) | ((low & 0xffffffffU) << 2U)) * 0x1p-64;
  constexpr double P1 = 0x1.921fbp-32;
  constexpr double P2 = 0x1.5110b4611a626p-54;
  const double r = a * P1 + (a * P2 + b * (P1 + P2));

  const auto [s, c, h] = parts(r);
  Float4 sine = {roundedSum(r, s)};
  Float4 cosine = {roundedSum(1.0, c - h)};
  turn(sine, cosine, Bits4{k}, Bits4{bits & 0x80000000U});
  return {sine[0], cosine[0]};
}

/// The same as sinCos, for angles of any size.
[[gnu::noinline]] inline void oneByOne(const float* angles, int n, SinCos* results) {
  for (int i = 0; i < n; ++i) {
    const float x = angles[i];
    const float magnitude = std::abs(x);
    if (magnitude < 0x1p17F) {
      results[i] = SinCos(x);
    } else if (magnitude < HUGE_VALF) {
      results[i] = ofBigAngle(x);
    } else {
      results[i] = {x - x, x - x};  // not a number
    }
  }
}

}  // namespace sines

/// The sines and cosines of n consecutive angles; n is 1, 3 or an even number from 4 on. The work is the same for all
/// angles below 2^17 rad (131072). If one of them is larger or NaN, all n are computed one by one.
template <int n>
std::array<SinCos, n> sinCos(const float* angles) {
  using namespace sines;
  static_assert(n == 1 || n == 3 || (n >= 4 && n % 2 == 0));
  // Angles are taken in groups of four. The last group starts early if n is not a multiple of four, and computes a pair
  // of angles again. Each step is a loop of its own, so that the processor can work on many angles at once; unrolled,
  // the loops would be four times the code and no faster.
  constexpr int groups = (n + 3) / 4;
  constexpr int pairs = (n + 1) / 2;
  const auto first = [](int group) { return n < 4 ? 0 : std::min(4 * group, n - 4); };
  const auto anglesFrom = [angles](int i) {
    if constexpr (n == 1) return Float4{angles[0]};
    if constexpr (n == 3) return Float4{angles[0], angles[1], angles[2]};
    Float4 x;
    std::memcpy(&x, angles + i, sizeof x);
    return x;
  };

  Double2 r[pairs];
  Bits4 ks[groups];
  Bits4 excess = {};
#pragma GCC unroll 1
  for (int g = 0; g < groups; ++g) {
    const int i = first(g);
    const Bits4 magnitude = reinterpret_cast<Bits4>(anglesFrom(i)) & 0x7fffffffU;
    excess |= 0x47ffffffU - magnitude;  // sets the first bit from 2^17 on
    const auto x = reinterpret_cast<Float4>(magnitude);
    const Float4 shifted = x * 0x1.45f306p-1F + 0x1.8p23F;  // its last bits are those of k
    const Float4 k = shifted - 0x1.8p23F;
    ks[g] = reinterpret_cast<Bits4>(shifted);
    const Double4 x4 = __builtin_convertvector(x, Double4);
    const Double4 k4 = __builtin_convertvector(k, Double4);
    constexpr double P1 = 0x1.921fb5444p0;
    constexpr double P2 = 0x1.68c234c4c6629p-39;
    const Double4 r4 = (x4 - k4 * P1) - k4 * P2;
    std::memcpy(r + i / 2, &r4, sizeof(Double2) * std::min(pairs, 2));
  }

  std::array<SinCos, n> results;
  using Words = std::uint64_t __attribute__((vector_size(16)));
  const auto words = reinterpret_cast<Words>(excess);
  if (__builtin_expect(((words[0] | words[1]) & 0x8000000080000000U) != 0, 0)) {
    oneByOne(angles, n, results.data());
    return results;
  }

  Double2 sine[pairs];
  Double2 cosine[pairs];
#pragma GCC unroll 1
  for (int p = 0; p < pairs; ++p) {
    const auto [s, c, h] = parts(r[p]);
    sine[p] = r[p] + s;
    cosine[p] = (1.0 - h) + c;
  }

#pragma GCC unroll 1
  for (int g = 0; g < groups; ++g) {
    const int i = first(g);
    const auto round = [](const Double2* pair) {
      return __builtin_convertvector(__builtin_shufflevector(pair[0], pair[n > 2 ? 1 : 0], 0, 1, 2, 3), Float4);
    };
    Float4 s = round(sine + i / 2);
    Float4 c = round(cosine + i / 2);
    turn(s, c, ks[g], reinterpret_cast<Bits4>(anglesFrom(i)) & 0x80000000U);
    const Float4 lower = __builtin_shufflevector(s, c, 0, 4, 1, 5);
    const Float4 upper = __builtin_shufflevector(s, c, 2, 6, 3, 7);
    std::memcpy(results.data() + i, &lower, sizeof(SinCos) * std::min(n, 2));
    if constexpr (n > 2) std::memcpy(results.data() + i + 2, &upper, sizeof(SinCos) * std::min(n - 2, 2));
  }
  return results;
}

inline SinCos::SinCos(float angle) : SinCos(sinCos<1>(&angle)[0]) {}

}  // namespace kinetra::Spatial
