#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>

namespace kinetra {

/// A revolute joint about the z axis of its own frame; which way that axis points in the robot is up to the node's
/// placement Xt. Featherstone 2008, section 4.4.
struct RevoluteJointAboutZ {
  static constexpr int dof_number = Spatial::ConstraintMotionAboutZ::dof_number;
  using Rotation = RotationMatrixAboutZ;

  TransformT<Rotation> Xj;     ///< parent-side frame to child-side frame
  Motion cj = Motion::zero();  ///< velocity-product acceleration: none
  Motion vj = Motion::zero();  ///< S dq; only the angular part is ever written
  Spatial::ConstraintMotionAboutZ S;
  Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Xj from the position (rad), vj from the velocity (rad/s). Returns Xj.
  simd::TransformT<simd::RotationMatrixAboutZ> jcalc(float q, float dq) {
    vj.angular() = Eigen::Vector3f(0.0F, 0.0F, dq);
    return jcalc_pos(q);
  }

  /// Xj from the position alone.
  simd::TransformT<simd::RotationMatrixAboutZ> jcalc_pos(float q) {
    const auto [s, c] = Spatial::SinCos(q);
    const simd::TransformT<simd::RotationMatrixAboutZ> X = {{c, s}, simd::Vector3(0.0F, 0.0F, 0.0F)};
    store(X, Xj);
    return X;
  }
};

}  // namespace kinetra
