// bench_peers: times the operations of bench_passes in other dynamics libraries, with the robot that lumo-urdf prints
// and the same states. Before that, it compares their results with those of the plug-in's implementation, and it stops
// if they disagree. With the only option --check it just compares.
//
// The program links the model, so it must not load the plug-in.

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include <benchmarks/MuJoCo.hpp>
#include <benchmarks/OrocosKdl.hpp>
#include <benchmarks/addRow.hpp>
#include <models/norvaX3/norvaX3.hpp>
#include <service/KinetraRigidBodySystem.hpp>
#include <tools/program.hpp>
#include <tools/toFloats.hpp>

namespace {

/// Compares a library with the plug-in's implementation in all states. Returns the largest difference in float epsilons
/// of the largest entry of the quantity. Throws std::runtime_error if it is more than 16.
template <class Peer>
double compare(Peer& peer) {
  double worst = 0.0;
  lumo::KinetraRigidBodySystem<kinetra::norvaX3> system;
  for (lumo::RandomState x : lumo::states()) {
    if (!Peer::floats) x.q.head<6>() = x.dq.head<6>() = x.ddq.head<6>() = 0.0F;  // the root is at the world's origin
    x.set(system);
    x.setWrenches(system);
    system.computeFwdKinematics();
    system.computeGeneralizedMass();
    system.computeInverseDynamics();
    const int rows = Peer::floats ? 21 : 15;
    const Eigen::MatrixXf ours[] = {
        Eigen::MatrixXf::Constant(1, 1, system.getMass()), lumo::toMatrix(system.getComPosition()),
        system.getGeneralizedMass().bottomRightCorner(rows, rows), lumo::toMatrix(system.getJointAnglesTorque())};
    const char* names[] = {"mass", "centre of mass", "mass matrix", "vector of torques"};
    const auto theirs = peer.results(x);
    for (std::size_t i = 0; i < 4; ++i) {
      const double unit = 0x1p-23 * theirs[i].cwiseAbs().maxCoeff();
      const Eigen::ArrayXXd differences = (ours[i].cast<double>() - theirs[i]).array().abs() / unit;
      worst = std::max(worst, differences.maxCoeff());
      if ((differences <= 16.0).all()) continue;
      throw std::runtime_error(
          fmt::format("the {} of {} differs by {:.0f} float epsilons", names[i], Peer::name, worst));
    }
  }
  return worst;
}

template <class Peer>
void addPeer() {
  static Peer peer(LUMO_URDF);
  const std::string found = fmt::format("{}, agrees within {:.0f} float epsilons", Peer::version(), compare(peer));
  fmt::print(stderr, "{} {}\n", Peer::name, found);
  benchmark::AddCustomContext(Peer::name, found);
  peer.addRows();
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("bench_peers", [&] {
    addPeer<lumo::MuJoCo>();
    addPeer<lumo::OrocosKdl>();
    const bool checkOnly = argc == 2 && std::string_view(argv[1]) == "--check";
    if (!checkOnly && lumo::runRows(argc, argv) != 0) throw std::runtime_error("wrong options");
  });
}
