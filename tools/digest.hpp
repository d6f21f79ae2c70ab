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

/// Sets a random state, computes all results and calls use(kind, body, values, count) for each of them. Body is -1 if
/// the result is not that of one body.
template <class Use>
void computeResults(RigidBodySystem& robot, const RandomState& state, const Use& use) {
  const auto value = [&use](const char* kind, int body, const auto& hostValue) {
    const auto floats = toFloats(hostValue);
    use(kind, body, floats.data(), floats.size());
  };
  const auto ofEachBody = [&](const char* kind, const auto& read) {
    for (int b = 0; b < 16; ++b) value(kind, b, read(static_cast<std::size_t>(b)));
  };
  state.set(robot);
  state.setWrenches(robot);
  value("root pose", -1, robot.getRootPose());
  robot.computeFwdKinematics();
  ofEachBody("poses", [&](std::size_t b) { return robot.getPose(b); });
  ofEachBody("poses in root", [&](std::size_t b) { return robot.getPoseInRoot(b); });
  value("centres of mass", -1, robot.getComPosition());
  value("centres of mass", -1, robot.getComPositionInRoot());
  ofEachBody("bodies' centres of mass", [&](std::size_t b) { return robot.getComPosition(b); });
  use("Jacobian", -1, robot.getJacobianInRoot().data(), 6 * 21);
  robot.computeGeneralizedMass();
  use("mass matrix", -1, robot.getGeneralizedMass().data(), 21 * 21);
  ofEachBody("partial centres of mass", [&](std::size_t b) { return robot.computePartialComPositionInRoot(b); });
  Eigen::Matrix<float, 3, Eigen::Dynamic> J(3, 21);
  for (int b = 0; b < 16; ++b) {
    robot.computePartialComJacobian(static_cast<std::size_t>(b), J);
    use("partial com Jacobians", b, J.data(), 3 * 21);
  }
  robot.computeInverseDynamics();
  use("torques", -1, robot.getJointAnglesTorque().begin(), 15);
}

/// The same for a few results with another inertia of one body, which this sets for the whole process.
template <class Use>
void computeWithOtherInertia(RigidBodySystem& robot, const RandomState& state, std::size_t body, const Use& use) {
  constexpr const char* kind = "with other inertias";
  const float* x = state.ddq.data();
  const Eigen::Matrix3f inertia = Eigen::Matrix3f::Map(x + 4) * 0.0001F;
  robot.setBodyInertia(body, 1.0F + 0.05F * x[0], OX::Math::Position3D(0.01F * x[1], 0.01F * x[2], 0.01F * x[3]),
                       inertia);
  state.set(robot);
  robot.computeFwdKinematics();
  robot.computeGeneralizedMass();
  robot.computeInverseDynamics();
  use(kind, -1, toFloats(robot.getComPositionInRoot()).data(), 3);
  use(kind, -1, robot.getGeneralizedMass().data(), 21 * 21);
  use(kind, -1, robot.getJointAnglesTorque().begin(), 15);
  const float masses[] = {robot.getMass(), robot.getPartialMass(1)};
  use(kind, -1, masses, 2);
}

/// Computes the results of number i of a sequence. The first `states` are those of computeResults; a tenth as many with
/// other inertias follow.
template <class Use>
void computeNumber(std::uint64_t i, RigidBodySystem& robot, std::uint64_t states, float scale, const Use& use) {
  if (i < states) return computeResults(robot, RandomState(i, scale), use);
  computeWithOtherInertia(robot, RandomState(i - states, scale), (i - states) % 16, use);
}
inline std::uint64_t lengthOfSequence(std::uint64_t states) { return states + states / 10; }

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
  const auto add = [&hashes](const std::string& kind, int, const float* values, std::size_t count) {
    auto of = std::find_if(hashes.begin(), hashes.end(), [&kind](const auto& h) { return h.first == kind; });
    if (of == hashes.end()) of = hashes.insert(of, {kind, 0xcbf29ce484222325U});
    of->second = hash(of->second, values, count);
  };
  for (std::uint64_t i = 0; i < lengthOfSequence(states); ++i) computeNumber(i, robot, states, scale, add);
  std::string text;
  for (const auto& [kind, value] : hashes) {
    char line[64];
    std::snprintf(line, sizeof line, "%-24s %016" PRIx64 "\n", kind.c_str(), value);
    text += line;
  }
  return text;
}

}  // namespace lumo
