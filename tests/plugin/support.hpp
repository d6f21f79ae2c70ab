#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <host/Plugin.hpp>
#include <tests/plugin/answers.hpp>
#include <tests/support/matchers.hpp>
#include <tools/RandomState.hpp>

// Helpers for the tests of the loaded plug-in. They make host values with the operations that the plug-in needs, and
// read them as floats, so that the tests work with any math library.

namespace lumo::test {

constexpr double epsilon = 0x1p-23;

using lumo::FloatView, lumo::RandomState, lumo::RigidBodySystem;
using Object = Plugin::Object;
using Jacobian = Eigen::Matrix<float, 3, Eigen::Dynamic>;
using Table = std::vector<std::int64_t>;
using OX::Math::Position3D, OX::Math::Transform, OX::Math::Velocity6D;

/// Creates an object from a plug-in that is never unloaded, so that the sanitizers can name its functions in reports.
inline Object create() {
  static const Plugin& plugin = *new Plugin(LUMO_PLUGIN);
  return plugin.create();
}

inline Eigen::Affine3d frame(const Transform& pose) {
  Eigen::Affine3d result = Eigen::Affine3d::Identity();
  result.affine() = toDoubles(pose);
  return result;
}

inline void set(RigidBodySystem& system, const RandomState& x) {
  x.set(system);
  x.setWrenches(system);
}
inline void compute(RigidBodySystem& system) {
  system.computeFwdKinematics();
  system.computeGeneralizedMass();
  system.computeInverseDynamics();
}
inline Object computed(const RandomState& x) {
  Object system = create();
  set(*system, x);
  compute(*system);
  return system;
}

/// Compares the bits. A failure names the first answer that differs.
inline testing::AssertionResult identical(const Answers& actual, const Answers& expected) {
  const auto [a, e] = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  if (a == actual.end() && e == expected.end()) return testing::AssertionSuccess();
  if (a == actual.end() || e == expected.end()) return testing::AssertionFailure() << "another number of answers";
  if (a->what != e->what) return testing::AssertionFailure() << a->what << ", expected " << e->what;
  return testing::AssertionFailure() << a->what << ": " << identical(a->value, e->value).message();
}

}  // namespace lumo::test
