#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <Eigen/Core>

// The host's math types, OX::Math. The build can define LUMO_OXMATH_HEADER to use another math library.
#ifndef LUMO_OXMATH_HEADER
#define LUMO_OXMATH_HEADER <oxmath/oxmath.h>
#endif
#include LUMO_OXMATH_HEADER

namespace lumo {

/// Read-only view of consecutive floats inside the object that returned it. It is valid as long as the object exists,
/// and it shows later changes.
struct FloatView {
  const float* first;
  const float* last;  ///< one past the last value

  const float* begin() const { return first; }
  const float* end() const { return last; }
  std::size_t size() const { return static_cast<std::size_t>(last - first); }
  const float& operator[](std::size_t i) const { return first[i]; }
};
static_assert(std::is_trivially_copyable_v<FloatView> && sizeof(FloatView) == 2 * sizeof(void*),
              "FloatView must be two pointers, because it is part of the binary interface");

/// Kinematics and dynamics of one robot: a tree of rigid bodies with a free-floating root.
///
/// The function `create` of the plug-in returns an object, and its function `destroy` deletes it. Set the state, call
/// compute operations, then read the results. A result changes only when an operation computes it.
///
/// Units are SI. Bodies are numbered 0 (the root) to getNbBodies() - 1, a parent before its children. Joint angle k
/// is that of the joint of body k + 1 and is generalized coordinate k + 6. Coordinates 0-5 are the root's: x, y, z,
/// roll, pitch, yaw for positions, where R = Rz(yaw) Ry(pitch) Rx(roll); linear then angular, in root axes, for
/// velocities, accelerations and forces. A pose (R, t) maps coordinates in the body's frame to the reference frame,
/// p_ref = R p + t. The world's z axis points up.
///
/// Indexes are not checked, except where an operation says so: with an index out of range the behaviour is undefined.
/// Only these operations allocate memory: clone, the three get...Vector operations, computePartialComJacobian if the
/// matrix does not have 21 columns, and getJointAngleId and getBodyId if the name is unknown.
///
/// Only one thread at a time may use an object, except that several threads may call const operations while no thread
/// calls another one. All objects share the masses: while setBodyInertia or `create` runs, no other operation may run
/// on any object.
///
/// Compiled hosts depend on the order of the declarations.
class RigidBodySystem {
 public:
  virtual ~RigidBodySystem() = default;
  RigidBodySystem& operator=(const RigidBodySystem&) = delete;

  /// Returns a new object with the same inputs and results, including results that are out of date. Throws
  /// std::bad_alloc.
  virtual std::unique_ptr<RigidBodySystem> clone() const = 0;

  // --- Names and sizes ---------------------------------------------------------------------------------------

  /// Always the empty string.
  virtual std::string getName() const = 0;
  /// Number of joint angles: 15.
  virtual std::size_t getNbJointAngles() const = 0;
  /// Number of bodies: 16.
  virtual std::size_t getNbBodies() const = 0;
  /// Number of the poses that setVolatilePose stores: 1.
  virtual std::size_t getNbVolatileFrames() const = 0;
  /// Name of the root, which is body 0.
  virtual const std::string& getRootName() const = 0;
  /// Name of a joint angle; equal to the name of the body that the joint connects to its parent.
  virtual const std::string& getJointAngleName(std::size_t jointAngle) const = 0;
  /// Index of the joint angle with exactly this name. Throws std::out_of_range with the message
  /// `no joint angle named "..."`.
  virtual std::size_t getJointAngleId(const std::string& name) const = 0;
  /// Name of a body.
  virtual const std::string& getBodyName(std::size_t body) const = 0;
  /// Index of the body with exactly this name. Throws std::out_of_range with the message `no body named "..."`.
  virtual std::size_t getBodyId(const std::string& name) const = 0;

  // --- Masses ------------------------------------------------------------------------------------------------

  /// Sets the mass of a body (kg), its centre of mass in the body's frame (m), and its rotational inertia about the
  /// centre of mass in the body's axes (kg m^2), for all objects in the process. Only the lower triangle of `inertia`
  /// is read. Values are not checked. The masses and getComPosition(body) change at once, other results when they are
  /// computed again.
  virtual void setBodyInertia(std::size_t body, float mass, const OX::Math::Position3D& com,
                              const Eigen::Matrix3f& inertia) = 0;
  /// Total mass (kg).
  virtual float getMass() const = 0;
  /// Mass of all bodies except `body` (kg). If `body` is greater than 15, the total mass.
  virtual float getPartialMass(std::size_t body) const = 0;
  /// Mass of one body (kg).
  virtual float getMass(std::size_t body) const = 0;

