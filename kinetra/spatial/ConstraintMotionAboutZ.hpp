#pragma once

#include <kinetra/spatial/Inertia.hpp>

namespace kinetra::Spatial {

namespace simd {

struct ConstraintMotionAboutZ {
  static constexpr int size = 6;

  Vector3 angular;
  Vector3 linear;

  static ConstraintMotionAboutZ load(const float* p) { return {Vector3(load4(p)), Vector3::loadLast(p + 3)}; }

  /// S a: the joint's motion for one rate or acceleration a (rad/s, rad/s^2).
  Motion operator*(const Eigen::Matrix<float, 1, 1>& a) const { return {angular * a[0], linear * a[0]}; }

  /// I S = (I_xz, I_yz, I_zz, -h_y, h_x, 0): the momentum of a body of inertia I for a unit rate, from the pattern of
  /// S. The argument is the column of S, as for other joints; this one has column 0 alone.
  static Force momentum(const Inertia& inertia, int /*column*/ = 0) {
    const Float4 h = inertia.h_m;
    const Float4 yx = shuffle<1, 1, 4, 4>(-h, h);                              // -hy -hy hx hx
    return {inertia.I.column2(), Vector3(shuffle<0, 2, 4, 4>(yx, Float4{}))};  // . | -hy hx 0
  }

  /// S'f, the component of f along the joint's coordinate, into one float: all six products.
  void transposeTimes(Force f, float* projected) const { *projected = sum(angular * f.couple + linear * f.force); }
};

}  // namespace simd

/// Motion subspace of a revolute joint about its z axis: the unit angular motion about z, one stored column.
class ConstraintMotionAboutZ {
 public:
  using InRegisters = simd::ConstraintMotionAboutZ;
  static constexpr int dof_number = 1;

  ConstraintMotionAboutZ() { S_ << 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F; }

  /// The stored column, for products such as F'S.
  const Eigen::Matrix<float, 6, 1>& matrix() const { return S_; }

  /// S a and S'f
  Eigen::Matrix<float, 6, 1> operator*(const Eigen::Matrix<float, 1, 1>& a) const { return Motion(load(*this) * a); }
  Eigen::Matrix<float, 1, 1> transposeTimes(const Force& f) const {
    Eigen::Matrix<float, 1, 1> projected;
    load(*this).transposeTimes(load(f), projected.data());
    return projected;
  }

 private:
  Eigen::Matrix<float, 6, 1> S_;
};

/// I S, a force as a column of six.
inline Eigen::Matrix<float, 6, 1> operator*(const Inertia& inertia, const ConstraintMotionAboutZ& S) {
  return Force(load(S).momentum(load(inertia)));
}

}  // namespace kinetra::Spatial
