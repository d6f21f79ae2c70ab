#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <Eigen/Core>

// The host's 3D math types, OX::Math. The build names the header of the library that it was pointed at.
#ifndef LUMO_OXMATH_HEADER
#define LUMO_OXMATH_HEADER <oxmath/oxmath.h>
#endif
#include LUMO_OXMATH_HEADER

namespace lumo {

/// Read-only view of consecutive floats inside the object that handed it out. It stays valid, and shows later
/// changes, as long as that object lives.
struct FloatView {
  const float* first;
  const float* last;  ///< one past the last value

  const float* begin() const { return first; }
  const float* end() const { return last; }
  std::size_t size() const { return static_cast<std::size_t>(last - first); }
  const float& operator[](std::size_t i) const { return first[i]; }
};
static_assert(std::is_trivially_copyable_v<FloatView> && sizeof(FloatView) == 2 * sizeof(void*),
              "a view is returned as two pointers");

/// Kinematics and dynamics of one robot: a tree of rigid bodies under a free-floating root.
///
/// A plug-in's `create` makes the object and its `destroy` takes it back. Set the state, compute, read the
/// results: every result is as fresh as the compute operation that produced it, and none refreshes itself.
///
/// Units are SI. Bodies are numbered 0 (the root) to getNbBodies() - 1, a parent before its children; joint angle
/// k moves body k + 1 and is generalized coordinate k + 6. Coordinates 0-5 are the root's: x, y, z and the angles
/// about x, y, z for positions, linear then angular for velocities, accelerations and forces. A pose (R, t) maps
/// coordinates in the body's frame to the reference frame, p_ref = R p + t. The world's z axis points up.
///
/// An index out of range is the caller's error and is not checked, except where an operation says so. Nothing
/// allocates but create, clone, the three get...Vector queries, and computePartialComJacobian for a matrix of another
/// size; a failed look-up allocates its message. One object serves one thread at a time; setBodyInertia
/// and creation write data that all objects share, so they must not overlap any operation on any object.
///
/// The declaration order is binding: hosts call through it.
class RigidBodySystem {
 public:
  virtual ~RigidBodySystem() = default;
  RigidBodySystem& operator=(const RigidBodySystem&) = delete;

  /// A new object with the same inputs and results, stale ones included; throws std::bad_alloc.
  virtual std::unique_ptr<RigidBodySystem> clone() const = 0;

  // --- Names and sizes ---------------------------------------------------------------------------------------

  /// Always the empty string.
  virtual std::string getName() const = 0;
  virtual std::size_t getNbJointAngles() const = 0;
  virtual std::size_t getNbBodies() const = 0;
  virtual std::size_t getNbVolatileFrames() const = 0;
  virtual const std::string& getRootName() const = 0;
  virtual const std::string& getJointAngleName(std::size_t jointAngle) const = 0;
  /// The joint angle of exactly this name; throws std::out_of_range: no joint angle named "...".
  virtual std::size_t getJointAngleId(const std::string& name) const = 0;
  virtual const std::string& getBodyName(std::size_t body) const = 0;
  /// The body of exactly this name; throws std::out_of_range: no body named "...".
  virtual std::size_t getBodyId(const std::string& name) const = 0;

  // --- Masses ------------------------------------------------------------------------------------------------

  /// Replaces a body's mass properties for every object of this model in the process: mass (kg), centre of mass
  /// (m, body frame), rotational inertia about the centre of mass (kg m^2, body axes; the upper triangle is not
  /// read). Any values are stored. The masses and
  /// getComPosition(b) change at once, other results when they are computed again.
  virtual void setBodyInertia(std::size_t body, float mass, const OX::Math::Position3D& com,
                              const Eigen::Matrix3f& inertia) = 0;
  /// Total mass (kg).
  virtual float getMass() const = 0;
  /// Mass of all bodies but one (kg); the total mass when `body` is not a body.
  virtual float getPartialMass(std::size_t body) const = 0;
  /// Mass of one body (kg).
  virtual float getMass(std::size_t body) const = 0;

