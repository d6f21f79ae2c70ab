#pragma once

#include <cstdint>

namespace lumo {

/// Random floats that have the same bits on every machine: made by splitmix64, without a distribution of the standard
/// library.
class Uniform {
 public:
  explicit Uniform(std::uint64_t seed) : bits_(seed) {}

  /// Returns the next float, in [-size, size).
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
