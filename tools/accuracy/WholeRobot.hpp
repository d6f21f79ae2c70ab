#pragma once

#include <array>
#include <vector>

#include <kinetra/spatial/Force.hpp>
#include <tools/accuracy/Estimate.hpp>

namespace oracle {

/// External forces from wrenches, which have the force first.
std::array<kinetra::Spatial::Force, 16> toForces(const std::vector<std::vector<float>>& wrenches);

/// The robot norvaX3 by plain geometry and the laws of Newton and Euler, in double precision and world axes: positions,
/// joint axes, classical accelerations; no spatial transform, and every result a plain sum over bodies.
///
/// Reads the placements as stored and the table of inertias when constructed. The elbow placements are 8e-7 off
/// orthonormal. Poses close every product of rotations with a cross product as the system does, so they agree to
/// rounding. All else is that of truly rigid bodies (rotations made orthonormal), from which the passes may differ by
/// those 8e-7 of the magnitude, 7 float epsilons. In magnitudes, a lever arm is the length of the links it spans.
class WholeRobot {
 public:
  /// What inverse dynamics takes: the root's velocity and spatial acceleration in its own axes, linear first; external
  /// forces, one a body in its frame, or none.
  using Vector21f = Eigen::Matrix<float, 21, 1>;
  explicit WholeRobot(const Vector21f& q, const Vector21f& dq = Vector21f::Zero(),
                      const Vector21f& ddq = Vector21f::Zero(), const kinetra::Spatial::Force* fext = nullptr);

  /// 3 x 4: the body's axes as columns, then its origin.
  Estimate poseInWorld(int body) const;
  Estimate poseInRoot(int body) const;
  /// 6 x 21, angular then linear, the latter of the point at the root's origin. Columns 0-5 are zero.
  Estimate jacobianInRoot() const;
  Estimate bodyComInWorld(int body) const;

  /// Of all bodies but one, or of all: mass times centre of mass in the root's frame (kg m); the generalized mass
  /// matrix; 3 x 21, mass times the Jacobian of the centre of mass, in world axes.
  Estimate firstMomentInRoot(int excluded = -1) const;
  Estimate massMatrix(int excluded = -1) const;
  Estimate momentumJacobianInWorld(int excluded = -1) const;

  /// 21 generalized forces, the root's in its own axes, linear first.
  const Estimate& torques() const { return torques_; }

 private:
  using Matrix3x21 = Eigen::Matrix<double, 3, 21>;
  using Row21 = Eigen::Matrix<double, 1, 21>;

  struct Body {
    Eigen::Matrix3d R_root = Eigen::Matrix3d::Identity(), R, inertia;  // axes in the root and the world; about com
    Eigen::Vector3d p_root = Eigen::Vector3d::Zero(), p, com;          // origin; centre of mass from it, world axes
    double mass, chain = 0.0;                                          // length of the links from the root's origin
    Matrix3x21 angular, linear;  // Jacobians of the turning and of the centre of mass, world axes
    Row21 turns, arm;            // their magnitudes
    Eigen::Vector3d w, dw, a;    // angular velocity and acceleration, acceleration of the origin
  };

  Body bodies_[16];
  Estimate torques_;
};

}  // namespace oracle
