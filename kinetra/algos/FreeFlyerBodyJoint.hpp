#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/spatial/ConstraintMotionFreeFlyerBody.hpp>

namespace kinetra {

/// The joint of a free-floating body. Positions are the body's origin x, y, z in the parent-side frame (m) and the
/// angles of R = Rz(q5) Ry(q4) Rx(q3), the body's orientation there (rad); velocities are linear then angular, both in
/// the body's own axes, and so are not the rates of the positions. Featherstone 2008, section 4.4.
struct FreeFlyerBodyJoint {
  static constexpr int dof_number = Spatial::ConstraintMotionFreeFlyerBody::dof_number;
  using Rotation = RotationMatrix;
  using Coordinates = Eigen::Matrix<float, dof_number, 1>;

  TransformT<Rotation> Xj;     ///< parent-side frame to child-side frame
  Motion cj = Motion::zero();  ///< velocity-product acceleration: none
  Motion vj;                   ///< S dq
  Spatial::ConstraintMotionFreeFlyerBody S;
  Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Xj from the positions, vj from the velocities. Returns Xj.
  simd::TransformT<simd::RotationMatrix> jcalc(const Coordinates& q, const Coordinates& dq) {
    store(load(S) * dq, vj);
    return jcalc_pos(q);
  }

  /// Xj from the positions alone. The order of the products is part of the result, which is promised to the bit.
  simd::TransformT<simd::RotationMatrix> jcalc_pos(const Coordinates& q) {
    const auto [s3, c3] = Spatial::SinCos(q[3]);
    const auto [s4, c4] = Spatial::SinCos(q[4]);
    const auto [s5, c5] = Spatial::SinCos(q[5]);
    const simd::RotationMatrix E = {{c4 * c5, s4 * (s3 * c5) - c3 * s5, s3 * s5 + (c3 * c5) * s4},
                                    {c4 * s5, s3 * s4 * s5 + c5 * c3, s4 * c3 * s5 - s3 * c5},
                                    {-s4, s3 * c4, c3 * c4}};
    const simd::TransformT<simd::RotationMatrix> X = {E, simd::Vector3::load(q.data())};
    store(X, Xj);
    return X;
  }
};

}  // namespace kinetra
