// lumo-digest: sets many random states of a plug-in's robot, computes all results and prints one hash for each kind of
// result. Two plug-ins that compute the same bits print the same lines.

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <host/Plugin.hpp>
#include <tools/RandomState.hpp>
#include <tools/program.hpp>
#include <tools/toFloats.hpp>

namespace {

/// The hash FNV-1a of the bits of floats. The bits of 0 and -0 differ.
class Hash {
 public:
  void add(const float* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      std::uint32_t bits;
      std::memcpy(&bits, values + i, sizeof bits);
      for (int byte = 0; byte < 4; ++byte, bits >>= 8U) value_ = (value_ ^ (bits & 0xffU)) * 0x100000001b3U;
    }
  }
  template <class HostValue>
  void add(const HostValue& value) {
    const auto values = lumo::toFloats(value);
    add(values.data(), values.size());
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325U;
};

std::string digest(lumo::RigidBodySystem& robot, std::uint64_t states, float scale) {
  Hash root, poses, posesInRoot, coms, comsOfBodies, jacobian, mass, partialComs, partialJacobians, torques;
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  const std::size_t bodies = robot.getNbBodies();
  for (std::uint64_t seed = 0; seed < states; ++seed) {
    const lumo::RandomState state(seed, scale);
    state.set(robot);
    state.setWrenches(robot);
    root.add(robot.getRootPose());

    robot.computeFwdKinematics();
    coms.add(robot.getComPosition());
    coms.add(robot.getComPositionInRoot());
    jacobian.add(robot.getJacobianInRoot().data(), 6 * 21);
    robot.computeGeneralizedMass();
    mass.add(robot.getGeneralizedMass().data(), 21 * 21);
    for (std::size_t b = 0; b < bodies; ++b) {
      poses.add(robot.getPose(b));
      posesInRoot.add(robot.getPoseInRoot(b));
      comsOfBodies.add(robot.getComPosition(b));
      partialComs.add(robot.computePartialComPositionInRoot(b));
      robot.computePartialComJacobian(b, J);
      partialJacobians.add(J.data(), 3 * 21);
    }
    robot.computeInverseDynamics();
    torques.add(robot.getJointAnglesTorque().begin(), robot.getNbJointAngles());
  }

  // This part comes last, because it replaces the inertias of the bodies for the whole process.
  Hash otherInertias;
  for (std::uint64_t seed = 0; seed < states / 10; ++seed) {
    const lumo::RandomState state(seed, scale);
    const float* x = state.ddq.data();
    const Eigen::Matrix3f inertia = Eigen::Matrix3f::Map(x + 4) * 0.0001F;
    const OX::Math::Position3D com(0.01F * x[1], 0.01F * x[2], 0.01F * x[3]);
    robot.setBodyInertia(seed % bodies, 1.0F + 0.05F * x[0], com, inertia);
    state.set(robot);
    robot.computeFwdKinematics();
    robot.computeGeneralizedMass();
    robot.computeInverseDynamics();
    otherInertias.add(robot.getComPositionInRoot());
    otherInertias.add(robot.getGeneralizedMass().data(), 21 * 21);
    otherInertias.add(robot.getJointAnglesTorque().begin(), robot.getNbJointAngles());
    const float masses[] = {robot.getMass(), robot.getPartialMass(1)};
    otherInertias.add(masses, 2);
  }

  std::string text;
  const auto line = [&text](const char* kind, const Hash& hash) {
    text += fmt::format("{:24} {:016x}\n", kind, hash.value());
  };
  line("root pose", root);
  line("poses", poses);
  line("poses in root", posesInRoot);
  line("centres of mass", coms);
  line("bodies' centres of mass", comsOfBodies);
  line("Jacobian", jacobian);
  line("mass matrix", mass);
  line("partial centres of mass", partialComs);
  line("partial com Jacobians", partialJacobians);
  line("torques", torques);
  line("with other inertias", otherInertias);
  return text;
}

void run(int argc, char** argv) {
  CLI::App app{
      "Prints a hash of each kind of result over many states, so that the bits of two plug-ins can be compared.",
      "lumo-digest"};
  std::filesystem::path file;
  std::uint64_t states = 2000;
  float scale = 1.0F;
  lumo::addPluginOption(app, file);
  app.add_option("--states", states, "Number of states")->capture_default_str();
  app.add_option("--scale", scale, "Factor for all inputs; the value 1 means angles up to 3 rad")
      ->capture_default_str();
  if (!lumo::parse(app, argc, argv)) return;

  const auto robot = lumo::Plugin(file).create();
  lumo::write(digest(*robot, states, scale));
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-digest", [&] { run(argc, argv); });
}
