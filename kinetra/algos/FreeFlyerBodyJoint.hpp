#pragma once

#include <kinetra/spatial/ConstraintMotionFreeFlyerBody.hpp>
#include <kinetra/spatial/Transform.hpp>

namespace kinetra {

/// The joint of a free-floating body. Positions are the body's origin x, y, z in the parent-side frame (m) and the
/// angles of R = Rz(q5) Ry(q4) Rx(q3), the body's orientation there (rad); velocities are linear then angular, both in
/// the body's own axes, and so are not the rates of the positions. Featherstone 2008, section 4.4.
struct FreeFlyerBodyJoint {
  static constexpr int dof_number = Spatial::ConstraintMotionFreeFlyerBody::dof_number;
  using Rotation = Spatial::RotationMatrix;

  Spatial::TransformT<Rotation> Xj;              ///< parent-side frame to child-side frame
  Spatial::Motion cj = Spatial::Motion::zero();  ///< velocity-product acceleration: none
  Spatial::Motion vj;                            ///< S dq
  Spatial::ConstraintMotionFreeFlyerBody S;
  Spatial::Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Xj from the positions, vj from the velocities. Gives Xj at work.
  Spatial::TransformT<Spatial::Matrix3> jcalc(const Eigen::Matrix<float, 6, 1>& q,
                                              const Eigen::Matrix<float, 6, 1>& dq) {
    vj = S * dq;
    return jcalc_pos(q);
  }

  /// Xj from the positions alone. The order of the products is part of the result, which is promised to the bit.
  Spatial::TransformT<Spatial::Matrix3> jcalc_pos(const Eigen::Matrix<float, 6, 1>& q) {
    const auto [s3, c3] = Spatial::SinCos(q[3]);
    const auto [s4, c4] = Spatial::SinCos(q[4]);
    const auto [s5, c5] = Spatial::SinCos(q[5]);
    const Spatial::Matrix3 E = {{c4 * c5, s4 * (s3 * c5) - c3 * s5, s3 * s5 + (c3 * c5) * s4},
                                {c4 * s5, s3 * s4 * s5 + c5 * c3, s4 * c3 * s5 - s3 * c5},
                                {-s4, s3 * c4, c3 * c4}};
    const Spatial::TransformT<Spatial::Matrix3> X(E, Spatial::Vec3::load(q.data()));
    Xj = X;
    return X;
  }

  /// Xj Xt, for the node's placement Xt, from what jcalc gave.
  template <typename XtRotation>
  [[gnu::always_inline]] static auto placed(const Spatial::TransformT<Spatial::Matrix3>& Xj,
                                            const Spatial::TransformT<XtRotation>& Xt) {
    return Xj * Xt;
  }
};

}  // namespace kinetra
