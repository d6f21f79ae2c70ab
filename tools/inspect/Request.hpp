#pragma once

#include <filesystem>
#include <optional>

#include <tools/inspect/State.hpp>

namespace lumo::inspect {

/// What the user asked for: the state to set, and how to show the results. All numbers are finite. The names of joints
/// and bodies are not checked, because this needs the robot.
struct Request {
  std::filesystem::path plugin;
  State state;
  bool list = false;
  bool json = false;
  bool axes = false;
  std::filesystem::path svg;  ///< the file of the drawing; empty if none is wanted
};

/// Reads the command line. If it only asks for help or the version, prints that and returns nothing. Throws an
/// exception with a message of one line if the input is wrong.
std::optional<Request> readRequest(int argc, char** argv);

}  // namespace lumo::inspect
