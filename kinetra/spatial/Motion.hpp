#pragma once

#include <type_traits>

#include <kinetra/spatial/Vector3.hpp>

namespace kinetra::Spatial {

class Force;

namespace simd {

struct Motion {
  static constexpr int size = 6;

  Vector3 angular;
  Vector3 linear;

  static Motion load(const float* p) { return {Vector3(load4(p)), Vector3::loadLast(p + 3)}; }
  static Motion loadJustStored(const float* p) { return {Vector3::load(p), Vector3::load(p + 3)}; }
  void store(float* p) const { store6(angular, linear, p); }
};

inline Motion operator+(Motion a, Motion b) { return {a.angular + b.angular, a.linear + b.linear}; }
inline Motion operator-(Motion a, Motion b) { return {a.angular - b.angular, a.linear - b.linear}; }

/// (w, v0) x (mw, mv) = (w x mw, w x mv + v0 x mw)
inline Motion crm(Motion v, Motion m) {
  return {cross(v.angular, m.angular), cross(v.angular, m.linear) + cross(v.linear, m.angular)};
}

}  // namespace simd

/// A spatial motion (velocity or acceleration) of a body in one frame: the angular part, then the linear part, that
/// of the point of the body now at the frame's origin (rad/s, m/s; rad/s^2, m/s^2). Featherstone 2008, section 2.2.
class Motion {
 public:
  using InRegisters = simd::Motion;
  using Vector6 = Eigen::Matrix<float, 6, 1>;

  /// Left unset.
  Motion() = default;
  explicit Motion(simd::Motion m) { store(m, *this); }
  Motion(const Eigen::Vector3f& angular, const Eigen::Vector3f& linear) : angular_(angular), linear_(linear) {}
  /// From and to a column of six, angular first.
  explicit Motion(const Vector6& v) : Motion(simd::Motion::load(v.data())) {}
  explicit Motion(const Force&) = delete;  // not by way of a column of six
  operator Vector6() const { return (Vector6() << angular_, linear_).finished(); }

  static Motion zero() { return Motion(Vector6::Zero()); }

  const Eigen::Vector3f& angular() const { return angular_; }
  const Eigen::Vector3f& linear() const { return linear_; }
  Eigen::Vector3f& angular() { return angular_; }
  Eigen::Vector3f& linear() { return linear_; }

 private:
  Eigen::Vector3f angular_;
  Eigen::Vector3f linear_;
};

inline Motion operator+(const Motion& a, const Motion& b) { return Motion(load(a) + load(b)); }
inline Motion operator-(const Motion& a, const Motion& b) { return Motion(load(a) - load(b)); }
/// A column of six, such as a motion subspace times its coordinates, is added as a motion.
template <typename Derived,
          typename = std::enable_if_t<Derived::RowsAtCompileTime == 6 && Derived::ColsAtCompileTime == 1>>
Motion operator+(const Motion& a, const Eigen::MatrixBase<Derived>& b) {
  return a + Motion(Motion::Vector6(b));
}

/// Motion cross product v x m: the rate of change of m when it is carried along with velocity v, both in one frame.
/// Featherstone 2008, section 2.9.
inline Motion crm(const Motion& v, const Motion& m) { return Motion(crm(load(v), load(m))); }

}  // namespace kinetra::Spatial
