#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <kinetra/spatial/Force.hpp>
#include <service/RigidBodySystem.hpp>
#include <service/conversions.hpp>

namespace lumo {

/// The rigid-body system of a model compiled in. It owns a robot record, the host's inputs and the results; its
/// operations copy into these members, run passes over the record and hand out references. A stored result
/// changes only when its compute operation runs, except that setRootPose and setPose write world poses. The masses and
/// getComPosition(b) are read at each call.
template <typename Robot>
class KinetraRigidBodySystem final : public RigidBodySystem {
 public:
  using Transform = OX::Math::Transform;
  using Position3D = OX::Math::Position3D;
  using Velocity6D = OX::Math::Velocity6D;
  using ArrayRef = Eigen::Ref<const Eigen::ArrayXf>;
  using Names = std::array<std::string, Robot::nb_bodies>;

  /// All inputs and results zero or the identity. Recomputes the total mass from the table of inertias.
  KinetraRigidBodySystem();
  KinetraRigidBodySystem(const KinetraRigidBodySystem&) = default;

  // The record holds 16-byte vectors. Eigen's macro for this is empty under C++17, so it is written out.
  static void* operator new(std::size_t size) { return Eigen::internal::aligned_malloc(size); }
  static void operator delete(void* memory) noexcept { Eigen::internal::aligned_free(memory); }

  std::unique_ptr<RigidBodySystem> clone() const override { return std::make_unique<KinetraRigidBodySystem>(*this); }

  std::string getName() const override { return {}; }
  std::size_t getNbJointAngles() const override { return nb_joint_angles; }
  std::size_t getNbBodies() const override { return nb_bodies; }
  std::size_t getNbVolatileFrames() const override { return nb_volatile_frames; }
  const std::string& getRootName() const override { return Robot::joint_names[0]; }
  const std::string& getJointAngleName(std::size_t jointAngle) const override {
    return Robot::joint_names[jointAngle + 1];
  }
  std::size_t getJointAngleId(const std::string& name) const override {
    return indexOf(name, Robot::joint_names, 1, "no joint angle named \"");
  }
  const std::string& getBodyName(std::size_t body) const override { return Robot::body_names[body]; }
  std::size_t getBodyId(const std::string& name) const override {
    return indexOf(name, Robot::body_names, 0, "no body named \"");
  }

  void setBodyInertia(std::size_t body, float mass, const Position3D& com, const Eigen::Matrix3f& inertia) override;
  float getMass() const override { return mass_; }
  float getPartialMass(std::size_t body) const override {
    return body < nb_bodies ? mass_ - Robot::inertias[body].m : mass_;
  }
  float getMass(std::size_t body) const override { return Robot::inertias[body].m; }

  void setRootPose(const Transform& pose) override;
  const Transform& getRootPose() const override { return poses_[0]; }
  void setRootVelocity(const Velocity6D& velocity) override { setRoot(dq_, floats(velocity)); }
  void setRootAcceleration(const Velocity6D& acceleration) override { setRoot(ddq_, floats(acceleration)); }
  Velocity6D getRootVelocity() const override { return velocity6D(dq_); }
  Velocity6D getRootAcceleration() const override { return velocity6D(ddq_); }

  void setJointAnglesPos(const ArrayRef& positions) override { setJoints(q_, positions); }
  void setJointAnglesVel(const ArrayRef& velocities) override { setJoints(dq_, velocities); }
  void setJointAnglesAcc(const ArrayRef& accelerations) override { setJoints(ddq_, accelerations); }
  void setJointAnglePos(std::size_t jointAngle, float position) override { joints(q_)[jointAngle] = position; }
  void setJointAngleVel(std::size_t jointAngle, float velocity) override { joints(dq_)[jointAngle] = velocity; }
  void setJointAngleAcc(std::size_t jointAngle, float acceleration) override {
    joints(ddq_)[jointAngle] = acceleration;
  }
  float getJointAnglePos(std::size_t jointAngle) const override { return joints(q_)[jointAngle]; }
  float getJointAngleVel(std::size_t jointAngle) const override { return joints(dq_)[jointAngle]; }
  float getJointAngleAcc(std::size_t jointAngle) const override { return joints(ddq_)[jointAngle]; }
  FloatView getJointAnglesPos() const override { return jointsView(q_); }
  FloatView getJointAnglesVel() const override { return jointsView(dq_); }
  FloatView getJointAnglesAcc() const override { return jointsView(ddq_); }

  void setExternalWrench(std::size_t body, const std::vector<float>& wrench) override { fext_[body] = toForce(wrench); }
  void setExternalWrench(std::size_t body, const std::vector<float>& wrench, Transform frame) override {
    fext_[body] = fromOXMath(frame).apply(toForce(wrench));
  }

  void computeFwdKinematicsExceptRoot() override;
  void computeFwdKinematicsOnlyRoot() override;
  void computeGeneralizedMass() override;
  void computePartialComJacobian(std::size_t body, Eigen::Matrix<float, 3, Eigen::Dynamic>& J) override;
  Position3D computePartialComPositionInRoot(std::size_t body) override;

