#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <kinetra/spatial/Force.hpp>
#include <service/RigidBodySystem.hpp>
#include <service/conversions.hpp>

namespace lumo {

/// The rigid-body system of a model compiled in. It owns a robot record, the host's inputs and the results; its
/// operations copy into these members, run passes over the record and hand out references. Nothing is cached: a result
/// changes when its compute operation runs and at no other time.
template <typename Robot>
class KinetraRigidBodySystem : public RigidBodySystem {
 public:
  /// All inputs and results zero or the identity. Takes the total mass afresh from the table of inertias.
  KinetraRigidBodySystem();
  KinetraRigidBodySystem(const KinetraRigidBodySystem&) = default;
  KinetraRigidBodySystem& operator=(const KinetraRigidBodySystem&) = delete;

  // The record holds 16-byte vectors. Eigen's macro for this is empty under C++17, so it is written out.
  static void* operator new(std::size_t size) { return Eigen::internal::aligned_malloc(size); }
  static void operator delete(void* memory) noexcept { Eigen::internal::aligned_free(memory); }

  std::unique_ptr<RigidBodySystem> clone() const override;

  std::string getName() const override;
  std::size_t getNbJointAngles() const override;
  std::size_t getNbBodies() const override;
  std::size_t getNbVolatileFrames() const override;
  const std::string& getRootName() const override;
  const std::string& getJointAngleName(std::size_t jointAngle) const override;
  std::size_t getJointAngleId(const std::string& name) const override;
  const std::string& getBodyName(std::size_t body) const override;
  std::size_t getBodyId(const std::string& name) const override;

  void setBodyInertia(std::size_t body, float mass, const OX::Math::Position3D& com,
                      const Eigen::Matrix3f& inertia) override;
  float getMass() const override;
  float getPartialMass(std::size_t body) const override;
  float getMass(std::size_t body) const override;

  void setRootPose(const OX::Math::Transform& pose) override;
  const OX::Math::Transform& getRootPose() const override;
  void setRootVelocity(const OX::Math::Velocity6D& velocity) override;
  void setRootAcceleration(const OX::Math::Velocity6D& acceleration) override;
  OX::Math::Velocity6D getRootVelocity() const override;
  OX::Math::Velocity6D getRootAcceleration() const override;

  void setJointAnglesPos(const Eigen::Ref<const Eigen::ArrayXf>& positions) override;
  void setJointAnglesVel(const Eigen::Ref<const Eigen::ArrayXf>& velocities) override;
  void setJointAnglesAcc(const Eigen::Ref<const Eigen::ArrayXf>& accelerations) override;
  void setJointAnglePos(std::size_t jointAngle, float position) override;
  void setJointAngleVel(std::size_t jointAngle, float velocity) override;
  void setJointAngleAcc(std::size_t jointAngle, float acceleration) override;
  float getJointAnglePos(std::size_t jointAngle) const override;
  float getJointAngleVel(std::size_t jointAngle) const override;
  float getJointAngleAcc(std::size_t jointAngle) const override;
  FloatView getJointAnglesPos() const override;
  FloatView getJointAnglesVel() const override;
  FloatView getJointAnglesAcc() const override;

  void setExternalWrench(std::size_t body, const std::vector<float>& wrench) override;
  void setExternalWrench(std::size_t body, const std::vector<float>& wrench, OX::Math::Transform frame) override;

  void computeFwdKinematicsExceptRoot() override;
  void computeFwdKinematicsOnlyRoot() override;
  void computeGeneralizedMass() override;
  void computePartialComJacobian(std::size_t body, Eigen::Matrix<float, 3, Eigen::Dynamic>& J) override;
  OX::Math::Position3D computePartialComPositionInRoot(std::size_t body) override;

  const OX::Math::Transform& getPoseInRoot(std::size_t body) const override;
  const OX::Math::Transform& getPose(std::size_t body) const override;
  void setPose(std::size_t body, const OX::Math::Transform& pose) override;
  const OX::Math::Transform& getVolatilePose(std::size_t frame) const override;
  void setVolatilePose(std::size_t frame, const OX::Math::Transform& pose) override;
  OX::Math::Position3D getComPosition(std::size_t body) const override;
  const OX::Math::Position3D& getComPositionInRoot() const override;
  const OX::Math::Position3D& getComPosition() const override;

  const Eigen::MatrixXf& getGeneralizedMass() const override;
  const Eigen::Matrix<float, 6, Eigen::Dynamic>& getJacobianInRoot() const override;
  std::vector<std::int64_t> getParentsVector() const override;
  std::vector<std::int64_t> getDofNumbersVector() const override;
  std::vector<std::int64_t> getDofIndexesVector() const override;

  void computeInverseDynamics() override;
  float getJointAngleTorque(std::size_t jointAngle) const override;
  FloatView getJointAnglesTorque() const override;

 private:
  static constexpr int nb_root_dof = 6;
  static constexpr int nb_joint_angles = Robot::nb_dof - nb_root_dof;
  static constexpr std::size_t nb_bodies = Robot::nb_bodies;
  static constexpr std::size_t nb_volatile_frames = 1;

  using JointSpaceVector = Eigen::Matrix<float, Robot::nb_dof, 1>;

  static FloatView jointAngles(const JointSpaceVector& v);
  static void setJointAngles(JointSpaceVector& v, const Eigen::Ref<const Eigen::ArrayXf>& values);

  // The order of the members is part of the design: they are built and copied from first to last.

  // Every node's transforms: written by the forward kinematics (of the root alone, or of all) and by
  // computeInverseDynamics, from q_. The mass matrix works on what they left.
  Robot robot_;

  // Inputs: written by the setters. 21 x 1, the root's six first.
  JointSpaceVector q_;    // m and rad in the world, rad
  JointSpaceVector dq_;   // m/s and rad/s in the root's axes, rad/s
  JointSpaceVector ddq_;  // m/s^2 and rad/s^2 in the root's axes, rad/s^2

  // computeInverseDynamics: stale once an input or an inertia changes. 21 x 1; N and N m in the root's axes, N m.
  JointSpaceVector torques_;

  // Input: the external force on each body, in its frame about its origin.
  std::vector<kinetra::Spatial::Force> fext_;

  // computeFwdKinematicsExceptRoot: stale once a joint angle changes. 6 x 21, angular rows first, in the root's frame;
  // the first six columns are constant, the root's motion subspace.
  Eigen::Matrix<float, 6, Eigen::Dynamic> J_;

  // computeGeneralizedMass: stale once a later pass moves a node or an inertia changes. 21 x 21; zero between branches.
  Eigen::MatrixXf H_;

  // computeFwdKinematicsOnlyRoot, setRootPose (the root) and setPose: stale once a position changes. World frame. The
  // volatile frame stands behind the bodies and is only ever set.
  std::vector<OX::Math::Transform> poses_;

  // computeFwdKinematicsExceptRoot: stale once a joint angle changes. Root's frame; iX1_ takes root coordinates to the
  // body's. Entry 0 of both is the identity for ever.
  std::vector<OX::Math::Transform> posesInRoot_;
  std::array<SpatialTransform, nb_bodies> iX1_;

  // computeFwdKinematicsOnlyRoot, from the root's pose and comInRoot_; computeFwdKinematicsExceptRoot. Stale as the
  // poses are, and once an inertia changes.
  OX::Math::Position3D com_;
  OX::Math::Position3D comInRoot_;

  // The pose of the world in itself.
  OX::Math::Transform worldPose_;

  // Total mass of the model, for the whole process (kg). Written by the default constructor and by setBodyInertia.
  static float mass_;
};

}  // namespace lumo
