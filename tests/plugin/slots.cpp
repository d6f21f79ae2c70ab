#include <cstring>
#include <initializer_list>

#include <gtest/gtest.h>

#include <service/RigidBodySystem.hpp>

namespace {

using S = lumo::RigidBodySystem;
using Size = std::size_t;
using Name = const std::string&;
using Angles = const Eigen::Ref<const Eigen::ArrayXf>&;
using Wrench = const std::vector<float>&;
using Table = std::vector<std::int64_t>;
using OX::Math::Position3D, OX::Math::Transform, OX::Math::Velocity6D, lumo::FloatView;

/// The place of a virtual function in the table of its class. A pointer to the function begins with the offset of this
/// place in bytes, to which some processors add one.
template <class Class, class Function>
Size slot(Function Class::*operation) {
  Size parts[2];
  static_assert(sizeof operation == sizeof parts);
  std::memcpy(parts, &operation, sizeof operation);
  return parts[0] / sizeof(void*);
}

struct Slots : testing::Test {
  Size next = 2;  // the first two belong to the destructor

  template <class Function>
  void expectNext(std::initializer_list<Function S::*> operations) {
    for (const auto operation : operations) {
      EXPECT_EQ(slot<S>(operation), next) << "operation " << next - 2 << " of this list, counted from 0";
      ++next;
    }
  }
};

/// A class in which a function comes after those of the interface.
struct Longer : S {
  virtual void afterTheInterface() = 0;
};

// A host that was compiled earlier calls an operation by its slot, with the types that the operation had then. Append
// new operations to this list.
TEST_F(Slots, AndTypesOfTheOperationsNeverChange) {
  expectNext<std::unique_ptr<S>() const>({&S::clone});
  expectNext<std::string() const>({&S::getName});
  expectNext<Size() const>({&S::getNbJointAngles, &S::getNbBodies, &S::getNbVolatileFrames});
  expectNext<Name() const>({&S::getRootName});
  expectNext<Name(Size) const>({&S::getJointAngleName});
  expectNext<Size(Name) const>({&S::getJointAngleId});
  expectNext<Name(Size) const>({&S::getBodyName});
  expectNext<Size(Name) const>({&S::getBodyId});
  expectNext<void(Size, float, const Position3D&, const Eigen::Matrix3f&)>({&S::setBodyInertia});
  expectNext<float() const>({&S::getMass});
  expectNext<float(Size) const>({&S::getPartialMass, &S::getMass});
  expectNext<void(const Transform&)>({&S::setRootPose});
  expectNext<const Transform&() const>({&S::getRootPose});
  expectNext<void(const Velocity6D&)>({&S::setRootVelocity, &S::setRootAcceleration});
  expectNext<Velocity6D() const>({&S::getRootVelocity, &S::getRootAcceleration});
  expectNext<void(Angles)>({&S::setJointAnglesPos, &S::setJointAnglesVel, &S::setJointAnglesAcc});
  expectNext<void(Size, float)>({&S::setJointAnglePos, &S::setJointAngleVel, &S::setJointAngleAcc});
  expectNext<float(Size) const>({&S::getJointAnglePos, &S::getJointAngleVel, &S::getJointAngleAcc});
  expectNext<FloatView() const>({&S::getJointAnglesPos, &S::getJointAnglesVel, &S::getJointAnglesAcc});
  expectNext<void(Size, Wrench)>({&S::setExternalWrench});
  expectNext<void(Size, Wrench, Transform)>({&S::setExternalWrench});
  expectNext<void()>({&S::computeFwdKinematicsExceptRoot, &S::computeFwdKinematicsOnlyRoot, &S::computeFwdKinematics,
                      &S::computeGeneralizedMass});
  expectNext<void(Size, Eigen::Matrix<float, 3, Eigen::Dynamic>&)>({&S::computePartialComJacobian});
  expectNext<Position3D(Size)>({&S::computePartialComPositionInRoot});
  expectNext<const Transform&(Size) const>({&S::getPoseInRoot, &S::getPose});
  expectNext<void(Size, const Transform&)>({&S::setPose});
  expectNext<const Transform&(Size) const>({&S::getVolatilePose});
  expectNext<void(Size, const Transform&)>({&S::setVolatilePose});
  expectNext<Position3D(Size) const>({&S::getComPosition});
  expectNext<const Position3D&() const>({&S::getComPositionInRoot, &S::getComPosition});
  expectNext<const Eigen::MatrixXf&() const>({&S::getGeneralizedMass});
  expectNext<const Eigen::Matrix<float, 6, Eigen::Dynamic>&() const>({&S::getJacobianInRoot});
  expectNext<Table() const>({&S::getParentsVector, &S::getDofNumbersVector, &S::getDofIndexesVector});
  expectNext<void()>({&S::computeInverseDynamics});
  expectNext<float(Size) const>({&S::getJointAngleTorque});
  expectNext<FloatView() const>({&S::getJointAnglesTorque});
  EXPECT_EQ(slot<Longer>(&Longer::afterTheInterface), next) << "an operation is missing in this list";
}

}  // namespace
