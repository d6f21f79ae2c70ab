// bench_peers: times the operations of bench_passes in other dynamics libraries, with the same robot and the same
// states. If the masses or torques of a library differ from those of the plug-in, the program stops.
//
// The program links the model, so it must not load the plug-in.

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

#include <benchmarks/Peer.hpp>
#include <benchmarks/addRow.hpp>
#include <models/norvaX3/norvaX3.hpp>
#include <service/KinetraRigidBodySystem.hpp>
#include <tools/toFloats.hpp>

namespace {

using lumo::RandomState;

/// The state without any motion.
RandomState atRest(RandomState x) {
  x.dq = 0.0F;
  x.ddq = 0.0F;
  return x;
}
/// The state with the root at rest at the world's origin.
RandomState withFixedRoot(RandomState x) {
  x.q.head<6>() = 0.0F;
  x.dq.head<6>() = 0.0F;
  x.ddq.head<6>() = 0.0F;
  return x;
}

/// Compares a peer with the plug-in's implementation. The unit of a difference is a float epsilon times the largest
/// entry of the quantity.
class Agreement {
 public:
  explicit Agreement(lumo::Peer& theirs) : peer_(theirs.name()) {
    lumo::KinetraRigidBodySystem<kinetra::norvaX3> ours;
    compare("mass", Eigen::VectorXd::Constant(1, static_cast<double>(ours.getMass())),
            Eigen::VectorXd::Constant(1, theirs.mass()));
    for (const RandomState& original : lumo::states()) {
      const RandomState x = theirs.floats() ? original : withFixedRoot(original);
      x.set(ours);
      ours.computeFwdKinematics();
      compare("centre of mass", lumo::toMatrix(ours.getComPosition()).cast<double>(), theirs.com(x));
      for (const RandomState& y : {atRest(x), x}) {
        y.set(ours);
        ours.computeInverseDynamics();
        compare(y.dq.isZero() ? "gravity torque" : "torque", lumo::toMatrix(ours.getJointAnglesTorque()).cast<double>(),
                theirs.torques(y));
      }
    }
  }

  double worst() const { return worst_; }

 private:
  static constexpr double epsilon = 0x1p-23;
  static constexpr double tolerance = 16.0;  // the largest difference found is 5

  void compare(const char* what, const Eigen::VectorXd& ours, const Eigen::VectorXd& theirs) {
    const double size = theirs.lpNorm<Eigen::Infinity>();
    for (Eigen::Index i = 0; i < ours.size(); ++i) {
      const double difference = std::abs(ours[i] - theirs[i]) / (epsilon * size);
      if (!(difference <= tolerance)) {
        throw std::runtime_error(
            fmt::format("{} disagrees: its {}, element {}, is {}, ours is {}", peer_, what, i, theirs[i], ours[i]));
      }
      worst_ = std::max(worst_, difference);
    }
  }

  std::string peer_;
  double worst_ = 0.0;
};

int run(int argc, char** argv) {
  const std::unique_ptr<lumo::Peer> peers[] = {lumo::makeMuJoCo(), lumo::makeOrocosKdl()};
  for (const auto& peer : peers) {
    const Agreement agreement(*peer);
    benchmark::AddCustomContext(
        peer->name(), fmt::format("{}, agrees within {:.0f} float epsilons", peer->version(), agreement.worst()));
    peer->addRows();
  }
  return lumo::runRows(argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    fmt::print(stderr, "bench_peers: {}\n", error.what());
    return 1;
  }
}
