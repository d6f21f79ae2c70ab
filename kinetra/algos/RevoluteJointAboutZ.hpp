#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>

namespace kinetra {

/// A revolute joint about the z axis of its own frame; which way that axis points in the robot is up to the node's
/// placement Xt. Featherstone 2008, section 4.4.
struct RevoluteJointAboutZ {
  static constexpr int dof_number = Spatial::ConstraintMotionAboutZ::dof_number;
  using Rotation = RotationMatrixAboutZ;
  using Position = SinCos;  ///< what Xj is computed from: sine and cosine of the angle
  static Position position(float q) { return Position(q); }

  TransformT<Rotation> Xj;     ///< parent-side frame to child-side frame
  Motion cj = Motion::zero();  ///< velocity-product acceleration: none
  Motion vj = Motion::zero();  ///< S dq; only the angular part is ever written
  Spatial::ConstraintMotionAboutZ S;
  Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Sets Xj from the position (rad) and vj from the velocity (rad/s).
  void jcalc(float q, float dq) { jcalc(position(q), dq); }
  /// Sets Xj from the position alone.
  void jcalc_pos(float q) { jcalc_pos(position(q)); }

  /// The same with the sine and the cosine at hand. Returns Xj.
  simd::TransformT<simd::RotationMatrixAboutZ> jcalc(Position q, float dq) {
    vj.angular() = Eigen::Vector3f(0.0F, 0.0F, dq);
    return jcalc_pos(q);
  }
  simd::TransformT<simd::RotationMatrixAboutZ> jcalc_pos(Position q) {
    const simd::TransformT<simd::RotationMatrixAboutZ> X = {{q.c, q.s}, simd::Vector3(0.0F, 0.0F, 0.0F)};
    store(X, Xj);
    return X;
  }
};

}  // namespace kinetra