  // --- State -------------------------------------------------------------------------------------------------

  /// Sets the pose of the root in the world. The pose is converted to a position and three angles and back.
  /// getRootPose(), getPose(0) and getComPosition(0) change at once, other results when they are computed again.
  virtual void setRootPose(const OX::Math::Transform& pose) = 0;
  /// Pose of the root in the world, equal to getPose(0). setRootPose, setPose(0) and computeFwdKinematicsOnlyRoot set
  /// it. It can differ by rounding from the pose that was passed to setRootPose.
  virtual const OX::Math::Transform& getRootPose() const = 0;
  /// Sets the velocity of the root's origin (m/s) and the angular velocity of the root (rad/s), both in root axes.
  virtual void setRootVelocity(const OX::Math::Velocity6D& velocity) = 0;
  /// Sets the spatial acceleration of the root in root axes (m/s^2, rad/s^2): the derivatives of the components of the
  /// velocity. The classical acceleration of the root's origin is its linear part plus angular x linear velocity.
  virtual void setRootAcceleration(const OX::Math::Velocity6D& acceleration) = 0;
  /// The velocity that was set.
  virtual OX::Math::Velocity6D getRootVelocity() const = 0;
  /// The acceleration that was set.
  virtual OX::Math::Velocity6D getRootAcceleration() const = 0;

  /// Set the positions (rad), velocities (rad/s) or accelerations (rad/s^2) of all joints. The array must have at least
  /// 15 values; further values are ignored. Angles are not wrapped.
  virtual void setJointAnglesPos(const Eigen::Ref<const Eigen::ArrayXf>& positions) = 0;
  virtual void setJointAnglesVel(const Eigen::Ref<const Eigen::ArrayXf>& velocities) = 0;
  virtual void setJointAnglesAcc(const Eigen::Ref<const Eigen::ArrayXf>& accelerations) = 0;
  /// Set the same values of one joint.
  virtual void setJointAnglePos(std::size_t jointAngle, float position) = 0;
  virtual void setJointAngleVel(std::size_t jointAngle, float velocity) = 0;
  virtual void setJointAngleAcc(std::size_t jointAngle, float acceleration) = 0;
  /// The values of one joint that were set.
  virtual float getJointAnglePos(std::size_t jointAngle) const = 0;
  virtual float getJointAngleVel(std::size_t jointAngle) const = 0;
  virtual float getJointAngleAcc(std::size_t jointAngle) const = 0;
  /// The values of all joints that were set.
  virtual FloatView getJointAnglesPos() const = 0;
  virtual FloatView getJointAnglesVel() const = 0;
  virtual FloatView getJointAnglesAcc() const = 0;

  /// Sets the external wrench on a body, in the body's frame about its origin: force (N), then torque (N m). The vector
  /// must have at least six values; further values are ignored. The wrench acts until it is set again.
  virtual void setExternalWrench(std::size_t body, const std::vector<float>& wrench) = 0;
  /// Sets the external wrench on a body, in another frame about the origin of that frame. `frame` is the pose of that
  /// frame in the body's frame.
  virtual void setExternalWrench(std::size_t body, const std::vector<float>& wrench, OX::Math::Transform frame) = 0;

  // --- Computations ------------------------------------------------------------------------------------------

  /// Computes the poses, the centre of mass and the Jacobian in the root's frame from the joint angles. These results
  /// do not depend on the root's pose. Later calls of computeGeneralizedMass use the joint angles of this call, and
  /// those of computePartialComJacobian also its root pose.
  virtual void computeFwdKinematicsExceptRoot() = 0;
  /// Computes the poses and the centre of mass in the world from the root's pose and the results of the last
  /// computeFwdKinematicsExceptRoot. It is sufficient if only the root has moved. Later calls of
  /// computePartialComJacobian use the root pose of this call.
  virtual void computeFwdKinematicsOnlyRoot() = 0;
  /// Calls computeFwdKinematicsExceptRoot and then computeFwdKinematicsOnlyRoot.
  virtual void computeFwdKinematics() {
    computeFwdKinematicsExceptRoot();
    computeFwdKinematicsOnlyRoot();
  }
  /// Computes the generalized mass matrix at the joint angles of the last computeFwdKinematicsExceptRoot or
  /// computeInverseDynamics. On a new object, call one of them first. The result does not depend on the root's pose.
  virtual void computeGeneralizedMass() = 0;
  /// Sets J, 3 x 21, to getPartialMass(body) times the Jacobian of the centre of mass of all bodies except `body`, in
  /// world axes (kg for columns 0-2, kg m for the others). It uses the joint angles of the last
  /// computeFwdKinematicsExceptRoot or computeInverseDynamics, and the root pose of the last of these or of
  /// computeFwdKinematicsOnlyRoot. On a new object, call one of the first two first. If `body` is greater than 15, J is
  /// not changed. Throws std::bad_alloc if J must be resized and memory runs out; J is then not changed.
  virtual void computePartialComJacobian(std::size_t body, Eigen::Matrix<float, 3, Eigen::Dynamic>& J) = 0;
  /// Returns the centre of mass of all bodies except `body` in the root's frame (m), at the joint angles of the last
  /// computeFwdKinematicsExceptRoot. If `body` is 0 or greater than 15, it returns getComPosition(), the centre of mass
  /// of the whole robot in the **world** frame.
  virtual OX::Math::Position3D computePartialComPositionInRoot(std::size_t body) = 0;

