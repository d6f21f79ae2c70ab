#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

// Sines and cosines of floats: for every float the floats nearest to the true values, the same on every processor,
// because they are made of IEEE 754 sums and products alone. Below 2^17 rad:
//
// 1. Reduction. |x| = k pi/2 + r, where k is |x| 2/pi, rounded. k is found in single precision, which puts it 0.0084
// too
//    far at most, so that |r| < 0.8. pi/2 is P1 + P2, to 2^-92. P1 has 36 bits and k has 17, so that k P1 and |x| - k
//    P1 are exact. k P2 is rounded, by 2^-76 at most, and so is r, by 2^-53 |r|. No |r| but zero's is below 2^-28.
// 2. Polynomials in double precision, sin r = r + s and cos r = (1 - h) + c. That of the sine is off by 2^-54.7 |r| at
//    most, that of the cosine by 2^-60. With all that is rounded, the sine is off by less than 2^-51.5 |r| + 2^-75 and
//    the cosine by less than 2^-52.
// 3. One rounding to single precision. Then k mod 4 tells which of the two is the sine of x, and their signs.
//
// So the floats are right unless a true value is within that error of the middle of two floats. Few of the 2^32 floats
// have such a value, and the program lumo-sines tries all of them. One is hard: the double nearest to the sine of
// 9830.39844 is itself the middle of two floats, and is rounded to the wrong one. The sine's polynomial is therefore
// fitted to a wider interval than it is used in, which moves this sine to the next double, on the right side.

namespace kinetra::Spatial {

/// The floats nearest to the sine and the cosine of an angle (rad). For an infinity or NaN both are NaN.
struct SinCos {
  float s;
  float c;

