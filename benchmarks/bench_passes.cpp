// Times the operations of a loaded plug-in through the interface, cycling through random states. The row `floor` is the
// double sines and cosines of the 18 angles of one state: what every implementation must pay.

#include <math.h>  // sincos

#include <array>
#include <vector>

#include <benchmark/benchmark.h>

#include <host/Plugin.hpp>
#include <host/State.hpp>

namespace {

constexpr std::size_t nb_states = 64;
using Jacobian = Eigen::Matrix<float, 3, Eigen::Dynamic>;

const std::vector<lumo::State>& states() {
  static const std::vector<lumo::State> all = [] {
    std::vector<lumo::State> result;
    for (std::size_t i = 0; i < nb_states; ++i) result.emplace_back(i);
    return result;
  }();
  return all;
}

void floor(benchmark::State& timer) {
  std::size_t i = 0;
  std::array<float, 36> values;
  for (auto _ : timer) {
    const float* angle = states()[i++ % nb_states].q.data() + 3;
    for (std::size_t k = 0; k < 18; ++k) {
      double s, c;
      ::sincos(static_cast<double>(angle[k]), &s, &c);
      values[2 * k] = static_cast<float>(s);
      values[2 * k + 1] = static_cast<float>(c);
    }
    benchmark::DoNotOptimize(values);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(floor);

/// Times an operation on an object of its own. Each state's angles are set first, which costs a few nanoseconds, so
/// that no sine is computed twice in a row.
template <typename Operation>
void run(const char* name, Operation operation) {
  benchmark::RegisterBenchmark(name, [operation](benchmark::State& timer) {
    const lumo::Plugin plugin(LUMO_PLUGIN);
    const auto robot = plugin.create();
    states()[0].set(*robot);
    robot->computeFwdKinematics();
    Jacobian J(3, 21);
    std::size_t i = 0;
    for (auto _ : timer) {
      operation(*robot, states()[i++ % nb_states], J);
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  using Robot = lumo::RigidBodySystem;
  using lumo::State;
  run("computeFwdKinematics", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematics();
  });
  run("computeFwdKinematicsExceptRoot", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematicsExceptRoot();
  });
  run("computeFwdKinematicsOnlyRoot",
      [](Robot& robot, const State&, Jacobian&) { robot.computeFwdKinematicsOnlyRoot(); });
  run("computeGeneralizedMass", [](Robot& robot, const State&, Jacobian&) { robot.computeGeneralizedMass(); });
  run("computeInverseDynamics", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeInverseDynamics();
  });
  run("computePartialComJacobian",
      [](Robot& robot, const State&, Jacobian& J) { robot.computePartialComJacobian(3, J); });
  run("computePartialComPositionInRoot", [](Robot& robot, const State&, Jacobian&) {
    benchmark::DoNotOptimize(robot.computePartialComPositionInRoot(3));
  });
  run("controlCycle", [](Robot& robot, const State& x, Jacobian&) {
    x.set(robot);
    robot.computeFwdKinematics();
    robot.computeGeneralizedMass();
    robot.computeInverseDynamics();
    for (std::size_t b = 0; b < 16; ++b) benchmark::DoNotOptimize(OX::Math::Transform(robot.getPose(b)));
    for (std::size_t k = 0; k < 15; ++k) benchmark::DoNotOptimize(robot.getJointAngleTorque(k));
  });
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
