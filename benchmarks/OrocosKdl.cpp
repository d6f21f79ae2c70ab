#include <stdexcept>

#include <kdl/config.h>
#include <kdl/tree.hpp>
#include <kdl/treefksolverpos_recursive.hpp>
#include <kdl/treeidsolver_recursive_newton_euler.hpp>

#include <benchmarks/Peer.hpp>
#include <benchmarks/addRow.hpp>
#include <kinetra/minus_g.hpp>
#include <tools/reference/BodyData.hpp>

namespace {

KDL::Vector vector(const Eigen::Vector3d& v) { return {v[0], v[1], v[2]}; }
KDL::Rotation rotation(const Eigen::Matrix3d& R) {
  return {R(0, 0), R(0, 1), R(0, 2), R(1, 0), R(1, 1), R(1, 2), R(2, 0), R(2, 1), R(2, 2)};
}

KDL::Tree makeTree(const std::vector<reference::BodyData>& bodies) {
  KDL::Tree tree("world");
  for (const reference::BodyData& body : bodies) {
    const Eigen::Matrix3d& I = body.inertia;
    const KDL::RotationalInertia aboutCom(I(0, 0), I(1, 1), I(2, 2), I(0, 1), I(0, 2), I(1, 2));
    const KDL::RigidBodyInertia inertia(body.mass, vector(body.com), aboutCom);
    const bool isRoot = body.parent < 0;
    const KDL::Vector origin = vector(body.r);
    const KDL::Joint joint = isRoot ? KDL::Joint(body.name, KDL::Joint::Fixed)
                                    : KDL::Joint(body.name, origin, vector(body.R.col(2)), KDL::Joint::RotAxis);
    const KDL::Segment segment(body.name, joint, {rotation(body.R), origin}, inertia);
    const std::string parent = isRoot ? "world" : bodies[static_cast<std::size_t>(body.parent)].name;
    if (!tree.addSegment(segment, parent)) throw std::runtime_error("Orocos KDL rejects the body " + body.name);
  }
  return tree;
}

/// Trees of KDL have no floating base, so the root is fixed. KDL computes no mass matrix of a tree, only of a chain.
/// Its forward kinematics computes the pose of one body at a time, starting at the root.
class OrocosKdl : public lumo::Peer {
 public:
  OrocosKdl() {
    for (const lumo::RandomState& x : lumo::states()) inputs_.emplace_back(x);
  }

  std::string name() const override { return "Orocos KDL"; }
  std::string version() const override { return KDL_VERSION_STRING; }
  bool floats() const override { return false; }
  double mass() const override {
    double sum = 0.0;
    for (const auto& [body, element] : tree_.getSegments()) sum += element.segment.getInertia().getMass();
    return sum;
  }
  Eigen::Vector3d com(const lumo::RandomState& x) override {
    computeFwdKinematics(Inputs(x));
    KDL::Vector sum = KDL::Vector::Zero();
    for (std::size_t b = 0; b < bodies_.size(); ++b) {
      const KDL::RigidBodyInertia& inertia = tree_.getSegment(bodies_[b].name)->second.segment.getInertia();
      sum += inertia.getMass() * (poses_[b] * inertia.getCOG());
    }
    return Eigen::Vector3d::Map(sum.data) / mass();
  }
  Eigen::VectorXd torques(const lumo::RandomState& x) override {
    computeInverseDynamics(Inputs(x));
    return torques_.data;
  }

  void addRows() override {
    lumo::addRow(name() + "/computeFwdKinematicsExceptRoot",
                 [this] { return [this](std::size_t i) { computeFwdKinematics(inputs_[i]); }; });
    lumo::addRow(name() + "/computeInverseDynamics",
                 [this] { return [this](std::size_t i) { computeInverseDynamics(inputs_[i]); }; });
  }

 private:
  struct Inputs {
    explicit Inputs(const lumo::RandomState& x) : q(15), dq(15), ddq(15) {
      q.data = x.q.tail<15>().cast<double>();
      dq.data = x.dq.tail<15>().cast<double>();
      ddq.data = x.ddq.tail<15>().cast<double>();
    }
    KDL::JntArray q, dq, ddq;
  };

  void computeFwdKinematics(const Inputs& x) {
    for (std::size_t b = 0; b < bodies_.size(); ++b) {
      if (kinematics_.JntToCart(x.q, poses_[b], bodies_[b].name) < 0) fail();
    }
  }
  void computeInverseDynamics(const Inputs& x) {
    if (dynamics_.CartToJnt(x.q, x.dq, x.ddq, noWrenches_, torques_) < 0) fail();
  }
  [[noreturn]] static void fail() { throw std::runtime_error("Orocos KDL reports an error"); }

  const std::vector<reference::BodyData> bodies_ = reference::readBodies();
  const KDL::Tree tree_ = makeTree(bodies_);
  KDL::TreeFkSolverPos_recursive kinematics_{tree_};
  KDL::TreeIdSolver_RNE dynamics_{tree_, vector(-kinetra::minus_g.linear().cast<double>())};
  const KDL::WrenchMap noWrenches_;
  std::vector<Inputs> inputs_;
  std::vector<KDL::Frame> poses_ = std::vector<KDL::Frame>(bodies_.size());
  KDL::JntArray torques_{15};
};

}  // namespace

std::unique_ptr<lumo::Peer> lumo::makeOrocosKdl() { return std::make_unique<OrocosKdl>(); }