  // --- State -------------------------------------------------------------------------------------------------

  /// Pose of the root in the world. Read back at once by getRootPose; every other pose waits for a computation.
  virtual void setRootPose(const OX::Math::Transform& pose) = 0;
  /// World pose of the root: the value last set by setRootPose, setPose(0) or a root computation.
  virtual const OX::Math::Transform& getRootPose() const = 0;
  /// Velocity of the root's origin (m/s) and its angular velocity (rad/s), both in the root body's axes.
  virtual void setRootVelocity(const OX::Math::Velocity6D& velocity) = 0;
  /// Spatial acceleration of the root in its body axes (m/s^2, rad/s^2): the derivative of the velocity's
  /// components. The classical acceleration of the origin is this plus angular x linear velocity.
  virtual void setRootAcceleration(const OX::Math::Velocity6D& acceleration) = 0;
  virtual OX::Math::Velocity6D getRootVelocity() const = 0;
  virtual OX::Math::Velocity6D getRootAcceleration() const = 0;

  /// All joint angles (rad, rad/s, rad/s^2). Reads exactly getNbJointAngles() values, whatever the array's size;
  /// angles are not wrapped.
  virtual void setJointAnglesPos(const Eigen::Ref<const Eigen::ArrayXf>& positions) = 0;
  virtual void setJointAnglesVel(const Eigen::Ref<const Eigen::ArrayXf>& velocities) = 0;
  virtual void setJointAnglesAcc(const Eigen::Ref<const Eigen::ArrayXf>& accelerations) = 0;
  virtual void setJointAnglePos(std::size_t jointAngle, float position) = 0;
  virtual void setJointAngleVel(std::size_t jointAngle, float velocity) = 0;
  virtual void setJointAngleAcc(std::size_t jointAngle, float acceleration) = 0;
  virtual float getJointAnglePos(std::size_t jointAngle) const = 0;
  virtual float getJointAngleVel(std::size_t jointAngle) const = 0;
  virtual float getJointAngleAcc(std::size_t jointAngle) const = 0;
  virtual FloatView getJointAnglesPos() const = 0;
  virtual FloatView getJointAnglesVel() const = 0;
  virtual FloatView getJointAnglesAcc() const = 0;

  /// External wrench on a body, in the body's frame about its origin: force (N) then torque (N m), six values read
  /// whatever the vector's size. It acts in every later computeInverseDynamics until it is set again.
  virtual void setExternalWrench(std::size_t body, const std::vector<float>& wrench) = 0;
  /// The same with the wrench given in another frame, about that frame's origin; `frame` is the pose of that frame
  /// in the body's frame.
  virtual void setExternalWrench(std::size_t body, const std::vector<float>& wrench, OX::Math::Transform frame) = 0;

  // --- Computations ------------------------------------------------------------------------------------------

  /// From the joint angles: poses and centre of mass in the root's frame, and the Jacobian. The root's pose plays no
  /// part in them. Leaves the whole configuration, the root's pose included, to computeGeneralizedMass and
  /// computePartialComJacobian.
  virtual void computeFwdKinematicsExceptRoot() = 0;
  /// From the root's pose and the last computeFwdKinematicsExceptRoot: poses and centre of mass in the world. Enough
  /// when only the root has moved. Leaves the root's pose to computePartialComJacobian, beside the joint angles that
  /// it already has.
  virtual void computeFwdKinematicsOnlyRoot() = 0;
  /// Both of the above, in this order.
  virtual void computeFwdKinematics() {
    computeFwdKinematicsExceptRoot();
    computeFwdKinematicsOnlyRoot();
  }
  /// The generalized mass matrix at the joint angles of the last computeFwdKinematicsExceptRoot or
  /// computeInverseDynamics, one of which must have run on a new object. The root's pose plays no part in it.
  virtual void computeGeneralizedMass() = 0;
  /// Sets J to 3 x 21: the partial mass times the Jacobian of the centre of mass of all bodies but `body`, in world
  /// axes (kg m per unit coordinate), at the configuration of the last forward kinematics or inverse dynamics, one of
  /// which must have run on a new object. Divide by getPartialMass(body) for the Jacobian itself. J is left alone when
  /// `body` is not a body. Throws std::bad_alloc when J needs new storage and there is none; J is then as it was.
  virtual void computePartialComJacobian(std::size_t body, Eigen::Matrix<float, 3, Eigen::Dynamic>& J) = 0;
  /// Centre of mass of all bodies but `body`, 1 to getNbBodies() - 1, in the root's frame (m), from the last
  /// computeFwdKinematicsExceptRoot. Beware: for the root and for no body it returns getComPosition(), the whole
  /// robot's centre of mass, and that one value is in the world frame.
  virtual OX::Math::Position3D computePartialComPositionInRoot(std::size_t body) = 0;

