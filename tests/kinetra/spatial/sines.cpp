#include <array>
#include <cfloat>
#include <cmath>

#include <gtest/gtest.h>

#include <kinetra/spatial/SinCos.hpp>
#include <tools/same.hpp>

// Sines and cosines against those of the C library in extended precision, each rounded to the nearest float.

namespace {

using kinetra::Spatial::sinCos, kinetra::Spatial::SinCos;
using lumo::same;

static_assert(LDBL_MANT_DIG >= 64);

/// Checks an angle and its negative.
void expectRight(float angle) {
  for (const float x : {angle, -angle}) {
    const auto s = static_cast<float>(std::sin(static_cast<long double>(x)));
    const auto c = static_cast<float>(std::cos(static_cast<long double>(x)));
    EXPECT_PRED2(same, SinCos(x).s, s) << std::hexfloat << "sine of " << x;
    EXPECT_PRED2(same, SinCos(x).c, c) << std::hexfloat << "cosine of " << x;
  }
}

// lumo-sines compares in this way too.
TEST(Sines, AreComparedToTheLastBit) {
  EXPECT_FALSE(same(1.0F, 0x1.000002p0F));
  EXPECT_FALSE(same(0.0F, -0.0F));
  EXPECT_FALSE(same(NAN, 1.0F));
  EXPECT_FALSE(same(1.0F, NAN));
  EXPECT_TRUE(same(NAN, -NAN));
}

TEST(Sines, AreTheNearestFloatsNearTheMiddleOfTwoFloats) {
  const float angles[] = {
      0x1p-12F,        0x1.a8872ap-11F,  0x1.20ffccp-7F,   0x1.9eab2ep-4F,   0x1.e7061ep-2F,  0x1.6f1b7p+5F,
      0x1.8f219cp+5F,  0x1.e35bc6p+7F,   0x1.515766p+12F,  0x1.33333p+13F,   0x1.524856p+80F, 0x1.95f654p+44F,
      0x1.ca46bap+44F, 0x1.4555p+51F,    0x1.887814p+51F,  0x1.3170fp+63F,   0x1.411b04p+63F, 0x1.2b9622p+67F,
      0x1.e072ecp+67F, 0x1.487e0cp+103F, 0x1.119ae6p+115F, 0x1.96344ep+117F,
  };
  for (const float angle : angles) expectRight(angle);
}

TEST(Sines, AreTheNearestFloatsAroundMultiplesOfAnEighthTurn) {
  const auto expectRightAround = [](float angle) {
    expectRight(std::nextafter(angle, 0.0F));
    expectRight(angle);
    expectRight(std::nextafter(angle, HUGE_VALF));
  };
  for (int k = 1; k < 170000; k += 1 + k / 200) expectRightAround(static_cast<float>(k * 0.78539816339744831));
  expectRightAround(0x1.f9cbe2p+7F);   // nearest of all to a multiple of pi/2, below 2^17
  expectRightAround(0x1.f37c8ap+95F);  // and of all floats
  expectRightAround(0x1p17F);          // the first that is reduced in integers
}

TEST(Sines, KeepTheSignOfZeroAndAreNanForInfinityAndNan) {
  for (const float angle : {0.0F, HUGE_VALF, NAN}) expectRight(angle);
}

/// With each of n angles replaced in turn by one that might disturb the others.
template <std::size_t n>
void expectEachAsAlone() {
  std::array<float, n> ordinary;
  for (std::size_t i = 0; i < n; ++i) ordinary[i] = 3.1F * static_cast<float>(i * i) - 40.0F;
  for (std::size_t replaced = 0; replaced < n; ++replaced) {
    for (const float other : {-0.0F, 0x1.fffffep16F, -0x1p17F, 1e30F, NAN}) {
      auto angles = ordinary;
      angles[replaced] = other;
      const auto results = sinCos<n>(angles.data());
      for (std::size_t i = 0; i < n; ++i) {
        const SinCos alone(angles[i]);
        EXPECT_TRUE(same(results[i].s, alone.s) && same(results[i].c, alone.c))
            << i << " of " << n << ": " << angles[i];
      }
    }
  }
}

TEST(Sines, OfManyAnglesAtOnceEqualThoseOfSingleAngles) {
  expectEachAsAlone<1>();
  expectEachAsAlone<3>();
  expectEachAsAlone<4>();
  expectEachAsAlone<6>();
  expectEachAsAlone<18>();
}

}  // namespace
