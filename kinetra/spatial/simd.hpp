#pragma once

#include <cstring>
#include <type_traits>

// Values in registers.
//
// Every stored value type T of this folder has a form simd::T, in which formulas compute: a vector takes one register
// of four floats, the two small rotations take plain floats. An operation of a stored type loads, applies a formula and
// stores. load(x) returns the form simd::T of a stored value x, store(y, x) writes it back.
//
// A pass loads, computes in registers and stores once. The same formulas chained on stored values have the same results
// to the bit, but go through memory: inverse dynamics takes 12 % longer.
//
// Every operation of a lane rounds once, in the order written, so that results depend neither on the compiler nor on
// the processor.

namespace kinetra::Spatial::simd {

/// Four floats in one register.
using Float4 = float __attribute__((vector_size(16)));

/// Lanes of a (0-3) and of b (4-7), picked one by one.
template <int i, int j, int k, int l>
Float4 shuffle(Float4 a, Float4 b) {
  return __builtin_shufflevector(a, b, i, j, k, l);
}
/// Lanes of one register; as integers, which x86-64 copies and shuffles in one instruction.
template <int i, int j, int k, int l>
Float4 shuffle(Float4 a) {
  using Bits = int __attribute__((vector_size(16)));
  const auto bits = reinterpret_cast<Bits>(a);
  return reinterpret_cast<Float4>(__builtin_shufflevector(bits, bits, i, j, k, l));
}

inline Float4 load4(const float* p) {
  Float4 lanes;
  std::memcpy(&lanes, p, sizeof lanes);
  return lanes;
}
inline void store4(Float4 lanes, float* p) { std::memcpy(p, &lanes, sizeof lanes); }

/// Moves a pair of floats as one eight-byte word, to and from lanes 0 and 1.
inline Float4 load2(const float* p) {
  using Words = long long __attribute__((vector_size(16)));
  long long word;
  std::memcpy(&word, p, sizeof word);
  return reinterpret_cast<Float4>(Words{word, 0});
}
inline void store2(Float4 lanes, float* p) {
  using Words = long long __attribute__((vector_size(16)));
  const long long word = reinterpret_cast<Words>(lanes)[0];
  std::memcpy(p, &word, sizeof word);
}

}  // namespace kinetra::Spatial::simd

namespace kinetra::Spatial {

/// The floats of a stored value, in their order.
template <typename Stored>
auto floats(Stored& x) {
  static_assert(sizeof(Stored) == Stored::InRegisters::size * sizeof(float), "a stored value is its floats, no more");
  using Float = std::conditional_t<std::is_const_v<Stored>, const float, float>;
  return reinterpret_cast<Float*>(&x);
}

/// The form in registers of a stored value.
template <typename Stored>
typename Stored::InRegisters load(const Stored& x) {
  return Stored::InRegisters::load(floats(x));
}

/// The same for a value that was only just stored: reads the pieces that store wrote, because a processor makes a load
/// wait that needs two earlier stores.
template <typename Stored>
typename Stored::InRegisters loadJustStored(const Stored& x) {
  return Stored::InRegisters::loadJustStored(floats(x));
}

template <typename Stored>
void store(const typename Stored::InRegisters& y, Stored& x) {
  y.store(floats(x));
}

}  // namespace kinetra::Spatial
