#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <service/RigidBodySystem.hpp>

namespace lumo {

/// A value for every input of a rigid-body system of 16 bodies and 21 coordinates, drawn from a seed: generic, and the
/// same to the bit on every machine, for no library distribution has a part in it. Positions within 3 m and 3 rad (the
/// root's pitch within 1.5), rates within 3 and accelerations within 10 per second, wrenches within 10 N and N m; all
/// of them times `scale`.
struct State {
  explicit State(std::uint64_t seed, float scale = 1.0F) : bits_(seed) {
    for (float& x : q) x = next(3.0F * scale);
    q[4] *= 0.5F;
    for (float& x : dq) x = next(3.0F * scale);
    for (float& x : ddq) x = next(10.0F * scale);
    for (auto& wrench : wrenches) {
      for (float& x : wrench) x = next(10.0F * scale);
    }
  }

  /// Sets the state, but for the wrenches.
  void set(RigidBodySystem& system) const {
    system.setRootPose(OX::Math::transformFromPosition6D({q[0], q[1], q[2], q[3], q[4], q[5]}));
    system.setRootVelocity({dq[0], dq[1], dq[2], dq[3], dq[4], dq[5]});
    system.setRootAcceleration({ddq[0], ddq[1], ddq[2], ddq[3], ddq[4], ddq[5]});
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

 private:
  /// Uniform in [-size, size). The generator is splitmix64.
  float next(float size) {
    bits_ += 0x9e3779b97f4a7c15U;
    std::uint64_t z = bits_;
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
    z ^= z >> 31U;
    return (static_cast<float>(z >> 40U) * 0x1p-23F - 1.0F) * size;
  }

  std::uint64_t bits_;
};

}  // namespace lumo
