#include <service/KinetraRigidBodySystem.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include <kinetra/algos/crba.hpp>
#include <kinetra/algos/fwd_kin_iX1.hpp>
#include <kinetra/algos/jcalc.hpp>
#include <kinetra/algos/partial_com.hpp>
#include <kinetra/algos/partial_crba.hpp>
#include <kinetra/algos/rnea.hpp>
#include <models/norvaX3/norvaX3.hpp>
#include <service/fwd_kin_H01_from_iX1.hpp>

namespace lumo {

using kinetra::Spatial::Force;
using kinetra::Spatial::Inertia;
using kinetra::Spatial::RotationMatrix;
using kinetra::Spatial::Vec3;

namespace {

OX::Math::Position3D toPosition3D(Vec3 p) {
  OX::Math::Position3D position;
  p.store(floats(position));
  return position;
}

/// A wrench is force, then torque; a spatial force is couple, then force.
Force toForce(const std::vector<float>& wrench) { return {Vec3::load(wrench.data() + 3), Vec3::load(wrench.data())}; }

template <typename Table>
std::size_t indexOf(const std::string& name, const Table& names, std::size_t first, const char* message) {
  const auto found = std::find(names.begin() + static_cast<std::ptrdiff_t>(first), names.end(), name);
  if (found == names.end()) {
    throw std::out_of_range(message + name + "\"");
  }
  return static_cast<std::size_t>(found - names.begin()) - first;
}

}  // namespace

template <typename Robot>
float KinetraRigidBodySystem<Robot>::mass_ = 0.0F;

template <typename Robot>
KinetraRigidBodySystem<Robot>::KinetraRigidBodySystem()
    : q_(JointSpaceVector::Zero()),
      dq_(JointSpaceVector::Zero()),
      ddq_(JointSpaceVector::Zero()),
      torques_(JointSpaceVector::Zero()),
      fext_(nb_bodies, Force::zero()),
      J_(Eigen::Matrix<float, 6, Eigen::Dynamic>::Zero(6, Robot::nb_dof)),
      H_(Eigen::MatrixXf::Zero(Robot::nb_dof, Robot::nb_dof)),
      poses_(nb_bodies + nb_volatile_frames),
      posesInRoot_(nb_bodies) {
  const Vec3 zero(0.0F, 0.0F, 0.0F);
  iX1_.fill({RotationMatrix(), zero});
  iX1_[0].E = RotationMatrix(Eigen::Matrix3f(Eigen::Matrix3f::Identity()));
  J_.leftCols<nb_root_dof>() = kinetra::node<0>(robot_).joint.S.matrix();

  mass_ = 0.0F;
  for (const Inertia& inertia : Robot::inertias) {
    mass_ += inertia.m;
  }
}

template <typename Robot>
std::unique_ptr<RigidBodySystem> KinetraRigidBodySystem<Robot>::clone() const {
  return std::make_unique<KinetraRigidBodySystem>(*this);
}

// --- Names and sizes -------------------------------------------------------------------------------------------

template <typename Robot>
std::string KinetraRigidBodySystem<Robot>::getName() const {
  return {};
}

template <typename Robot>
std::size_t KinetraRigidBodySystem<Robot>::getNbJointAngles() const {
  return nb_joint_angles;
}

template <typename Robot>
std::size_t KinetraRigidBodySystem<Robot>::getNbBodies() const {
  return nb_bodies;
}

template <typename Robot>
std::size_t KinetraRigidBodySystem<Robot>::getNbVolatileFrames() const {
  return nb_volatile_frames;
}

template <typename Robot>
const std::string& KinetraRigidBodySystem<Robot>::getRootName() const {
  return Robot::joint_names[0];
}

template <typename Robot>
const std::string& KinetraRigidBodySystem<Robot>::getJointAngleName(std::size_t jointAngle) const {
  return Robot::joint_names[jointAngle + 1];
}

template <typename Robot>
std::size_t KinetraRigidBodySystem<Robot>::getJointAngleId(const std::string& name) const {
  return indexOf(name, Robot::joint_names, 1, "no joint angle named \"");
}

template <typename Robot>
const std::string& KinetraRigidBodySystem<Robot>::getBodyName(std::size_t body) const {
  return Robot::body_names[body];
}

template <typename Robot>
std::size_t KinetraRigidBodySystem<Robot>::getBodyId(const std::string& name) const {
  return indexOf(name, Robot::body_names, 0, "no body named \"");
}

// --- Masses ----------------------------------------------------------------------------------------------------

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setBodyInertia(std::size_t body, float mass, const OX::Math::Position3D& com,
                                                   const Eigen::Matrix3f& inertia) {
  Inertia& entry = Robot::inertias[body];
  const float* c = floats(com);
  const float x = c[0];
  const float y = c[1];
  const float z = c[2];
  mass_ = (mass - entry.m) + mass_;
  entry.m = mass;
  entry.h << mass * x, mass * y, mass * z;
  // The parallel-axis rule, from the centre of mass to the body's origin.
  entry.I << inertia(0, 0) + mass * (y * y + z * z),  //
      inertia(1, 0) - mass * x * y,                   //
      inertia(1, 1) + mass * (z * z + x * x),         //
      inertia(2, 0) - mass * x * z,                   //
      inertia(2, 1) - mass * y * z,                   //
      inertia(2, 2) + mass * (x * x + y * y);
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getMass() const {
  return mass_;
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getPartialMass(std::size_t body) const {
  return body < nb_bodies ? mass_ - Robot::inertias[body].m : mass_;
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getMass(std::size_t body) const {
  return Robot::inertias[body].m;
}

// --- State -----------------------------------------------------------------------------------------------------

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setRootPose(const OX::Math::Transform& pose) {
  const OX::Math::Position6D position = OX::Math::position6DFromTransform(pose);
  q_.template head<nb_root_dof>() = Eigen::Map<const Eigen::Matrix<float, nb_root_dof, 1>>(floats(position));
  poses_[0] = OX::Math::transformFromPosition6D(position);
}

template <typename Robot>
const OX::Math::Transform& KinetraRigidBodySystem<Robot>::getRootPose() const {
  return poses_[0];
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setRootVelocity(const OX::Math::Velocity6D& velocity) {
  dq_.template head<nb_root_dof>() = Eigen::Map<const Eigen::Matrix<float, nb_root_dof, 1>>(floats(velocity));
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setRootAcceleration(const OX::Math::Velocity6D& acceleration) {
  ddq_.template head<nb_root_dof>() = Eigen::Map<const Eigen::Matrix<float, nb_root_dof, 1>>(floats(acceleration));
}

template <typename Robot>
OX::Math::Velocity6D KinetraRigidBodySystem<Robot>::getRootVelocity() const {
  return {dq_[0], dq_[1], dq_[2], dq_[3], dq_[4], dq_[5]};
}

template <typename Robot>
OX::Math::Velocity6D KinetraRigidBodySystem<Robot>::getRootAcceleration() const {
  return {ddq_[0], ddq_[1], ddq_[2], ddq_[3], ddq_[4], ddq_[5]};
}

template <typename Robot>
FloatView KinetraRigidBodySystem<Robot>::jointAngles(const JointSpaceVector& v) {
  return {v.data() + nb_root_dof, v.data() + Robot::nb_dof};
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAngles(JointSpaceVector& v,
                                                   const Eigen::Ref<const Eigen::ArrayXf>& values) {
  std::copy_n(values.data(), nb_joint_angles, v.data() + nb_root_dof);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAnglesPos(const Eigen::Ref<const Eigen::ArrayXf>& positions) {
  setJointAngles(q_, positions);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAnglesVel(const Eigen::Ref<const Eigen::ArrayXf>& velocities) {
  setJointAngles(dq_, velocities);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAnglesAcc(const Eigen::Ref<const Eigen::ArrayXf>& accelerations) {
  setJointAngles(ddq_, accelerations);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAnglePos(std::size_t jointAngle, float position) {
  q_.data()[nb_root_dof + jointAngle] = position;
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAngleVel(std::size_t jointAngle, float velocity) {
  dq_.data()[nb_root_dof + jointAngle] = velocity;
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setJointAngleAcc(std::size_t jointAngle, float acceleration) {
  ddq_.data()[nb_root_dof + jointAngle] = acceleration;
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getJointAnglePos(std::size_t jointAngle) const {
  return jointAngles(q_)[jointAngle];
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getJointAngleVel(std::size_t jointAngle) const {
  return jointAngles(dq_)[jointAngle];
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getJointAngleAcc(std::size_t jointAngle) const {
  return jointAngles(ddq_)[jointAngle];
}

template <typename Robot>
FloatView KinetraRigidBodySystem<Robot>::getJointAnglesPos() const {
  return jointAngles(q_);
}

template <typename Robot>
FloatView KinetraRigidBodySystem<Robot>::getJointAnglesVel() const {
  return jointAngles(dq_);
}

template <typename Robot>
FloatView KinetraRigidBodySystem<Robot>::getJointAnglesAcc() const {
  return jointAngles(ddq_);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setExternalWrench(std::size_t body, const std::vector<float>& wrench) {
  fext_[body] = toForce(wrench);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setExternalWrench(std::size_t body, const std::vector<float>& wrench,
                                                      OX::Math::Transform frame) {
  fext_[body] = fromOXMath(frame).apply(toForce(wrench));
}

// --- Computations ----------------------------------------------------------------------------------------------

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computeFwdKinematicsExceptRoot() {
  kinetra::internal::depth_first_traversal<kinetra::internal::JcalcPosVisitor, Robot>::run(robot_, q_);
  Eigen::Vector3f comSum;
  kinetra::fwd_kin_iX1<Robot>::run(robot_, iX1_.data(), J_, comSum);
  for (std::size_t b = 1; b < nb_bodies; ++b) {
    invToOXMath(iX1_[b], posesInRoot_[b]);
  }
  comInRoot_ = toPosition3D(Vec3(comSum) * (1.0F / mass_));
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computeFwdKinematicsOnlyRoot() {
  kinetra::internal::JcalcPosVisitor<Robot, 0>::discover(robot_, q_);
  fwd_kin_H01_from_iX1<Robot>::run(robot_, iX1_.data(), poses_);
  com_ = poses_[0] * comInRoot_;
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computeGeneralizedMass() {
  kinetra::crba<Robot, false>::run(robot_, H_);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computePartialComJacobian(std::size_t body,
                                                              Eigen::Matrix<float, 3, Eigen::Dynamic>& J) {
  if (body >= nb_bodies) {
    return;
  }
  // Not J.resize: it frees the old storage before it asks for the new, and leaves J broken when there is none.
  if (J.cols() != Robot::nb_dof) {
    Eigen::Matrix<float, 3, Eigen::Dynamic>(3, Robot::nb_dof).swap(J);
  }
  Eigen::Matrix<float, Robot::nb_dof, Robot::nb_dof> P;
  P.setZero();
  kinetra::partial_crba<Robot>::run(robot_, P, static_cast<int>(body));
  // Rows 0-2 of P are the linear momentum per unit rate of each coordinate, in the root's axes; E' turns it into the
  // world's. Adding to zero makes every zero positive.
  const auto Et = kinetra::Spatial::Matrix3(kinetra::node<0>(robot_).sXp.E).transpose();
  const Vec3 zero(0.0F, 0.0F, 0.0F);
  for (int j = 0; j < Robot::nb_dof; ++j) {
    (zero + Et.apply(Vec3::load(&P(0, j)))).store(&J(0, j));
  }
}

template <typename Robot>
OX::Math::Position3D KinetraRigidBodySystem<Robot>::computePartialComPositionInRoot(std::size_t body) {
  if (body == 0 || body >= nb_bodies) {
    return com_;
  }
  Eigen::Vector3f comSum;
  kinetra::partial_com<Robot>::run(robot_, iX1_.data(), static_cast<int>(body), comSum);
  return toPosition3D(Vec3(comSum) * (1.0F / (mass_ - Robot::inertias[body].m)));
}

// --- Poses and centres of mass ---------------------------------------------------------------------------------

template <typename Robot>
const OX::Math::Transform& KinetraRigidBodySystem<Robot>::getPoseInRoot(std::size_t body) const {
  return posesInRoot_[body];
}

template <typename Robot>
const OX::Math::Transform& KinetraRigidBodySystem<Robot>::getPose(std::size_t body) const {
  return body == std::numeric_limits<std::size_t>::max() ? worldPose_ : poses_[body];
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setPose(std::size_t body, const OX::Math::Transform& pose) {
  poses_[body] = pose;
}

template <typename Robot>
const OX::Math::Transform& KinetraRigidBodySystem<Robot>::getVolatilePose(std::size_t frame) const {
  return poses_[nb_bodies + frame];
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setVolatilePose(std::size_t frame, const OX::Math::Transform& pose) {
  poses_[nb_bodies + frame] = pose;
}

template <typename Robot>
OX::Math::Position3D KinetraRigidBodySystem<Robot>::getComPosition(std::size_t body) const {
  return poses_[body] * toPosition3D(Robot::inertias[body].com());
}

template <typename Robot>
const OX::Math::Position3D& KinetraRigidBodySystem<Robot>::getComPositionInRoot() const {
  return comInRoot_;
}

template <typename Robot>
const OX::Math::Position3D& KinetraRigidBodySystem<Robot>::getComPosition() const {
  return com_;
}

// --- Matrices and the tree -------------------------------------------------------------------------------------

template <typename Robot>
const Eigen::MatrixXf& KinetraRigidBodySystem<Robot>::getGeneralizedMass() const {
  return H_;
}

template <typename Robot>
const Eigen::Matrix<float, 6, Eigen::Dynamic>& KinetraRigidBodySystem<Robot>::getJacobianInRoot() const {
  return J_;
}

template <typename Robot>
std::vector<std::int64_t> KinetraRigidBodySystem<Robot>::getParentsVector() const {
  return {Robot::parents.begin(), Robot::parents.end()};
}

template <typename Robot>
std::vector<std::int64_t> KinetraRigidBodySystem<Robot>::getDofNumbersVector() const {
  return {Robot::dof_numbers.begin(), Robot::dof_numbers.end()};
}

template <typename Robot>
std::vector<std::int64_t> KinetraRigidBodySystem<Robot>::getDofIndexesVector() const {
  return {Robot::dof_indexes.begin(), Robot::dof_indexes.end()};
}

// --- Inverse dynamics ------------------------------------------------------------------------------------------

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computeInverseDynamics() {
  kinetra::internal::depth_first_traversal<kinetra::internal::JcalcVisitor, Robot>::run(robot_, q_, dq_);
  kinetra::rnea<Robot, false>::run(robot_, ddq_, fext_.data(), torques_);
}

template <typename Robot>
float KinetraRigidBodySystem<Robot>::getJointAngleTorque(std::size_t jointAngle) const {
  return jointAngles(torques_)[jointAngle];
}

template <typename Robot>
FloatView KinetraRigidBodySystem<Robot>::getJointAnglesTorque() const {
  return jointAngles(torques_);
}

template class KinetraRigidBodySystem<kinetra::norvaX3>;

}  // namespace lumo
