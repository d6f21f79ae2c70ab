// Times the operations of a loaded plug-in through the interface, cycling through random states. The row `floor` is the
// sines and cosines of the 18 angles of one state, which every operation that uses new joint angles needs. The option
// --plugin=FILE names another plug-in with the same interface; all other options are those of Google Benchmark.

#include <exception>
#include <iostream>
#include <string>
#include <string_view>

#include <benchmarks/addRow.hpp>
#include <host/Plugin.hpp>
#include <kinetra/spatial/SinCos.hpp>

namespace {

using lumo::RandomState;
using Robot = lumo::RigidBodySystem;
using Jacobian = Eigen::Matrix<float, 3, Eigen::Dynamic>;

std::string plugin = LUMO_PLUGIN;

/// Sets the plug-in from its option, which it removes from the arguments, and tries to load it.
void takePlugin(int& argc, char** argv) {
  constexpr std::string_view option = "--plugin=";
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.substr(0, option.size()) == option) {
      plugin = argument.substr(option.size());
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  lumo::Plugin(plugin).create();
}

/// Adds a row for an operation on an object of its own. Where an operation takes sines, the state's angles are set
/// first, which costs a few nanoseconds, so that no sine is computed twice in a row.
template <typename Operation>
void add(const char* name, Operation operation) {
  lumo::addRow(name, [operation] {
    auto robot = lumo::Plugin(plugin).create();
    lumo::states()[0].set(*robot);
    robot->computeFwdKinematics();
    return [operation, robot = std::move(robot), J = Jacobian(3, 21),
            states = lumo::states().data()](std::size_t i) mutable { operation(*robot, states[i], J); };
  });
}

}  // namespace

int main(int argc, char** argv) {
  try {
    takePlugin(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "bench_passes: " << error.what() << '\n';
    return 1;
  }
  lumo::addRow("floor", [] {
    return [states = lumo::states().data()](std::size_t i) {
      for (const auto& [sine, cosine] : kinetra::Spatial::sinCos<18>(states[i].q.data() + 3)) {
        benchmark::DoNotOptimize(sine);
        benchmark::DoNotOptimize(cosine);
      }
    };
  });
  add("computeFwdKinematics", [](Robot& robot, const RandomState& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematics();
  });
  add("computeFwdKinematicsExceptRoot", [](Robot& robot, const RandomState& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematicsExceptRoot();
  });
  add("computeFwdKinematicsOnlyRoot",
      [](Robot& robot, const RandomState&, Jacobian&) { robot.computeFwdKinematicsOnlyRoot(); });
  add("computeGeneralizedMass", [](Robot& robot, const RandomState&, Jacobian&) { robot.computeGeneralizedMass(); });
  add("kinematicsAndMass", [](Robot& robot, const RandomState& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematics();
    robot.computeGeneralizedMass();
  });
  add("computeInverseDynamics", [](Robot& robot, const RandomState& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeInverseDynamics();
  });
  add("computePartialComJacobian",
      [](Robot& robot, const RandomState&, Jacobian& J) { robot.computePartialComJacobian(3, J); });
  add("computePartialComPositionInRoot", [](Robot& robot, const RandomState&, Jacobian&) {
    benchmark::DoNotOptimize(robot.computePartialComPositionInRoot(3));
  });
  add("controlCycle", [](Robot& robot, const RandomState& x, Jacobian&) {
    x.set(robot);
    robot.computeFwdKinematics();
    robot.computeGeneralizedMass();
    robot.computeInverseDynamics();
    for (std::size_t b = 0; b < 16; ++b) benchmark::DoNotOptimize(OX::Math::Transform(robot.getPose(b)));
    for (std::size_t k = 0; k < 15; ++k) benchmark::DoNotOptimize(robot.getJointAngleTorque(k));
  });
  return lumo::runRows(argc, argv);
}
