#include <tools/inspect/toText.hpp>

#include <iterator>

#include <fmt/format.h>

namespace lumo::inspect {

namespace {

constexpr float degrees = 57.2957795F;  // per radian

/// A number of `width` characters: with `digits` digits after the point if it fits, else with an exponent.
std::string number(float value, int width, int digits) {
  std::string text = fmt::format("{:{}.{}f}", value, width, digits);
  if (text.size() > static_cast<std::size_t>(width)) text = fmt::format("{:{}.{}g}", value, width, width > 8 ? 3 : 2);
  return text;
}

std::string parentOf(const Report& report, const Report::Body& body) {
  return body.parent < 0 ? "" : report.bodies[static_cast<std::size_t>(body.parent)].name;
}

}  // namespace

std::string toText(const Report& report) {
  std::string text;
  const auto out = std::back_inserter(text);

  fmt::format_to(out, "Bodies in the world frame\n\n");
  constexpr const char* bodyRow = "{:>2}  {:14}  {:14}  {:>7}  {:>7} {:>7} {:>7}  {:>7} {:>7} {:>7}\n";
  fmt::format_to(out, bodyRow, "", "body", "parent", "mass", "x", "y", "z", "roll", "pitch", "yaw");
  fmt::format_to(out, bodyRow, "", "", "", "kg", "m", "m", "m", "deg", "deg", "deg");
  for (std::size_t i = 0; i < report.bodies.size(); ++i) {
    const Report::Body& body = report.bodies[i];
    const auto& [roll, pitch, yaw] = body.angles;
    fmt::format_to(out, bodyRow, i, body.name, parentOf(report, body), number(body.mass, 7, 3),
                   number(body.pose(0, 3), 7, 3), number(body.pose(1, 3), 7, 3), number(body.pose(2, 3), 7, 3),
                   number(roll * degrees, 7, 1), number(pitch * degrees, 7, 1), number(yaw * degrees, 7, 1));
  }

  const Eigen::VectorXf inertia = report.generalizedMass.diagonal();
  const Eigen::Index root = inertia.size() - static_cast<Eigen::Index>(report.joints.size());
  fmt::format_to(out, "\nJoints, with the torques of inverse dynamics and the diagonal of the mass matrix\n\n");
  constexpr const char* jointRow = "{:>2}  {:14}  {:>9} {:>9}  {:>9} {:>10}  {:>10}  {:>11}\n";
  fmt::format_to(out, jointRow, "", "joint", "angle", "angle", "velocity", "accel.", "torque", "inertia");
  fmt::format_to(out, jointRow, "", "", "rad", "deg", "rad/s", "rad/s^2", "N m", "kg m^2");
  for (std::size_t i = 0; i < report.joints.size(); ++i) {
    const Report::Joint& joint = report.joints[i];
    fmt::format_to(out, jointRow, i, joint.name, number(joint.position, 9, 4), number(joint.position * degrees, 9, 2),
                   number(joint.velocity, 9, 4), number(joint.acceleration, 10, 4), number(joint.torque, 10, 4),
                   number(inertia[root + static_cast<Eigen::Index>(i)], 11, 7));
  }

  fmt::format_to(out, "\nWhole robot\n\n");
  fmt::format_to(out, "{:36}{} kg\n", "mass", number(report.mass, 9, 4));
  const auto row = [out](const char* what, float x, float y, float z, const char* unit) {
    fmt::format_to(out, "{:36}{} {} {} {}\n", what, number(x, 9, 4), number(y, 9, 4), number(z, 9, 4), unit);
  };
  row("centre of mass in the world, x, y, z", report.com[0], report.com[1], report.com[2], "m");
  row("centre of mass in the root, x, y, z", report.comInRoot[0], report.comInRoot[1], report.comInRoot[2], "m");
  row("mass matrix diagonal, root linear", inertia[0], inertia[1], inertia[2], "kg");
  row("mass matrix diagonal, root angular", inertia[3], inertia[4], inertia[5], "kg m^2");
  return text;
}

std::string toList(const Report& report) {
  constexpr const char* row = "{:>4}  {:14}  {:14}  {:>8}  {:>5}  {:14}  {:>10}\n";
  std::string text = fmt::format(row, "body", "", "parent", "mass/kg", "joint", "", "coordinate");
  for (std::size_t i = 0; i < report.bodies.size(); ++i) {
    const Report::Body& body = report.bodies[i];
    const bool root = body.parent < 0;
    text += fmt::format(row, i, body.name, parentOf(report, body), number(body.mass, 8, 5),
                        root ? "" : std::to_string(i - 1), root ? "(free)" : report.joints[i - 1].name,
                        root ? "0-5" : std::to_string(i + 5));
  }
  return text + fmt::format("{:>{}}\n", number(report.mass, 8, 5), 4 + 2 + 14 + 2 + 14 + 2 + 8);
}

}  // namespace lumo::inspect
