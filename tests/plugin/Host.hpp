#pragma once

#include <service/RigidBodySystem.hpp>

namespace lumo::test {

using Size = std::size_t;
using Name = const std::string&;
using Angles = const Eigen::Ref<const Eigen::ArrayXf>&;
using Wrench = const std::vector<float>&;
using Table = std::vector<std::int64_t>;
using Jacobian = Eigen::Matrix<float, 3, Eigen::Dynamic>;
using OX::Math::Position3D, OX::Math::Transform, OX::Math::Velocity6D;

/// Consecutive floats inside an object. The interface calls this type FloatView.
struct View {
  const float* from;
  const float* to;

  std::size_t size() const { return static_cast<std::size_t>(to - from); }
  const float& operator[](std::size_t i) const { return from[i]; }
};
inline Eigen::MatrixXd toDoubles(const View& view) {
  return Eigen::VectorXf::Map(view.from, view.to - view.from).cast<double>();
}

/// The interface as a host could declare it for itself. It must only have the same functions in the same order, so each
/// test checks the order of the functions that it calls.
struct Host {
  virtual ~Host() = default;
  virtual std::unique_ptr<Host> clone() const = 0;
  virtual std::string getName() const = 0;
  virtual Size getNbJointAngles() const = 0, getNbBodies() const = 0, getNbVolatileFrames() const = 0;
  virtual Name getRootName() const = 0, getJointAngleName(Size) const = 0;
  virtual Size getJointAngleId(Name) const = 0;
  virtual Name getBodyName(Size) const = 0;
  virtual Size getBodyId(Name) const = 0;
  virtual void setBodyInertia(Size, float mass, const Position3D& com, const Eigen::Matrix3f&) = 0;
  virtual float getMass() const = 0, getPartialMass(Size) const = 0, getMass(Size) const = 0;
  virtual void setRootPose(const Transform&) = 0;
  virtual const Transform& getRootPose() const = 0;
  virtual void setRootVelocity(const Velocity6D&) = 0, setRootAcceleration(const Velocity6D&) = 0;
  virtual Velocity6D getRootVelocity() const = 0, getRootAcceleration() const = 0;
  virtual void setJointAnglesPos(Angles) = 0, setJointAnglesVel(Angles) = 0, setJointAnglesAcc(Angles) = 0;
  virtual void setJointAnglePos(Size, float) = 0, setJointAngleVel(Size, float) = 0, setJointAngleAcc(Size, float) = 0;
  virtual float getJointAnglePos(Size) const = 0, getJointAngleVel(Size) const = 0, getJointAngleAcc(Size) const = 0;
  virtual View getJointAnglesPos() const = 0, getJointAnglesVel() const = 0, getJointAnglesAcc() const = 0;
  virtual void setExternalWrench(Size, Wrench) = 0, setExternalWrench(Size, Wrench, Transform) = 0;
  virtual void computeFwdKinematicsExceptRoot() = 0, computeFwdKinematicsOnlyRoot() = 0, computeFwdKinematics() = 0;
  virtual void computeGeneralizedMass() = 0, computePartialComJacobian(Size, Jacobian&) = 0;
  virtual Position3D computePartialComPositionInRoot(Size) = 0;
  virtual const Transform &getPoseInRoot(Size) const = 0, &getPose(Size) const = 0;
  virtual void setPose(Size, const Transform&) = 0;
  virtual const Transform& getVolatilePose(Size) const = 0;
  virtual void setVolatilePose(Size, const Transform&) = 0;
  virtual Position3D getComPosition(Size) const = 0;
  virtual const Position3D &getComPositionInRoot() const = 0, &getComPosition() const = 0;
  virtual const Eigen::MatrixXf& getGeneralizedMass() const = 0;
  virtual const Eigen::Matrix<float, 6, Eigen::Dynamic>& getJacobianInRoot() const = 0;
  virtual Table getParentsVector() const = 0, getDofNumbersVector() const = 0, getDofIndexesVector() const = 0;
  virtual void computeInverseDynamics() = 0;
  virtual float getJointAngleTorque(Size) const = 0;
  virtual View getJointAnglesTorque() const = 0;
};

}  // namespace lumo::test
