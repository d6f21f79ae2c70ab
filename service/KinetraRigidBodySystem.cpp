#include <service/KinetraRigidBodySystem.hpp>

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

using kinetra::Inertia;
using kinetra::RotationMatrix;
using simd::Vector3;

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
  const Eigen::Vector3f zero(0.0F, 0.0F, 0.0F);
  iX1_.fill({RotationMatrix(), zero});
  iX1_[0].E = RotationMatrix(Eigen::Matrix3f::Identity());
  J_.leftCols<nb_root_dof>() = kinetra::node<0>(robot_).joint.S.matrix();

  mass_ = 0.0F;
  for (const Inertia& inertia : Robot::inertias) {
    mass_ += inertia.m;
  }
}

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
std::size_t KinetraRigidBodySystem<Robot>::indexOf(const std::string& name, const Names& names, std::size_t first,
                                                   const char* message) {
  const auto found = std::find(names.begin() + static_cast<std::ptrdiff_t>(first), names.end(), name);
  if (found == names.end()) {
    throw std::out_of_range(message + name + "\"");
  }
  return static_cast<std::size_t>(found - names.begin()) - first;
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::setRootPose(const Transform& pose) {
  const OX::Math::Position6D position = OX::Math::position6DFromTransform(pose);
  setRoot(q_, floats(position));
  poses_[0] = OX::Math::transformFromPosition6D(position);
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computeFwdKinematicsExceptRoot() {
  kinetra::internal::depth_first_traversal<kinetra::internal::JcalcPosVisitor, Robot>::run(
      robot_, kinetra::Positions<Robot>(q_));
  Eigen::Vector3f comSum;
  kinetra::fwd_kin_iX1<Robot>::run(robot_, iX1_.data(), J_, comSum);
  for (std::size_t b = 1; b < nb_bodies; ++b) {
    invToOXMath(iX1_[b], posesInRoot_[b]);
  }
  comInRoot_ = toPosition3D(Vector3(comSum) * (1.0F / mass_));
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
  const auto Et = load(kinetra::node<0>(robot_).sXp.E).transpose();
  const Vector3 zero(0.0F, 0.0F, 0.0F);
  for (int j = 0; j < Robot::nb_dof; ++j) {
    (zero + Et.apply(Vector3::load(&P(0, j)))).store(&J(0, j));
  }
}

template <typename Robot>
OX::Math::Position3D KinetraRigidBodySystem<Robot>::computePartialComPositionInRoot(std::size_t body) {
  if (body == 0 || body >= nb_bodies) {
    return com_;
  }
  Eigen::Vector3f comSum;
  kinetra::partial_com<Robot>::run(robot_, iX1_.data(), static_cast<int>(body), comSum);
  return toPosition3D(Vector3(comSum) * (1.0F / (mass_ - Robot::inertias[body].m)));
}

template <typename Robot>
void KinetraRigidBodySystem<Robot>::computeInverseDynamics() {
  kinetra::internal::depth_first_traversal<kinetra::internal::JcalcVisitor, Robot>::run(
      robot_, kinetra::Positions<Robot>(q_), dq_);
  kinetra::rnea<Robot, false>::run(robot_, ddq_, fext_.data(), torques_);
}

template class KinetraRigidBodySystem<kinetra::norvaX3>;

}  // namespace lumo
