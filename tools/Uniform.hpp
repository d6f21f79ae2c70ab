#pragma once

#include <cstdint>

namespace lumo {

/// Random floats, the same to the bit on every machine: splitmix64, and no library distribution.
class Uniform {
 public:
  explicit Uniform(std::uint64_t seed) : bits_(seed) {}

  /// The next one, in [-size, size).
  float operator()(float size) {
    bits_ += 0x9e3779b97f4a7c15U;
    std::uint64_t z = bits_;
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
    z ^= z >> 31U;
    return (static_cast<float>(z >> 40U) * 0x1p-23F - 1.0F) * size;
  }

 private:
  std::uint64_t bits_;
};

}  // namespace lumo
