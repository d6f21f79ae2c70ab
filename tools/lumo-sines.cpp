// lumo-sines: takes the sine and cosine of every float from 0 to 100,000 as the system does and prints a hash of them
// all, to compare C libraries, and the angles at which two good C libraries can disagree at all.

#include <math.h>  // sincos

#include <cstdint>
#include <cstdio>
#include <cstring>

#include <kinetra/spatial/RotationMatrixAboutZ.hpp>

namespace {

template <typename To, typename From>
To bits(From from) {
  static_assert(sizeof(To) == sizeof(From));
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

/// Whether a double next to this one may round to another float: it is half way between two floats, or next to that.
bool isNearHalfWay(double x) {
  constexpr std::uint64_t dropped = 1U << 29U;  // rounding to float drops 29 bits
  return (bits<std::uint64_t>(x) - dropped / 2 + 1) % dropped <= 2;
}

}  // namespace

int main() {
  constexpr std::uint64_t prime = 0x100000001b3U;
  std::uint64_t hash = 0;
  const auto end = bits<std::uint32_t>(1e5F);
  for (std::uint32_t i = 0; i <= end; ++i) {
    const auto angle = bits<float>(i);
    const kinetra::Spatial::SinCos rounded(angle);
    hash = (hash ^ bits<std::uint32_t>(rounded.s)) * prime;
    hash = (hash ^ bits<std::uint32_t>(rounded.c)) * prime;
    double s, c;
    ::sincos(static_cast<double>(angle), &s, &c);
    if (isNearHalfWay(s) || isNearHalfWay(c)) std::printf("half way near %.9g\n", static_cast<double>(angle));
  }
  std::printf("hash of the sines and cosines of %u angles: %016llx\n", end + 1, static_cast<unsigned long long>(hash));
  return 0;
}
