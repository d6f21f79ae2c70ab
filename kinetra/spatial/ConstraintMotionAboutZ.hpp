#pragma once

#include <kinetra/spatial/Inertia.hpp>

namespace kinetra::Spatial {

/// Motion subspace of a revolute joint about its z axis: the unit angular motion about z, one stored column.
class ConstraintMotionAboutZ {
 public:
  static constexpr int dof_number = 1;

  ConstraintMotionAboutZ() { S_ << 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F; }

  const Eigen::Matrix<float, 6, 1>& matrix() const { return S_; }

  /// I S = (I_xz, I_yz, I_zz, -h_y, h_x, 0): the momentum of a body of inertia I for a unit rate. By the pattern of S,
  /// whose one column is number 0.
  Force::Lanes momentum(const Inertia::Lanes& inertia, int = 0) const {
    const Float4 h = inertia.h_m;
    const Vec3 force(shuffle<0, 2, 4, 4>(shuffle<1, 1, 4, 4>(-h, h), Float4{}));
    return {inertia.I.matrix().column2, force};
  }

  /// S a: the joint's motion for one rate or acceleration a (rad/s, rad/s^2).
  Motion::Lanes operator*(const Eigen::Matrix<float, 1, 1>& a) const { return {angular() * a[0], linear() * a[0]}; }

  /// S'f, the component of f along the joint's coordinate, into one float: all six products, S as stored.
  void transposeTimes(Force::Lanes f, float* projected) const {
    *projected = sum(angular() * f.couple() + linear() * f.force());
  }

 private:
  Vec3 angular() const { return Vec3(load4(S_.data())); }
  Vec3 linear() const { return Vec3(shuffle<1, 2, 3, 0>(load4(S_.data() + 2))); }

  Eigen::Matrix<float, 6, 1> S_;
};

/// I S, a force as a column of six.
inline Eigen::Matrix<float, 6, 1> operator*(const Inertia& inertia, const ConstraintMotionAboutZ& S) {
  return S.momentum(inertia);
}

}  // namespace kinetra::Spatial
