#pragma once

#include <Eigen/Core>

#include <kinetra/spatial/simd.hpp>

namespace kinetra::Spatial::simd {

/// A 3-vector in a register; it converts to and from Eigen's, the stored form. Lane 3 has no meaning.
class Vector3 {
 public:
  static constexpr int size = 3;

  /// Left unset.
  // cppcheck-suppress uninitMemberVar ; so that an array of vectors costs nothing before they are computed
  Vector3() = default;
  Vector3(float x, float y, float z) : lanes_{x, y, z, 0.0F} {}
  explicit Vector3(Float4 lanes) : lanes_(lanes) {}
  Vector3(const Eigen::Vector3f& v) : Vector3(load(v.data())) {}
  operator Eigen::Vector3f() const {
    Eigen::Vector3f v;
    store(v.data());
    return v;
  }

  /// Reads and writes exactly three floats: x and y as one word, then z. x y . . | z . . . -> x y z .
  static Vector3 load(const float* p) { return Vector3(shuffle<0, 1, 4, 5>(load2(p), Float4{p[2], 0.0F, 0.0F, 0.0F})); }
  void store(float* p) const {
    store2(lanes_, p);
    p[2] = lanes_[2];
  }
  /// Reads four floats from one float earlier. . x y z -> x y z .
  static Vector3 loadLast(const float* p) { return Vector3(shuffle<1, 2, 3, 0>(load4(p - 1))); }

  Float4 lanes() const { return lanes_; }
  float operator[](int i) const { return lanes_[i]; }
  /// (a_i, a_i, a_i)
  template <int i>
  Vector3 splat() const {
    return Vector3(shuffle<i, i, i, i>(lanes_));
  }
  Vector3 yzx() const { return Vector3(shuffle<1, 2, 0, 3>(lanes_)); }
  Vector3 zxy() const { return Vector3(shuffle<2, 0, 1, 3>(lanes_)); }
  Vector3 yxz() const { return Vector3(shuffle<1, 0, 2, 3>(lanes_)); }

  friend Vector3 operator+(Vector3 a, Vector3 b) { return Vector3(a.lanes_ + b.lanes_); }
  friend Vector3 operator-(Vector3 a, Vector3 b) { return Vector3(a.lanes_ - b.lanes_); }
  friend Vector3 operator-(Vector3 a) { return Vector3(-a.lanes_); }
  /// Element by element.
  friend Vector3 operator*(Vector3 a, Vector3 b) { return Vector3(a.lanes_ * b.lanes_); }
  friend Vector3 operator/(Vector3 a, Vector3 b) { return Vector3(a.lanes_ / b.lanes_); }
  friend Vector3 operator*(Vector3 a, float s) { return Vector3(a.lanes_ * s); }

 private:
  Float4 lanes_;
};

/// a x b = (a_y b_z - a_z b_y, a_z b_x - a_x b_z, a_x b_y - a_y b_x), each product rounded, then their difference.
inline Vector3 cross(Vector3 a, Vector3 b) { return (a * b.yzx() - a.yzx() * b).yzx(); }

/// The matrix with columns a, b, c times p: a p_x + b p_y + c p_z, summed from left to right.
inline Vector3 combine(Vector3 a, Vector3 b, Vector3 c, Vector3 p) {
  return a * p.splat<0>() + b * p.splat<1>() + c * p.splat<2>();
}

/// (a_x + a_y) + a_z
inline float sum(Vector3 a) { return (a[0] + a[1]) + a[2]; }

/// (a_x, a_y, a_z, b_i)
template <int i>
Float4 append(Vector3 a, Float4 b) {
  return shuffle<0, 1, 4, 6>(a.lanes(), shuffle<2, 2, 4 + i, 4 + i>(a.lanes(), b));  // x y | z b_i
}

/// Writes a, then b. The first store's fourth float is overwritten by the second.
inline void store6(Vector3 a, Vector3 b, float* p) {
  store4(a.lanes(), p);
  b.store(p + 3);
}

}  // namespace kinetra::Spatial::simd
