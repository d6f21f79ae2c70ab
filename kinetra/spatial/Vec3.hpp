#pragma once

#include <cstring>

#include <Eigen/Core>

namespace kinetra::Spatial {

/// Four floats in one register.
using Float4 = float __attribute__((vector_size(16)));

/// Lanes of a (0-3) and of b (4-7), picked one by one.
template <int i, int j, int k, int l>
Float4 shuffle(Float4 a, Float4 b) {
  return __builtin_shufflevector(a, b, i, j, k, l);
}
/// Of one register; as integers, for which x86-64 copies and shuffles at once.
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

/// A 3-vector at work: three floats in one register, what the spatial formulas compute with. At rest it is three
/// floats of an Eigen vector or matrix. Lane 3 is never looked at. Every operation rounds once per lane, in the order
/// written, so that results depend neither on the compiler nor on the processor.
class Vec3 {
 public:
  Vec3(float x, float y, float z) : lanes_{x, y, z, 0.0F} {}
  explicit Vec3(Float4 lanes) : lanes_(lanes) {}
  Vec3(const Eigen::Vector3f& v) : Vec3(load(v.data())) {}
  template <typename Derived>
  Vec3(const Eigen::MatrixBase<Derived>& v) : Vec3(Eigen::Vector3f(v)) {}
  operator Eigen::Vector3f() const {
    Eigen::Vector3f v;
    store(v.data());
    return v;
  }

  /// Reads and writes exactly three floats: x and y as one word, then z. A load then always meets whole what an earlier
  /// store wrote, which the processor forwards without waiting.
  static Vec3 load(const float* p) { return Vec3(shuffle<0, 1, 4, 5>(load2(p), Float4{p[2], 0.0F, 0.0F, 0.0F})); }
  void store(float* p) const {
    store2(lanes_, p);
    p[2] = shuffle<2, 2, 2, 2>(lanes_)[0];
  }

  Float4 lanes() const { return lanes_; }
  float operator[](int i) const { return lanes_[i]; }
  float x() const { return lanes_[0]; }
  float y() const { return lanes_[1]; }
  float z() const { return lanes_[2]; }
  /// (a_i, a_i, a_i)
  template <int i>
  Vec3 splat() const {
    return Vec3(shuffle<i, i, i, i>(lanes_));
  }
  Vec3 yzx() const { return Vec3(shuffle<1, 2, 0, 3>(lanes_)); }
  Vec3 zxy() const { return Vec3(shuffle<2, 0, 1, 3>(lanes_)); }
  Vec3 yxz() const { return Vec3(shuffle<1, 0, 2, 3>(lanes_)); }

  friend Vec3 operator+(Vec3 a, Vec3 b) { return Vec3(a.lanes_ + b.lanes_); }
  friend Vec3 operator-(Vec3 a, Vec3 b) { return Vec3(a.lanes_ - b.lanes_); }
  friend Vec3 operator-(Vec3 a) { return Vec3(-a.lanes_); }
  /// Element by element.
  friend Vec3 operator*(Vec3 a, Vec3 b) { return Vec3(a.lanes_ * b.lanes_); }
  friend Vec3 operator/(Vec3 a, Vec3 b) { return Vec3(a.lanes_ / b.lanes_); }
  friend Vec3 operator*(Vec3 a, float s) { return Vec3(a.lanes_ * s); }

 private:
  Float4 lanes_;
};

/// a x b = (a_y b_z - a_z b_y, a_z b_x - a_x b_z, a_x b_y - a_y b_x), each product rounded, then their difference.
inline Vec3 cross(Vec3 a, Vec3 b) { return (a * b.yzx() - a.yzx() * b).yzx(); }

/// (a_x, a_y, a_z, b_i)
template <int i>
Float4 append(Vec3 a, Float4 b) {
  return shuffle<0, 1, 4, 6>(a.lanes(), shuffle<2, 2, 4 + i, 4 + i>(a.lanes(), b));
}

/// Writes a, then b. The first store's fourth float is overwritten by the second.
inline void store6(Vec3 a, Vec3 b, float* p) {
  store4(a.lanes(), p);
  b.store(p + 3);
}

/// (a_x + a_y) + a_z
inline float sum(Vec3 a) { return (a[0] + a[1]) + a[2]; }

}  // namespace kinetra::Spatial
