#pragma once

#include <kinetra/spatial/Inertia.hpp>

namespace kinetra::Spatial {

/// Motion subspace of a revolute joint about its z axis: the unit angular motion about z, one stored column.
class ConstraintMotionAboutZ {
 public:
  static constexpr int dof_number = 1;

  ConstraintMotionAboutZ() { S_ << 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F; }

  const Eigen::Matrix<float, 6, 1>& matrix() const { return S_; }

  /// S a: the joint's motion for one rate or acceleration a (rad/s, rad/s^2).
  Motion::Lanes operator*(const Eigen::Matrix<float, 1, 1>& a) const { return {angular() * a[0], linear() * a[0]}; }

  /// S'f, the component of f along the joint's coordinate, into one float: all six products, S as stored.
  void transposeTimes(Force::Lanes f, float* projected) const {
    *projected = sum(angular() * f.couple() + linear() * f.force());
  }

 private:
  Vec3 angular() const { return Vec3::load(S_.data()); }
  Vec3 linear() const { return Vec3::load(S_.data() + 3); }

  Eigen::Matrix<float, 6, 1> S_;
};

/// I S, a force as a column of six; formed from the pattern of S.
inline Eigen::Matrix<float, 6, 1> operator*(const Inertia& inertia, const ConstraintMotionAboutZ&) {
  Eigen::Matrix<float, 6, 1> F;
  F << inertia.I[3], inertia.I[4], inertia.I[5], -inertia.h[1], inertia.h[0], 0.0F;
  return F;
}

}  // namespace kinetra::Spatial
