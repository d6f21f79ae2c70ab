// lumo-urdf: prints the robot as URDF, in double precision. It links the model and loads no plug-in.

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <fmt/format.h>

#include <models/norvaX3/norvaX3.hpp>
#include <tools/limbs.hpp>
#include <tools/program.hpp>
#include <tools/reference/BodyData.hpp>

namespace {

using Eigen::Matrix3d, Eigen::Vector3d;
using reference::BodyData;

constexpr const char* beginning = R"(<?xml version='1.0'?>
<!-- The robot norvaX3, as lumo-urdf prints it. Units are metres, kilograms and radians.
     The frame of a link is the frame of the body. Every joint turns about the z axis of its frame, without limits.
     The rotations are those nearest to the model's matrices. The largest change of an entry is {:.1e}.
     The bodies are point masses up to rounding, so some moments of inertia about the centre of mass are negative or
     exceed the sum of the other two, which simulators reject. The least that makes them valid was added, with a margin
     of 1e-12 kg m^2, below which MuJoCo saves zero. The largest change of an entry is {:.1e} kg m^2. No change exceeds
     1e-7 of the largest moment about the origin of the link.
     The shapes show the links and, for each body, a ball of water of its mass. They are not for collisions; the element
     mujoco tells that program to show them. -->
<robot name='norvaX3'>
  <mujoco><compiler discardvisual='false'/></mujoco>
)";

/// Three numbers with the digits that are needed to read back the same double. Minus zero becomes zero.
std::string list(const Vector3d& v) { return fmt::format("{} {} {}", v[0] + 0.0, v[1] + 0.0, v[2] + 0.0); }

/// Returns the angles of R = Rz(yaw) Ry(pitch) Rx(roll). The roll is read from Rz(-yaw) R, so that it is exact also
/// near a pitch of 90 degrees, where R alone does not tell roll and yaw apart.
Vector3d rollPitchYaw(const Matrix3d& R) {
  const double yaw = std::atan2(R(1, 0), R(0, 0)), s = std::sin(yaw), c = std::cos(yaw);
  return {std::atan2(s * R(0, 2) - c * R(1, 2), c * R(1, 1) - s * R(0, 1)),
          std::atan2(-R(2, 0), c * R(0, 0) + s * R(1, 0)), yaw};
}

std::string origin(const Vector3d& p, const Matrix3d& R = Matrix3d::Identity()) {
  return fmt::format("<origin xyz='{}' rpy='{}'/>", list(p), list(rollPitchYaw(R)));
}

/// Returns the least, up to a margin, that must be added to an inertia so that no principal moment exceeds the sum of
/// the other two. Along a principal axis, the sum of m x^2 over the points of a body is half of the other two moments
/// minus half of the axis's own. Where it is negative, it is raised to 1e-12 kg m^2. MuJoCo saves smaller moments as
/// zero.
Matrix3d missingInertia(const Matrix3d& inertia) {
  const Eigen::SelfAdjointEigenSolver<Matrix3d> axes(0.5 * inertia.trace() * Matrix3d::Identity() - inertia);
  const Vector3d missing = (1e-12 - axes.eigenvalues().array()).max(0.0);
  const Matrix3d added = axes.eigenvectors() * missing.asDiagonal() * axes.eigenvectors().transpose();
  return added.trace() * Matrix3d::Identity() - added;
}

std::string materials() {
  std::string text;
  for (const auto& [name, colour] : lumo::limbs) {
    const int rgb = std::stoi(colour + 1, nullptr, 16);
    for (const auto& [kind, opacity] : {std::pair("", 1.0), {" ball", 0.3}}) {
      text += fmt::format("  <material name='{}{}'><color rgba='{:.3f} {:.3f} {:.3f} {}'/></material>\n", name, kind,
                          (rgb >> 16) / 255.0, (rgb >> 8) % 256 / 255.0, rgb % 256 / 255.0, opacity);
    }
  }
  return text;
}