  /// s and c are left unset.
  // cppcheck-suppress uninitMemberVar ; on purpose: whole registers are stored into arrays
  SinCos() = default;
  explicit SinCos(float angle);
};

namespace sines {

using Float4 = float __attribute__((vector_size(16)));
using Bits4 = std::uint32_t __attribute__((vector_size(16)));
using Double2 = double __attribute__((vector_size(16)));
using Double4 = double __attribute__((vector_size(32)));  // two registers; in conversions only

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

SinCos ofBigAngle(float x);
void oneByOne(const float* angles, int n, SinCos* results);

}  // namespace sines

/// The sines and cosines of n angles that stand side by side; n is at most 4, or even. The work is the same for all
/// angles below 2^17 rad (131072); one beyond sends all n another way, which takes some 20 ns more for each such angle.
template <int n>
std::array<SinCos, n> sinCos(const float* angles) {
  using namespace sines;
  static_assert(0 < n && (n <= 4 || n % 2 == 0));
  // The angles are taken in groups of four. The last group starts earlier where n is no multiple of four, and computes
  // one pair of angles a second time.
  constexpr int groups = (n + 3) / 4;
  constexpr int pairs = (n + 1) / 2;
  const auto first = [](int group) { return n < 4 ? 0 : std::min(4 * group, n - 4); };
  const auto load = [angles](int i) {
    Float4 x = {};
    if constexpr (n == 1) x = Float4{angles[0]};
    if constexpr (n == 2) x = Float4{angles[0], angles[1]};
    if constexpr (n == 3) x = Float4{angles[0], angles[1], angles[2]};
    if constexpr (n >= 4) std::memcpy(&x, angles + i, sizeof x);
    return x;
  };

  Double2 r[pairs];
  Bits4 ks[groups];
  Bits4 excess = {};
#pragma GCC unroll 1
  for (int g = 0; g < groups; ++g) {
    const int i = first(g);
    const Bits4 magnitude = reinterpret_cast<Bits4>(load(i)) & 0x7fffffffU;
    excess |= 0x47ffffffU - magnitude;  // sets the first bit from 2^17 on
    const auto x = reinterpret_cast<Float4>(magnitude);
    const Float4 shifted = x * 0x1.45f306p-1F + 0x1.8p23F;  // its last bits are those of k
    const Float4 k = shifted - 0x1.8p23F;
    ks[g] = reinterpret_cast<Bits4>(shifted);
    const Double4 x4 = __builtin_convertvector(x, Double4);
    const Double4 k4 = __builtin_convertvector(k, Double4);
    const auto reduce = [](Double2 x2, Double2 k2) { return (x2 - k2 * 0x1.921fb5444p0) - k2 * 0x1.68c234c4c6629p-39; };
    r[i / 2] = reduce(__builtin_shufflevector(x4, x4, 0, 1), __builtin_shufflevector(k4, k4, 0, 1));
    if constexpr (n > 2)
      r[i / 2 + 1] = reduce(__builtin_shufflevector(x4, x4, 2, 3), __builtin_shufflevector(k4, k4, 2, 3));
  }

  std::array<SinCos, n> results;
  using Words = std::uint64_t __attribute__((vector_size(16)));
  const auto words = reinterpret_cast<Words>(excess);
  if (__builtin_expect(((words[0] | words[1]) & 0x8000000080000000U) != 0, 0)) {
    oneByOne(angles, n, results.data());
    return results;
  }

  Double2 sines[pairs];
  Double2 cosines[pairs];
#pragma GCC unroll 1
  for (int p = 0; p < pairs; ++p) {
    const auto [s, c, h] = parts(r[p]);
    sines[p] = r[p] + s;
    cosines[p] = (1.0 - h) + c;
  }

#pragma GCC unroll 1
  for (int g = 0; g < groups; ++g) {
    const int i = first(g);
    const auto round = [](const Double2* pair) {
      return __builtin_convertvector(__builtin_shufflevector(pair[0], pair[n > 2 ? 1 : 0], 0, 1, 2, 3), Float4);
    };
    Float4 s = round(sines + i / 2);
    Float4 c = round(cosines + i / 2);
    turn(s, c, ks[g], reinterpret_cast<Bits4>(load(i)) & 0x80000000U);
    const Float4 two = __builtin_shufflevector(s, c, 0, 4, 1, 5);
    const Float4 next = __builtin_shufflevector(s, c, 2, 6, 3, 7);
    std::memcpy(results.data() + i, &two, sizeof(SinCos) * std::min(n, 2));
    if constexpr (n > 2) std::memcpy(results.data() + i + 2, &next, sizeof(SinCos) * std::min(n - 2, 2));
  }
  return results;
}

inline SinCos::SinCos(float angle) : SinCos(sinCos<1>(&angle)[0]) {}

// What follows is for angles of 2^17 rad or more.

namespace sines {

/// The float nearest to a + b, where |a| >= |b|. Where the sum is rounded, an odd last bit says so, and on which side
/// of the middle of two floats it is.
inline float roundedSum(double a, double b) {
  double sum = a + b;
  const double rest = b - (sum - a);
  std::uint64_t bits;
  std::memcpy(&bits, &sum, sizeof bits);
  if (rest != 0.0 && bits % 2 == 0) (rest > 0.0) == (sum > 0.0) ? ++bits : --bits;
  std::memcpy(&sum, &bits, sizeof sum);
  return static_cast<float>(sum);
}

/// Takes k and r from the bits of 2/pi. |x| is m 2^e with a whole m below 2^24, so that all bits of 2/pi that stand for
/// multiples of 2^(2-e) add whole turns. The next 96 bits give k mod 4 and, to 2^-70, the fraction r 2/pi; no |r| is
/// below 2^-30.
[[gnu::noinline]] inline SinCos ofBigAngle(float x) {
  static constexpr std::uint64_t twoByPi[] = {0,  // before the point, then 256 bits behind it
                                              0xa2f9836e4e441529U, 0xfc2757d1f534ddc0U,  //
                                              0xdb6295993c439041U, 0xfe5163abdebbc561U};
  std::uint32_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  const std::uint32_t biased = (bits >> 23U) & 0xffU;  // e + 150
  if (biased == 0xffU) {
    SinCos none;
    none.s = none.c = x - x;
    return none;
  }
  const std::uint64_t m = (bits & 0x7fffffU) | 0x800000U;
  const std::uint32_t first = biased - 88;  // the first bit that counts: bit e + 62 of the table
  const auto word = [first](std::uint32_t i) {
    const std::uint64_t* at = twoByPi + first / 64 + i;
    return (at[0] << first % 64) | (at[1] >> 1U >> (63 - first % 64));
  };
  const std::uint64_t low = m * (word(1) >> 32U);
  const std::uint64_t high = m * word(0) + (low >> 32U);
  const std::uint64_t k = (high + (1ULL << 61U)) >> 62U;

  // The fraction is (a + b) 2^-32, a whole and between -2^31 and 2^31, b from 0 to 1. a P1 is exact, so that r + rest
  // is the product with pi/2.
  const auto a = static_cast<double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(high >> 30U)));
  const auto b = static_cast<double>((high << 34U) | ((low & 0xffffffffU) << 2U)) * 0x1p-64;
  constexpr double P1 = 0x1.921fbp-32;
  constexpr double P2 = 0x1.5110b4611a626p-54;
  const double small = a * P2 + b * (P1 + P2);
  const double r = a * P1 + small;
  const double rest = small - (r - a * P1);

  const auto [s, c, h] = parts(r);
  Float4 sine = {roundedSum(r, s + rest * ((1.0 - h) + c))};
  Float4 cosine = {roundedSum(1.0, (c - rest * (r + s)) - h)};
  turn(sine, cosine, Bits4{static_cast<std::uint32_t>(k)}, Bits4{bits & 0x80000000U});
  SinCos result;
  result.s = sine[0];
  result.c = cosine[0];
  return result;
}

[[gnu::noinline]] inline void oneByOne(const float* angles, int n, SinCos* results) {
  for (int i = 0; i < n; ++i) {
    const bool isBig = !(angles[i] > -0x1p17F && angles[i] < 0x1p17F);
    results[i] = isBig ? ofBigAngle(angles[i]) : SinCos(angles[i]);
  }
}

}  // namespace sines

}  // namespace kinetra::Spatial
