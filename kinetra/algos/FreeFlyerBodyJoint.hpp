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
  static Position position(const Coordinates& q) {
    return {simd::Vector3::load(q.data()), Spatial::sinCos<3>(q.data() + first_angle)};
  }

  TransformT<Rotation> Xj;     ///< parent-side frame to child-side frame
  Motion cj = Motion::zero();  ///< velocity-product acceleration: none
  Motion vj;                   ///< S dq
  Spatial::ConstraintMotionFreeFlyerBody S;
  Force f;  ///< force across the joint on the body, in its frame (inverse dynamics)

  /// Sets Xj from the positions and vj from the velocities.
  void jcalc(const Coordinates& q, const Coordinates& dq) { jcalc(position(q), dq); }
  /// Sets Xj from the positions alone.
  void jcalc_pos(const Coordinates& q) { jcalc_pos(position(q)); }

  /// The same with the sines and cosines at hand. Returns Xj.
  simd::TransformT<simd::RotationMatrix> jcalc(const Position& q, const Coordinates& dq) {
    store(load(S) * dq, vj);
    return jcalc_pos(q);
  }
  simd::TransformT<simd::RotationMatrix> jcalc_pos(const Position& q) {
    // The order of the products decides the bits of the result.
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
