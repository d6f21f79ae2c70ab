#pragma once

#include <random>
#include <string>
#include <vector>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <host/Plugin.hpp>
#include <tests/plugin/Host.hpp>
#include <tests/support/matchers.hpp>
#include <tools/toFloats.hpp>

// What the tests of the loaded plug-in share. They make host values by the operations that the plug-in itself relies
// on and read them as floats, so that they hold for any library that takes the stand-in's place.

namespace lumo::test {

constexpr Size nb_bodies = 16;
constexpr double epsilon = 0x1p-23;

using Object = std::shared_ptr<Host>;

inline Object create(const Plugin& plugin) {
  const std::shared_ptr<RigidBodySystem> object = plugin.create();
  return {object, reinterpret_cast<Host*>(object.get())};
}
/// From a plug-in that is never unloaded, so that the sanitizers can still name its functions when they report.
inline Object create() {
  static const Plugin& plugin = *new Plugin(LUMO_PLUGIN);
  return create(plugin);
}

template <class HostValue>
auto toDoubles(const HostValue& value) {
  return toMatrix(value).template cast<double>().eval();
}
inline Eigen::Affine3d frame(const Transform& pose) {
  Eigen::Affine3d result = Eigen::Affine3d::Identity();
  result.affine() = toDoubles(pose);
  return result;
}
/// From x, y, z and the angles about them; further values are not read.
inline Transform pose(const Eigen::ArrayXf& q) {
  return OX::Math::transformFromPosition6D(OX::Math::Position6D(q[0], q[1], q[2], q[3], q[4], q[5]));
}

/// Every input: generic values between -1 and 1, the same for the same seed.
struct State {
  explicit State(unsigned seed) {
    std::mt19937 bits(seed);
    const auto next = [&bits] { return static_cast<float>(bits()) * 0x1p-31F - 1; };
    for (auto* values : {&q, &dq, &ddq}) std::generate(values->begin(), values->end(), next);
    for (auto& wrench : wrenches) std::generate(wrench.begin(), wrench.end(), next);
  }
  Eigen::ArrayXf q{21}, dq{21}, ddq{21};
  std::vector<std::vector<float>> wrenches{nb_bodies, std::vector<float>(6)};
};

inline void set(Host& system, const State& x) {
  const Eigen::ArrayXf &v = x.dq, &a = x.ddq;
  system.setRootPose(pose(x.q));
  system.setRootVelocity({v[0], v[1], v[2], v[3], v[4], v[5]});
  system.setRootAcceleration({a[0], a[1], a[2], a[3], a[4], a[5]});
  system.setJointAnglesPos(x.q.tail<15>());
  system.setJointAnglesVel(v.tail<15>());
  system.setJointAnglesAcc(a.tail<15>());
  for (Size b = 0; b < nb_bodies; ++b) system.setExternalWrench(b, x.wrenches[b]);
}
inline void compute(Host& system) {
  system.computeFwdKinematics();
  system.computeGeneralizedMass();
  system.computeInverseDynamics();
}
inline Object computed(const State& x) {
  Object system = create();
  set(*system, x);
  compute(*system);
  return system;
}

}  // namespace lumo::test
