#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumo::inspect {

/// What the user asked of the inspector: the state to set, and how to show it. Its numbers are finite; whether there
/// are joints and bodies of its names only the robot can tell.
struct Request {
  struct JointValue {
    std::string joint;
    float value;
  };
  struct BodyWrench {
    std::string body;
    std::vector<float> wrench;  ///< force (N), torque (N m)
  };

  std::filesystem::path plugin;
  bool greeting = false;        ///< start from the greeting pose, else from zero
  std::array<float, 6> root{};  ///< x, y, z (m), roll, pitch, yaw (rad)
  bool rootGiven = false;
  std::vector<JointValue> positions;      ///< rad
  std::vector<JointValue> velocities;     ///< rad/s
  std::vector<JointValue> accelerations;  ///< rad/s^2
  std::vector<BodyWrench> wrenches;

  bool list = false;
  bool json = false;
  bool axes = false;
  std::filesystem::path svg;  ///< empty for none
};

/// Reads the command line; nothing when it only asked for help or the version, which are then printed. Throws what can
/// be said in one line.
std::optional<Request> readRequest(int argc, char** argv);

}  // namespace lumo::inspect
