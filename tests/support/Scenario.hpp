#pragma once

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <models/norvaX3/norvaX3.hpp>
#include <tests/support/Random.hpp>
#include <tools/RandomState.hpp>
#include <tools/reference/Robot.hpp>

namespace lumo::test {

constexpr float nan_f = std::numeric_limits<float>::quiet_NaN();

using kinetra::forEachNode;

/// Sets everything that the passes over the tree write to NaN, except the joint transforms and velocities.
inline void spoil(kinetra::norvaX3& robot) {
  forEachNode(robot, [](auto& n) {
    const Eigen::Matrix<float, 6, 1> nans = Eigen::Matrix<float, 6, 1>::Constant(nan_f);
    n.F.setConstant(nan_f);
    n.body.vi = n.body.ai = kinetra::Spatial::Motion(nans);
    n.joint.f = kinetra::Spatial::Force(nans);
    n.body.Iic = kinetra::Spatial::Inertia(nan_f, nans.head<3>().eval(), nans);
  });
}

/// Random inertias of the robot, as long as this exists. Many entries of its own inertias are zero.
class RandomInertias {
 public:
  explicit RandomInertias(unsigned seed) {
    Random random(seed);
    for (auto& inertia : kinetra::norvaX3::inertias) inertia = random.inertia(0.3F);
  }
  ~RandomInertias() { kinetra::norvaX3::inertias = own_; }

 private:
  const decltype(kinetra::norvaX3::inertias) own_ = kinetra::norvaX3::inertias;
};

/// A state of motion in the types that the passes need. A failure prints the seed.
struct Scenario {
  using Vector21 = Eigen::Matrix<float, 21, 1>;

  explicit Scenario(unsigned seed) : trace(__FILE__, __LINE__, "seed " + std::to_string(seed)), state(seed) {}

  const testing::ScopedTrace trace;
  const RandomState state;
  const Vector21 q = state.q, dq = state.dq, ddq = state.ddq;
  const std::array<kinetra::Spatial::Force, 16> fext = reference::toForces(state.wrenches);
};

}  // namespace lumo::test