  const Transform& getPoseInRoot(std::size_t body) const override { return posesInRoot_[body]; }
  const Transform& getPose(std::size_t body) const override {
    return body == std::numeric_limits<std::size_t>::max() ? worldPose_ : poses_[body];
  }
  void setPose(std::size_t body, const Transform& pose) override { poses_[body] = pose; }
  const Transform& getVolatilePose(std::size_t frame) const override { return poses_[nb_bodies + frame]; }
  void setVolatilePose(std::size_t frame, const Transform& pose) override { poses_[nb_bodies + frame] = pose; }
  Position3D getComPosition(std::size_t body) const override {
    return poses_[body] * toPosition3D(Robot::inertias[body].com());
  }
  const Position3D& getComPositionInRoot() const override { return comInRoot_; }
  const Position3D& getComPosition() const override { return com_; }

  const Eigen::MatrixXf& getGeneralizedMass() const override { return H_; }
  const Eigen::Matrix<float, 6, Eigen::Dynamic>& getJacobianInRoot() const override { return J_; }
  std::vector<std::int64_t> getParentsVector() const override { return {Robot::parents.begin(), Robot::parents.end()}; }
  std::vector<std::int64_t> getDofNumbersVector() const override {
    return {Robot::dof_numbers.begin(), Robot::dof_numbers.end()};
  }
  std::vector<std::int64_t> getDofIndexesVector() const override {
    return {Robot::dof_indexes.begin(), Robot::dof_indexes.end()};
  }

  void computeInverseDynamics() override;
  float getJointAngleTorque(std::size_t jointAngle) const override { return joints(torques_)[jointAngle]; }
  FloatView getJointAnglesTorque() const override { return jointsView(torques_); }

 private:
  static constexpr int nb_root_dof = 6;
  static constexpr int nb_joint_angles = Robot::nb_dof - nb_root_dof;
  static constexpr std::size_t nb_bodies = Robot::nb_bodies;
  static constexpr std::size_t nb_volatile_frames = 1;

  using JointSpaceVector = Eigen::Matrix<float, Robot::nb_dof, 1>;

  // The entries of the joints in a joint-space vector.
  template <typename Vector>
  static auto* joints(Vector& v) {
    return v.data() + nb_root_dof;
  }
  static FloatView jointsView(const JointSpaceVector& v) { return {joints(v), joints(v) + nb_joint_angles}; }
  static void setJoints(JointSpaceVector& v, const ArrayRef& values) {
    std::copy_n(values.data(), nb_joint_angles, joints(v));
  }
  static void setRoot(JointSpaceVector& v, const float* values) { std::copy_n(values, nb_root_dof, v.data()); }
  static Velocity6D velocity6D(const JointSpaceVector& v) { return Velocity6D(v[0], v[1], v[2], v[3], v[4], v[5]); }
  static std::size_t indexOf(const std::string& name, const Names& names, std::size_t first, const char* message);

  // Each block names the operations that write it. docs/freshness.md says when a result is up to date.

  // computeFwdKinematicsExceptRoot and computeInverseDynamics write sXp of every node, computeFwdKinematicsOnlyRoot
  // that of the root.
  Robot robot_;

  // Inputs: written by the setters. nb_dof x 1, the root's six first, linear, then angular.
  JointSpaceVector q_;    // root: x, y, z (m) and roll, pitch, yaw (rad) in the world; joints: rad
  JointSpaceVector dq_;   // root: m/s and rad/s in its own axes; joints: rad/s
  JointSpaceVector ddq_;  // root: the derivatives of these components; joints: rad/s^2

  // computeInverseDynamics. nb_dof x 1; root: N and N m in its own axes; joints: N m.
  JointSpaceVector torques_;

  // Input: the external force on each body, in its frame about its origin.
  std::vector<Force> fext_;

  // computeFwdKinematicsExceptRoot. 6 x nb_dof, angular rows first, in the root's frame; the first six columns are
  // constant, the root's motion subspace.
  Eigen::Matrix<float, 6, Eigen::Dynamic> J_;

  // computeGeneralizedMass. nb_dof x nb_dof; zero between branches.
  Eigen::MatrixXf H_;

  // computeFwdKinematicsOnlyRoot, setRootPose (the root's) and setPose. World frame. The last entry is the volatile
  // frame, a pose that the host keeps here and that is never computed.
  std::vector<Transform> poses_;

  // computeFwdKinematicsExceptRoot. Root's frame; iX1_ takes root coordinates to the body's. Entry 0 of both is always
  // the identity.
  std::vector<Transform> posesInRoot_;
  std::array<SpatialTransform, nb_bodies> iX1_;

  // Centre of mass of the robot.
  Position3D com_;        // computeFwdKinematicsOnlyRoot, from the root's pose and comInRoot_. World frame
  Position3D comInRoot_;  // computeFwdKinematicsExceptRoot. Root's frame

  // The pose of the world in itself.
  Transform worldPose_;

  // Total mass of the model, for the whole process (kg). Written by the default constructor and by setBodyInertia.
  inline static float mass_ = 0.0F;
};

}  // namespace lumo
