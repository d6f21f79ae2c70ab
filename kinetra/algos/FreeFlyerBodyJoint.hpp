#pragma once

#include <array>

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
  static constexpr int first_angle = 3;

  /// What Xj is computed from: x, y, z (m) and the sines and cosines of the angles.
  struct Position {
    simd::Vector3 xyz;
    std::array<SinCos, 3> angles;
  };

  TransformT<Rotation> Xj;     ///< parent-side frame to child-side frame
  Motion cj = Motion::zero();  ///< velocity-product acceleration: none
  Motion vj;                   ///< S dq
  Spatial::ConstraintMotionFreeFlyerBody S;
  Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Xj from the positions (the coordinates or what is computed from them), vj from the velocities. Returns Xj.
  template <typename AnyPosition>
  simd::TransformT<simd::RotationMatrix> jcalc(const AnyPosition& q, const Coordinates& dq) {
    store(load(S) * dq, vj);
    return jcalc_pos(q);
  }

  /// Xj from the positions alone. The order of the products is part of the result, which is promised to the bit.
  simd::TransformT<simd::RotationMatrix> jcalc_pos(const Coordinates& q) {
    return jcalc_pos(Position{simd::Vector3::load(q.data()), Spatial::sinCos<3>(q.data() + first_angle)});
  }
  simd::TransformT<simd::RotationMatrix> jcalc_pos(const Position& q) {
    const auto [s3, c3] = q.angles[0];
    const auto [s4, c4] = q.angles[1];
    const auto [s5, c5] = q.angles[2];
    const simd::RotationMatrix E = {{c4 * c5, s4 * (s3 * c5) - c3 * s5, s3 * s5 + (c3 * c5) * s4},
                                    {c4 * s5, s3 * s4 * s5 + c5 * c3, s4 * c3 * s5 - s3 * c5},
                                    {-s4, s3 * c4, c3 * c4}};
    const simd::TransformT<simd::RotationMatrix> X = {E, q.xyz};
    store(X, Xj);
    return X;
  }
};

}  // namespace kinetra
