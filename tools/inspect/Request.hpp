#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumo::inspect {

/// What the user asked for: the state to set, and how to show the results. All numbers are finite. The names of joints
/// and bodies are not checked, because this needs the robot.
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
  bool greeting = false;        ///< whether to start from the greeting pose; if not, from zero
  std::array<float, 6> root{};  ///< x, y, z (m), roll, pitch, yaw (rad)
  bool rootGiven = false;
  std::vector<JointValue> positions;      ///< rad
  std::vector<JointValue> velocities;     ///< rad/s
  std::vector<JointValue> accelerations;  ///< rad/s^2
  std::vector<BodyWrench> wrenches;

  bool list = false;
  bool json = false;
  bool axes = false;
  std::filesystem::path svg;  ///< the file of the drawing; empty if none is wanted
};

/// Reads the command line. If it only asks for help or the version, prints that and returns nothing. Throws an
/// exception with a message of one line if the input is wrong.
std::optional<Request> readRequest(int argc, char** argv);

}  // namespace lumo::inspect