  // --- Poses and centres of mass -----------------------------------------------------------------------------

  /// Pose of a body in the root's frame, as of the last computeFwdKinematicsExceptRoot; the identity for the root.
  virtual const OX::Math::Transform& getPoseInRoot(std::size_t body) const = 0;
  /// Pose of a body in the world, as of the last computeFwdKinematicsOnlyRoot or setPose; that of the root also as of
  /// the last setRootPose. The largest std::size_t value means the world, and its pose is the identity.
  virtual const OX::Math::Transform& getPose(std::size_t body) const = 0;
  /// Replaces the world pose of a body until the next computeFwdKinematicsOnlyRoot; that of the root also until the
  /// next setRootPose. No computation uses this pose, except getComPosition(body).
  virtual void setPose(std::size_t body, const OX::Math::Transform& pose) = 0;
  /// The pose that setVolatilePose has stored. No computation reads or writes it.
  virtual const OX::Math::Transform& getVolatilePose(std::size_t frame) const = 0;
  /// Stores a pose for the host.
  virtual void setVolatilePose(std::size_t frame, const OX::Math::Transform& pose) = 0;
  /// Centre of mass of one body in the world (m), computed from getPose(body) at each call.
  virtual OX::Math::Position3D getComPosition(std::size_t body) const = 0;
  /// Centre of mass of the robot in the root's frame (m), as of the last computeFwdKinematicsExceptRoot.
  virtual const OX::Math::Position3D& getComPositionInRoot() const = 0;
  /// Centre of mass of the robot in the world (m), as of the last computeFwdKinematicsOnlyRoot.
  virtual const OX::Math::Position3D& getComPosition() const = 0;

  // --- Matrices and the tree ---------------------------------------------------------------------------------

  /// Generalized mass matrix, 21 x 21, symmetric, in the order of the generalized coordinates, those of the root in
  /// root axes (kg, kg m, kg m^2), as of the last computeGeneralizedMass. An entry is zero if its coordinates belong to
  /// two branches of the tree.
  virtual const Eigen::MatrixXf& getGeneralizedMass() const = 0;
  /// Jacobian, 6 x 21, three angular rows, then three linear rows, in root axes, as of the last
  /// computeFwdKinematicsExceptRoot. Column d is the velocity, at unit rate of coordinate d, of the body whose joint
  /// has coordinate d. The linear part is the velocity of the point of the body that is at the root's origin. Columns
  /// 0-5 are constant.
  virtual const Eigen::Matrix<float, 6, Eigen::Dynamic>& getJacobianInRoot() const = 0;
  /// Return for each body the index of its parent (-1 for the root), the number of its coordinates and the index of its
  /// first coordinate. Throw std::bad_alloc.
  virtual std::vector<std::int64_t> getParentsVector() const = 0;
  virtual std::vector<std::int64_t> getDofNumbersVector() const = 0;
  virtual std::vector<std::int64_t> getDofIndexesVector() const = 0;

  // --- Inverse dynamics --------------------------------------------------------------------------------------

  /// Computes the joint torques that produce the accelerations that were set, at the positions and velocities that were
  /// set, under gravity and the external wrenches. It needs no earlier computation, and changes no pose or centre
  /// of mass. Later calls of computeGeneralizedMass use the joint angles of this call, and those of
  /// computePartialComJacobian also its root pose.
  virtual void computeInverseDynamics() = 0;
  /// Torque of a joint (N m) as of the last computeInverseDynamics.
  virtual float getJointAngleTorque(std::size_t jointAngle) const = 0;
  /// Torques of all joints (N m) as of the last computeInverseDynamics.
  virtual FloatView getJointAnglesTorque() const = 0;

 protected:
  RigidBodySystem() = default;
  RigidBodySystem(const RigidBodySystem&) = default;
};

}  // namespace lumo