  // --- Poses and centres of mass -----------------------------------------------------------------------------

  /// Pose of a body in the root's frame, as of the last computeFwdKinematicsExceptRoot; the identity for the root.
  virtual const OX::Math::Transform& getPoseInRoot(std::size_t body) const = 0;
  /// Pose of a body in the world, as of the last root computation or setPose. The largest std::size_t value stands for
  /// the world itself: the identity.
  virtual const OX::Math::Transform& getPose(std::size_t body) const = 0;
  /// Overwrites a body's world pose until the next root computation; nothing else changes.
  virtual void setPose(std::size_t body, const OX::Math::Transform& pose) = 0;
  /// A pose kept for the host; no computation reads or writes it.
  virtual const OX::Math::Transform& getVolatilePose(std::size_t frame) const = 0;
  virtual void setVolatilePose(std::size_t frame, const OX::Math::Transform& pose) = 0;
  /// Centre of mass of one body in the world (m), from its stored world pose.
  virtual OX::Math::Position3D getComPosition(std::size_t body) const = 0;
  /// Centre of mass of the robot in the root's frame (m), as of the last computeFwdKinematicsExceptRoot.
  virtual const OX::Math::Position3D& getComPositionInRoot() const = 0;
  /// Centre of mass of the robot in the world (m), as of the last root computation.
  virtual const OX::Math::Position3D& getComPosition() const = 0;

  // --- Matrices and the tree ---------------------------------------------------------------------------------

  /// 21 x 21, symmetric, in the order of the generalized coordinates, the root's in its body axes (kg, kg m, kg m^2),
  /// as of the last computeGeneralizedMass. Zero where the coordinates belong to two branches of the tree.
  virtual const Eigen::MatrixXf& getGeneralizedMass() const = 0;
  /// 6 x 21, rows angular then linear: column d is the spatial velocity, in the root's frame at the root's origin,
  /// that a unit rate of coordinate d gives the body it moves. As of the last computeFwdKinematicsExceptRoot; columns
  /// 0-5 are constant.
  virtual const Eigen::Matrix<float, 6, Eigen::Dynamic>& getJacobianInRoot() const = 0;
  /// Per body: its parent (-1 for the root), its number of coordinates, the index of its first; throw std::bad_alloc.
  virtual std::vector<std::int64_t> getParentsVector() const = 0;
  virtual std::vector<std::int64_t> getDofNumbersVector() const = 0;
  virtual std::vector<std::int64_t> getDofIndexesVector() const = 0;

  // --- Inverse dynamics --------------------------------------------------------------------------------------

  /// Joint torques that give the set accelerations at the set positions and velocities, under gravity and the
  /// external wrenches. Needs no earlier computation. computeGeneralizedMass and computePartialComJacobian take over
  /// the configuration of this computation; poses and centres of mass stay those of the last forward kinematics.
  virtual void computeInverseDynamics() = 0;
  /// Torque of a joint (N m) as of the last computeInverseDynamics.
  virtual float getJointAngleTorque(std::size_t jointAngle) const = 0;
  virtual FloatView getJointAnglesTorque() const = 0;

 protected:
  RigidBodySystem() = default;
  RigidBodySystem(const RigidBodySystem&) = default;
};

}  // namespace lumo
