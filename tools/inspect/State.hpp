#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <service/RigidBodySystem.hpp>

namespace lumo::inspect {

/// A state of the robot; everything that is not given is zero. If a name occurs twice, the last value counts.
struct State {
  template <class Value>
  using ByName = std::vector<std::pair<std::string, Value>>;

  std::array<float, 6> root{};          ///< x, y, z (m), roll, pitch, yaw (rad) in the world
  ByName<float> positions;              ///< of the joints (rad)
  ByName<float> velocities;             ///< rad/s
  ByName<float> accelerations;          ///< rad/s^2
  ByName<std::vector<float>> wrenches;  ///< on the bodies, in their frames: force (N), torque (N m)
};

/// The torso leans forward over a bent knee, the left arm is raised and the head is turned to the left.
State greeting();

/// Sets the state on a new object. Throws std::runtime_error if the robot has no joint or body of a given name; the
/// message lists the names.
void setState(const State& state, RigidBodySystem& robot);

}  // namespace lumo::inspect
