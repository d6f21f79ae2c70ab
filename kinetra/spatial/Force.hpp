#pragma once

#include <kinetra/spatial/Motion.hpp>

namespace kinetra::Spatial {

namespace simd {

struct Force {
  static constexpr int size = 6;

  Vector3 couple;
  Vector3 force;

  static Force load(const float* p) { return {Vector3(load4(p)), Vector3::loadLast(p + 3)}; }
  static Force loadJustStored(const float* p) { return {Vector3::load(p), Vector3::load(p + 3)}; }
  void store(float* p) const { store6(couple, force, p); }
};

inline Force operator+(Force a, Force b) { return {a.couple + b.couple, a.force + b.force}; }
inline Force operator-(Force a, Force b) { return {a.couple - b.couple, a.force - b.force}; }

/// (w, v0) x* (n, f0) = (w x n + v0 x f0, w x f0)
inline Force crf(Motion v, Force f) {
  return {cross(v.angular, f.couple) + cross(v.linear, f.force), cross(v.angular, f.force)};
}

}  // namespace simd

/// A spatial force in one frame: the couple about the frame's origin, then the linear force (N m, N).
/// Featherstone 2008, section 2.3.
class Force {
 public:
  using InRegisters = simd::Force;
  using Vector6 = Eigen::Matrix<float, 6, 1>;

  /// Left unset.
  Force() = default;
  explicit Force(simd::Force f) { store(f, *this); }
  Force(const Eigen::Vector3f& couple, const Eigen::Vector3f& force) : couple_(couple), force_(force) {}
  /// From and to a column of six, couple first.
  explicit Force(const Vector6& f) : Force(simd::Force::load(f.data())) {}
  explicit Force(const Motion&) = delete;  // not by way of a column of six
  operator Vector6() const { return (Vector6() << couple_, force_).finished(); }

  static Force zero() { return Force(Vector6::Zero()); }

  const Eigen::Vector3f& couple() const { return couple_; }
  const Eigen::Vector3f& force() const { return force_; }
  Eigen::Vector3f& couple() { return couple_; }
  Eigen::Vector3f& force() { return force_; }

 private:
  Eigen::Vector3f couple_;
  Eigen::Vector3f force_;
};

inline Force operator+(const Force& a, const Force& b) { return Force(load(a) + load(b)); }
inline Force operator-(const Force& a, const Force& b) { return Force(load(a) - load(b)); }

/// Force cross product v x* f: the rate of change of f when it is carried along with velocity v, both in one frame.
/// Featherstone 2008, section 2.9.
inline Force crf(const Motion& v, const Force& f) { return Force(crf(load(v), load(f))); }

}  // namespace kinetra::Spatial
