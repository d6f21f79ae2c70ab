#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include <kdl/config.h>
#include <kdl/tree.hpp>
#include <kdl/treefksolverpos_recursive.hpp>
#include <kdl/treeidsolver_recursive_newton_euler.hpp>
#include <urdf_parser/urdf_parser.h>

#include <benchmarks/addRow.hpp>
#include <models/norvaX3/norvaX3.hpp>

namespace lumo {

/// The robot in KDL, from a file that urdfdom reads. Trees of KDL have no floating base, so the root is fixed. KDL
/// computes no mass matrix of a tree, only of a chain. Its forward kinematics computes the pose of one body at a time,
/// starting at the root.
class OrocosKdl {
 public:
  static constexpr const char* name = "Orocos KDL";
  static constexpr bool floats = false;
  static std::string version() { return KDL_VERSION_STRING; }

  explicit OrocosKdl(const char* file) : tree_(readTree(file)) {
    for (std::size_t b = 1; b < bodies.size(); ++b) numbers_.push_back(tree_.getSegment(bodies[b])->second.q_nr);
    for (const RandomState& x : states()) inputs_.emplace_back(x, numbers_);
  }

  /// Mass, centre of mass, mass matrix without the root, and joint torques in the plug-in's coordinates.
  std::array<Eigen::MatrixXd, 4> results(const RandomState& x) {
    Inputs inputs(x, numbers_);
    double mass = 0.0;
    Eigen::Vector3d firstMoment = Eigen::Vector3d::Zero();
    Eigen::MatrixXd H(15, 15);
    KDL::WrenchMap wrenches;
    computeFwdKinematics(inputs);
    for (std::size_t b = 0; b < bodies.size(); ++b) {
      const KDL::RigidBodyInertia& inertia = tree_.getSegment(bodies[b])->second.segment.getInertia();
      mass += inertia.getMass();
      firstMoment += inertia.getMass() * Eigen::Vector3d((poses_[b] * inertia.getCOG()).data);
      const std::vector<double> w(x.wrenches[b].begin(), x.wrenches[b].end());
      wrenches[bodies[b]] = {{w[0], w[1], w[2]}, {w[3], w[4], w[5]}};
    }
    computeInverseDynamics(inputs, dynamics_, wrenches);
    const Eigen::VectorXd torques = torques_.data(numbers_);

    // A column of the mass matrix is the torques of a unit acceleration.
    KDL::TreeIdSolver_RNE weightless(tree_, KDL::Vector::Zero());
    SetToZero(inputs.dq);
    for (Eigen::Index k = 0; k < 15; ++k) {
      inputs.ddq.data = Eigen::VectorXd::Unit(15, numbers_[static_cast<std::size_t>(k)]);
      computeInverseDynamics(inputs, weightless, {});
      H.col(k) = torques_.data(numbers_);
    }
    return {Eigen::MatrixXd::Constant(1, 1, mass), firstMoment / mass, H, torques};
  }

  /// Adds a row for each operation of the plug-in that the library has too. This object must live as long as the rows.
  void addRows() {
    addRow(std::string(name) + "/computeFwdKinematicsExceptRoot",
           [this] { return [this](std::size_t i) { computeFwdKinematics(inputs_[i]); }; });
    addRow(std::string(name) + "/computeInverseDynamics",
           [this] { return [this](std::size_t i) { computeInverseDynamics(inputs_[i], dynamics_, {}); }; });
  }

 private:
  inline static const auto& bodies = kinetra::norvaX3::body_names;

  /// A state, with KDL's numbers of the joint angles.
  struct Inputs {
    Inputs(const RandomState& x, const std::vector<unsigned>& numbers) : q(15), dq(15), ddq(15) {
      q.data(numbers) = x.q.tail<15>().cast<double>();
      dq.data(numbers) = x.dq.tail<15>().cast<double>();
      ddq.data(numbers) = x.ddq.tail<15>().cast<double>();
    }
    KDL::JntArray q, dq, ddq;
  };

  static KDL::Frame frame(const urdf::Pose& pose) {
    const urdf::Rotation& turn = pose.rotation;
    return {KDL::Rotation::Quaternion(turn.x, turn.y, turn.z, turn.w),
            {pose.position.x, pose.position.y, pose.position.z}};
  }

  static KDL::Tree readTree(const char* file) {
    const auto model = urdf::parseURDFFile(file);
    if (!model) throw std::runtime_error(std::string("urdfdom cannot read ") + file);
    KDL::Tree tree(model->getRoot()->name);
    addChildren(tree, *model->getRoot());
    return tree;
  }
  /// Adds the links below a link. The floating joint of the root becomes a fixed one.
  static void addChildren(KDL::Tree& tree, const urdf::Link& parent) {
    for (const auto& link : parent.child_links) {
      const urdf::Joint& joint = *link->parent_joint;
      const urdf::Inertial& given = *link->inertial;
      const KDL::Frame placement = frame(joint.parent_to_joint_origin_transform);
      const KDL::Vector axis(joint.axis.x, joint.axis.y, joint.axis.z);
      const KDL::Joint turning(joint.name, placement.p, placement.M * axis, KDL::Joint::RotAxis), fixed(joint.name);
      const KDL::RotationalInertia I(given.ixx, given.iyy, given.izz, given.ixy, given.ixz, given.iyz);
      const KDL::RigidBodyInertia inertia = frame(given.origin) * KDL::RigidBodyInertia(given.mass, {}, I);
      const bool floating = joint.type == urdf::Joint::FLOATING;
      tree.addSegment(KDL::Segment(link->name, floating ? fixed : turning, placement, inertia), parent.name);
      addChildren(tree, *link);
    }
  }

  void computeFwdKinematics(const Inputs& x) {
    for (std::size_t b = 0; b < bodies.size(); ++b) check(kinematics_.JntToCart(x.q, poses_[b], bodies[b]));
  }
  void computeInverseDynamics(const Inputs& x, KDL::TreeIdSolver_RNE& solver, const KDL::WrenchMap& wrenches) {
    check(solver.CartToJnt(x.q, x.dq, x.ddq, wrenches, torques_));
  }
  static void check(int result) {
    if (result < 0) throw std::runtime_error("Orocos KDL reports an error");
  }

  const KDL::Tree tree_;
  std::vector<unsigned> numbers_;  ///< KDL's number of each joint angle
  std::vector<Inputs> inputs_;
  std::vector<KDL::Frame> poses_ = std::vector<KDL::Frame>(bodies.size());
  KDL::JntArray torques_{15};
  KDL::TreeFkSolverPos_recursive kinematics_{tree_};
  KDL::TreeIdSolver_RNE dynamics_{tree_, {0.0, 0.0, -9.81}};
};

}  // namespace lumo
