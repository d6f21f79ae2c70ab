#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <service/RigidBodySystem.hpp>
#include <tools/Uniform.hpp>

namespace lumo {

/// A random value for every input of a rigid-body system of 16 bodies and 21 coordinates. The same seed gives the same
/// bits on every machine. Positions are within 3 m and 3 rad (the root's pitch within 1.5 rad), velocities within 3 m/s
/// and 3 rad/s, accelerations within 10 m/s^2 and 10 rad/s^2, wrenches within 10 N and 10 N m, all multiplied by
/// `scale`.
struct RandomState {
  explicit RandomState(std::uint64_t seed, float scale = 1.0F) {
    Uniform random(seed);
    for (float& x : q) x = random(3.0F * scale);
    q[4] *= 0.5F;
    for (float& x : dq) x = random(3.0F * scale);
    for (float& x : ddq) x = random(10.0F * scale);
    for (auto& wrench : wrenches) {
      for (float& x : wrench) x = random(10.0F * scale);
    }
  }

  OX::Math::Transform rootPose() const {
    return OX::Math::transformFromPosition6D(OX::Math::Position6D(q[0], q[1], q[2], q[3], q[4], q[5]));
  }
  /// Sets all inputs except the wrenches.
  void set(RigidBodySystem& system) const {
    system.setRootPose(rootPose());
    system.setRootVelocity(OX::Math::Velocity6D(dq[0], dq[1], dq[2], dq[3], dq[4], dq[5]));
    system.setRootAcceleration(OX::Math::Velocity6D(ddq[0], ddq[1], ddq[2], ddq[3], ddq[4], ddq[5]));
    system.setJointAnglesPos(q.tail<15>());
    system.setJointAnglesVel(dq.tail<15>());
    system.setJointAnglesAcc(ddq.tail<15>());
  }
  void setWrenches(RigidBodySystem& system) const {
    for (std::size_t b = 0; b < wrenches.size(); ++b) system.setExternalWrench(b, wrenches[b]);
  }

  using Coordinates = Eigen::Array<float, 21, 1>;
  Coordinates q, dq, ddq;
  std::vector<std::vector<float>> wrenches = std::vector<std::vector<float>>(16, std::vector<float>(6));
};

}  // namespace lumo
