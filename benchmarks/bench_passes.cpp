// Times the operations of a loaded plug-in through the interface, cycling through random states. The row `floor` is the
// double sines and cosines of the 18 angles of one state: what every implementation must pay.

#include <math.h>  // sincos

#include <array>
#include <cstring>

#include <benchmarks/rows.hpp>
#include <host/Plugin.hpp>

namespace {

using lumo::State;
using Robot = lumo::RigidBodySystem;
using Jacobian = Eigen::Matrix<float, 3, Eigen::Dynamic>;

/// Adds a row for the 18 angles of a state, given what turns an angle into its sine and cosine.
template <typename SinCos>
void addFloor(const char* name, SinCos sinCos) {
  lumo::addRow(name, [sinCos] {
    return [sinCos, states = lumo::states().data()](std::size_t i) {
      std::array<float, 36> values;
      const float* angle = states[i].q.data() + 3;
      for (std::size_t k = 0; k < 18; ++k) {
        sinCos(static_cast<double>(angle[k]), &values[2 * k]);
      }
      benchmark::DoNotOptimize(values);
      benchmark::ClobberMemory();
    };
  });
}

/// Adds a row for an operation on an object of its own. Where an operation takes sines, the state's angles are set
/// first, which costs a few nanoseconds, so that no sine is computed twice in a row.
template <typename Operation>
void add(const char* name, Operation operation) {
  lumo::addRow(name, [operation] {
    auto robot = lumo::Plugin(LUMO_PLUGIN).create();
    lumo::states()[0].set(*robot);
    robot->computeFwdKinematics();
    return [operation, robot = std::move(robot), J = Jacobian(3, 21),
            states = lumo::states().data()](std::size_t i) mutable { operation(*robot, states[i], J); };
  });
}

}  // namespace

int main(int argc, char** argv) {
  // The honest minimum: the two results are read one by one.
  addFloor("floor", [](double angle, float* values) {
    double result[3];  // not side by side, so that no compiler reads both at once
    ::sincos(angle, &result[0], &result[2]);
    values[0] = static_cast<float>(result[0]);
    values[1] = static_cast<float>(result[2]);
  });
  // The same with both results read by one load, as compilers like to do where they stand side by side (gcc 12 at -O3).
  // Each load then waits until sincos's two stores have left the processor's store queue.
  addFloor("pairedFloor", [](double angle, float* values) {
    using Doubles = double __attribute__((vector_size(16)));
    using Floats = float __attribute__((vector_size(8)));
    Doubles both;
    auto* results = reinterpret_cast<double*>(&both);
    // cppcheck-suppress objectIndex  // a register holds two
    ::sincos(angle, &results[0], &results[1]);
    const auto rounded = __builtin_convertvector(both, Floats);
    std::memcpy(values, &rounded, sizeof rounded);
  });
  add("computeFwdKinematics", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematics();
  });
  add("computeFwdKinematicsExceptRoot", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematicsExceptRoot();
  });
  add("computeFwdKinematicsOnlyRoot",
      [](Robot& robot, const State&, Jacobian&) { robot.computeFwdKinematicsOnlyRoot(); });
  add("computeGeneralizedMass", [](Robot& robot, const State&, Jacobian&) { robot.computeGeneralizedMass(); });
  add("kinematicsAndMass", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeFwdKinematics();
    robot.computeGeneralizedMass();
  });
  add("computeInverseDynamics", [](Robot& robot, const State& x, Jacobian&) {
    robot.setJointAnglesPos(x.q.tail<15>());
    robot.computeInverseDynamics();
  });
  add("computePartialComJacobian",
      [](Robot& robot, const State&, Jacobian& J) { robot.computePartialComJacobian(3, J); });
  add("computePartialComPositionInRoot", [](Robot& robot, const State&, Jacobian&) {
    benchmark::DoNotOptimize(robot.computePartialComPositionInRoot(3));
  });
  add("controlCycle", [](Robot& robot, const State& x, Jacobian&) {
    x.set(robot);
    robot.computeFwdKinematics();
    robot.computeGeneralizedMass();
    robot.computeInverseDynamics();
    for (std::size_t b = 0; b < 16; ++b) benchmark::DoNotOptimize(OX::Math::Transform(robot.getPose(b)));
    for (std::size_t k = 0; k < 15; ++k) benchmark::DoNotOptimize(robot.getJointAngleTorque(k));
  });
  return lumo::runRows(argc, argv);
}
