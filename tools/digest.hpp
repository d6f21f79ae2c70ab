#pragma once

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <service/RigidBodySystem.hpp>
#include <tools/RandomState.hpp>
#include <tools/toFloats.hpp>

namespace lumo {

/// Sets a random state, computes all results and calls use(name, values, count) for each of them. A name is the kind of
/// the result, or the kind, a colon and what distinguishes this result from the others of its kind.
template <class Use>
void computeResults(RigidBodySystem& robot, const RandomState& state, const Use& use) {
  const auto value = [&use](const std::string& name, const auto& hostValue) {
    const auto floats = toFloats(hostValue);
    use(name, floats.data(), floats.size());
  };
  const auto forEachBody = [](const std::string& kind, const auto& visit) {
    for (std::size_t b = 0; b < 16; ++b) visit(kind + ": body " + std::to_string(b), b);
  };
  state.set(robot);
  state.setWrenches(robot);
  value("root pose", robot.getRootPose());
  robot.computeFwdKinematics();
  forEachBody("poses", [&](const auto& name, std::size_t b) { value(name, robot.getPose(b)); });
  forEachBody("poses in root", [&](const auto& name, std::size_t b) { value(name, robot.getPoseInRoot(b)); });
  value("centres of mass: in the world", robot.getComPosition());
  value("centres of mass: in the root", robot.getComPositionInRoot());
  forEachBody("bodies' centres of mass",
              [&](const auto& name, std::size_t b) { value(name, robot.getComPosition(b)); });
  use("Jacobian", robot.getJacobianInRoot().data(), 6 * 21);
  robot.computeGeneralizedMass();
  use("mass matrix", robot.getGeneralizedMass().data(), 21 * 21);
  forEachBody("partial centres of mass",
              [&](const auto& name, std::size_t b) { value(name, robot.computePartialComPositionInRoot(b)); });
  Eigen::Matrix<float, 3, Eigen::Dynamic> J(3, 21);
  forEachBody("partial com Jacobians", [&](const auto& name, std::size_t b) {
    robot.computePartialComJacobian(b, J);
    use(name, J.data(), 3 * 21);
  });
  robot.computeInverseDynamics();
  use("torques", robot.getJointAnglesTorque().begin(), 15);
}

/// The same for a few results with another inertia of one body, which this sets for the whole process.
template <class Use>
void computeWithOtherInertia(RigidBodySystem& robot, const RandomState& state, std::size_t body, const Use& use) {
  const float* x = state.ddq.data();
  const Eigen::Matrix3f inertia = Eigen::Matrix3f::Map(x + 4) * 0.0001F;
  robot.setBodyInertia(body, 1.0F + 0.05F * x[0], OX::Math::Position3D(0.01F * x[1], 0.01F * x[2], 0.01F * x[3]),
                       inertia);
  state.set(robot);
  robot.computeFwdKinematics();
  robot.computeGeneralizedMass();
  robot.computeInverseDynamics();
  use("with other inertias: centre of mass in the root", toFloats(robot.getComPositionInRoot()).data(), 3);
  use("with other inertias: mass matrix", robot.getGeneralizedMass().data(), 21 * 21);
  use("with other inertias: torques", robot.getJointAnglesTorque().begin(), 15);
  const float masses[] = {robot.getMass(), robot.getPartialMass(1)};
  use("with other inertias: masses", masses, 2);
}

/// Calls step(number, compute) for each random state of a sequence, where compute(robot, use) computes the results of
/// this step. First come `states` states with all results, then a tenth as many with other inertias.
template <class Step>
void forEachState(std::uint64_t states, float scale, const Step& step) {
  for (std::uint64_t i = 0; i < states; ++i) {
    step(i, [x = RandomState(i, scale)](auto& robot, const auto& use) { computeResults(robot, x, use); });
  }
  for (std::uint64_t i = 0; i < states / 10; ++i) {
    step(i, [x = RandomState(i, scale), i](auto& robot, const auto& use) {
      computeWithOtherInertia(robot, x, i % 16, use);
    });
  }
}

inline std::uint32_t bitsOf(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

/// Continues the hash FNV-1a with the bits of floats. The bits of 0 and -0 differ.
inline std::uint64_t hash(std::uint64_t value, const float* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t bits = bitsOf(values[i]);
    for (int byte = 0; byte < 4; ++byte, bits >>= 8U) value = (value ^ (bits & 0xffU)) * 0x100000001b3U;
  }
  return value;
}

/// Returns one line for each kind of result: the kind, and the hash of its values in all states.
inline std::string digest(RigidBodySystem& robot, std::uint64_t states, float scale = 1.0F) {
  std::vector<std::pair<std::string, std::uint64_t>> hashes;  // in the order of the first use
  const auto add = [&hashes](const std::string& name, const float* values, std::size_t count) {
    const std::string kind = name.substr(0, name.find(':'));
    auto of = std::find_if(hashes.begin(), hashes.end(), [&kind](const auto& h) { return h.first == kind; });
    if (of == hashes.end()) of = hashes.insert(of, {kind, 0xcbf29ce484222325U});
    of->second = hash(of->second, values, count);
  };
  forEachState(states, scale, [&](std::uint64_t, const auto& compute) { compute(robot, add); });
  std::string text;
  for (const auto& [kind, value] : hashes) {
    char line[64];
    std::snprintf(line, sizeof line, "%-24s %016" PRIx64 "\n", kind.c_str(), value);
    text += line;
  }
  return text;
}

}  // namespace lumo
