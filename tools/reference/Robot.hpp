#pragma once

#include <array>
#include <vector>

#include <kinetra/spatial/Force.hpp>
#include <tools/reference/WithMagnitude.hpp>

namespace reference {

/// Converts wrenches, in which the force comes first, to spatial forces.
std::array<kinetra::Spatial::Force, 16> toForces(const std::vector<std::vector<float>>& wrenches);

/// The reference for all results of norvaX3, in double precision. It uses geometry and the laws of Newton and Euler in
/// world axes: positions, joint axes and classical accelerations. It uses no spatial transform, and every result is a
/// sum over the bodies.
///
/// The constructor reads the stored placements and the table of inertias. The placements of the elbow yaw joints differ
/// from rotations by 8e-7. The poses and the Jacobian use the placements as stored, and each product of rotations gets
/// its last row from a cross product, as in the system. All other results use rotations that are made orthonormal, so
/// they can differ from those of the system by 8e-7 of the magnitude, which is 7 float epsilons. In a magnitude, a
/// lever arm is the sum of the lengths of the links that it spans.
class Robot {
 public:
  /// The arguments are those of inverse dynamics. The root's velocity and spatial acceleration are in its own axes,
  /// linear first. fext has one force for each body, in the body's frame; it may be null.
  using Vector21f = Eigen::Matrix<float, 21, 1>;
  explicit Robot(const Vector21f& q, const Vector21f& dq = Vector21f::Zero(), const Vector21f& ddq = Vector21f::Zero(),
                 const kinetra::Spatial::Force* fext = nullptr);

  /// Return 3 x 4 matrices: the body's axes as columns, then its origin.
  WithMagnitude poseInWorld(int body) const;
  WithMagnitude poseInRoot(int body) const;
  /// Returns a 6 x 21 matrix, angular rows first; the linear rows are those of the point at the root's origin. Columns
  /// 0-5 are zero.
  WithMagnitude jacobianInRoot() const;
  WithMagnitude bodyComInWorld(int body) const;

  /// Return, for all bodies or for all but one: mass times centre of mass in the root's frame (kg m); the generalized
  /// mass matrix; mass times the Jacobian of the centre of mass in world axes, 3 x 21.
  WithMagnitude firstMomentInRoot(int excluded = -1) const;
  WithMagnitude massMatrix(int excluded = -1) const;
  WithMagnitude momentumJacobianInWorld(int excluded = -1) const;

  /// Returns 21 generalized forces. Those of the root are in its own axes, linear first.
  const WithMagnitude& torques() const { return torques_; }

 private:
  using Matrix3x21 = Eigen::Matrix<double, 3, 21>;
  using Row21 = Eigen::Matrix<double, 1, 21>;

  struct Body {
    Eigen::Matrix3d R_root = Eigen::Matrix3d::Identity(), R, inertia;  // axes in the root and the world; about com
    Eigen::Vector3d p_root = Eigen::Vector3d::Zero(), p, com;          // origin; centre of mass from it, world axes
    double mass, chain = 0.0;                                          // length of the links from the root's origin
    Matrix3x21 angular, linear;  // Jacobians of the orientation and of the centre of mass, world axes
    Row21 turns, arm;            // the magnitudes of these Jacobians
    Eigen::Vector3d w, dw, a;    // angular velocity and acceleration, acceleration of the origin
  };

  Body bodies_[16];
  WithMagnitude torques_;
};

}  // namespace reference
