#pragma once

#include <type_traits>

#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>
#include <kinetra/spatial/Transform.hpp>

namespace kinetra {

/// A revolute joint about the z axis of its own frame; which way that axis points in the robot is up to the node's
/// placement Xt. Featherstone 2008, section 4.4.
struct RevoluteJointAboutZ {
  static constexpr int dof_number = Spatial::ConstraintMotionAboutZ::dof_number;
  using Rotation = Spatial::RotationMatrixAboutZ;

  Spatial::TransformT<Rotation> Xj;              ///< parent-side frame to child-side frame
  Spatial::Motion cj = Spatial::Motion::zero();  ///< velocity-product acceleration: none
  Spatial::Motion vj = Spatial::Motion::zero();  ///< S dq; only the angular part is ever written
  Spatial::ConstraintMotionAboutZ S;
  Spatial::Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Xj from the position (rad), vj from the velocity (rad/s). Gives Xj, which at
  /// work is what it is at rest.
  const Spatial::TransformT<Rotation>& jcalc(float q, float dq) {
    vj.angular() = Eigen::Vector3f(0.0F, 0.0F, dq);
    return jcalc_pos(q);
  }

  /// Xj from the position alone.
  const Spatial::TransformT<Rotation>& jcalc_pos(float q) {
    Xj = {Rotation(q), Spatial::Vec3(0.0F, 0.0F, 0.0F)};
    return Xj;
  }

  /// Xj Xt, for the node's placement Xt, from what jcalc gave. The joint does not translate, so r is Xt's: what the
  /// full product gives to the bit, for no placement has a -0.
  template <typename XtRotation>
  [[gnu::always_inline]] static auto placed(const Spatial::TransformT<Rotation>& Xj,
                                            const Spatial::TransformT<XtRotation>& Xt) {
    const auto E = Xj.E * Xt.E;
    return Spatial::TransformT<std::decay_t<decltype(E)>>(E, Xt.r);
  }
};

}  // namespace kinetra