std::string inertial(const BodyData& body, const Matrix3d& I) {
  return fmt::format("    <inertial>{}<mass value='{}'/>\n", origin(body.com), body.mass) +
         fmt::format("      <inertia ixx='{}' ixy='{}' ixz='{}' iyy='{}' iyz='{}' izz='{}'/></inertial>\n", I(0, 0),
                     I(0, 1), I(0, 2), I(1, 1), I(1, 2), I(2, 2));
}

std::string visual(const std::string& origin, const std::string& shape, const std::string& material) {
  return fmt::format("    <visual>{}\n      <geometry><{}/></geometry><material name='{}'/></visual>\n", origin, shape,
                     material);
}

/// A cylinder from the origin of a link's frame to a point, or nothing if they coincide.
std::string cylinder(const Vector3d& end, const char* material) {
  if (end.isZero()) return "";
  const Matrix3d R = Eigen::Quaterniond::FromTwoVectors(Vector3d::UnitZ(), end).toRotationMatrix();
  return visual(origin(end / 2, R), fmt::format("cylinder radius='0.01' length='{}'", end.norm()), material);
}

/// A joint with the name of its child.
std::string joint(const std::string& type, const std::string& parent, const std::string& child,
                  const std::string& placement) {
  return fmt::format("  <joint name='{2}' type='{0}'><parent link='{1}'/><child link='{2}'/>{3}</joint>\n", type,
                     parent, child, placement);
}

std::string toUrdf(bool floating) {
  const std::vector<BodyData> bodies = reference::readBodies();
  const std::vector<std::size_t> limbOf = lumo::limbOfBodies(kinetra::norvaX3::parents);
  const std::vector<lumo::Link> lines = lumo::linksOf(kinetra::norvaX3::parents);

  double rotation = 0.0, inertia = 0.0;  // the largest changes
  std::string text = materials();
  if (floating) text += "  <link name='world'/>\n" + joint("floating", "world", bodies[0].name, "");
  for (std::size_t b = 0; b < bodies.size(); ++b) {
    const BodyData& body = bodies[b];
    const Matrix3d R = reference::nearestRotation(body.R), missing = missingInertia(body.inertia);
    rotation = std::max(rotation, (R - body.R).cwiseAbs().maxCoeff());
    inertia = std::max(inertia, missing.cwiseAbs().maxCoeff());
    const char* limb = lumo::limbs[limbOf[b]].name;
    text += fmt::format("  <link name='{}'>\n", body.name) + inertial(body, body.inertia + missing);
    for (const lumo::Link& line : lines) {
      if (line.body == b) text += cylinder(line.end == b ? body.com : bodies[line.end].r, limb);
    }
    text += visual(origin(body.com), fmt::format("sphere radius='{}'", lumo::ballRadius(body.mass)),
                   std::string(limb) + " ball");
    text += "  </link>\n";
    if (body.parent < 0) continue;
    text += joint("continuous", bodies[static_cast<std::size_t>(body.parent)].name, body.name,
                  "\n    " + origin(body.r, R) + "<axis xyz='0 0 1'/>");
  }
  return fmt::format(fmt::runtime(beginning), rotation, inertia) + text + "</robot>\n";
}

void run(int argc, char** argv) {
  CLI::App app{"Prints the robot as URDF, the format in which simulators and other dynamics libraries read a robot.",
               "lumo-urdf"};
  std::string file;
  bool floating = false;
  app.add_option("--out", file, "Write to this file instead of standard output")->type_name("FILE");
  app.add_flag("--floating", floating, "Add a link named world and a floating joint between it and the torso");
  if (!lumo::parse(app, argc, argv)) return;

  const std::string text = toUrdf(floating);
  app.count("--out") > 0 ? lumo::writeFile(file, text) : lumo::write(text);
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-urdf", [&] { run(argc, argv); });
}
