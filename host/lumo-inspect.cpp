// lumo-inspect: loads a plug-in, puts its robot into a pose and prints what there is to know about it.

#include <array>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <host/Plugin.hpp>
#include <host/program.hpp>
#include <host/toFloats.hpp>
#include <service/RigidBodySystem.hpp>

namespace {

struct Body {
  std::string name;
  std::string parent;  ///< empty for the root
  float mass;
  std::array<float, 6> pose;  ///< in the world: x, y, z (m), roll, pitch, yaw (rad)
};

struct Joint {
  std::string name;
  float angle;
  float torque;
  float inertia;  ///< its entry on the diagonal of the mass matrix
};

struct Report {
  std::vector<Body> bodies;
  std::vector<Joint> joints;
  std::array<float, 6> rootInertia;  ///< the first six entries of that diagonal
  float mass;
  std::array<float, 3> com;
  std::array<float, 3> comInRoot;
};

/// The torso leans forward over a bent knee, the left arm is raised in greeting, the head turned towards it.
void setPose(lumo::RigidBodySystem& robot) {
  struct Angle {
    const char* joint;
    float radians;
  };
  constexpr Angle angles[] = {
      {"HeadYaw", 0.45F},   {"HeadPitch", -0.2F},  {"LShoulderPitch", -1.1F}, {"LShoulderRoll", 0.35F},
      {"LElbowYaw", -1.3F}, {"LElbowRoll", -0.9F}, {"LWristYaw", -0.6F},      {"HipRoll", -0.03F},
      {"HipPitch", -0.4F},  {"KneePitch", 0.3F},   {"RShoulderPitch", 1.4F},  {"RShoulderRoll", -0.15F},
      {"RElbowYaw", 1.2F},  {"RElbowRoll", 0.5F},  {"RWristYaw", 0.1F},
  };
  robot.setRootPose(OX::Math::transformFromPosition6D({0.5F, -0.25F, 0.8F, 0.05F, 0.12F, 0.6F}));
  for (const Angle& angle : angles) robot.setJointAnglePos(robot.getJointAngleId(angle.joint), angle.radians);
}

/// Nothing moves or accelerates, so the torques are those that hold the pose against gravity.
void compute(lumo::RigidBodySystem& robot) {
  robot.computeFwdKinematics();
  robot.computeGeneralizedMass();
  robot.computeInverseDynamics();
}

Report read(const lumo::RigidBodySystem& robot) {
  const auto parents = robot.getParentsVector();
  const auto inertia = [&H = robot.getGeneralizedMass()](std::size_t coordinate) {
    const auto i = static_cast<Eigen::Index>(coordinate);
    return H(i, i);
  };

  Report report;
  for (std::size_t i = 0; i < robot.getNbBodies(); ++i) {
    const std::string parent = parents[i] < 0 ? "" : robot.getBodyName(static_cast<std::size_t>(parents[i]));
    const auto pose = lumo::toFloats(OX::Math::position6DFromTransform(robot.getPose(i)));
    report.bodies.push_back({robot.getBodyName(i), parent, robot.getMass(i), pose});
  }
  for (std::size_t i = 0; i < robot.getNbJointAngles(); ++i) {
    report.joints.push_back(
        {robot.getJointAngleName(i), robot.getJointAnglePos(i), robot.getJointAngleTorque(i), inertia(i + 6)});
  }
  for (std::size_t i = 0; i < 6; ++i) report.rootInertia[i] = inertia(i);
  report.mass = robot.getMass();
  report.com = lumo::toFloats(robot.getComPosition());
  report.comInRoot = lumo::toFloats(robot.getComPositionInRoot());
  return report;
}

float degrees(float radians) { return radians * 57.2957795F; }

std::string toText(const Report& report) {
  std::string text;
  const auto out = std::back_inserter(text);

  fmt::format_to(out, "Bodies in the world frame\n\n");
  fmt::format_to(out, "{:>2}  {:14}  {:14}  {:>7}  {:>7} {:>7} {:>7}  {:>7} {:>7} {:>7}\n",  //
                 "", "body", "parent", "mass", "x", "y", "z", "roll", "pitch", "yaw");
  fmt::format_to(out, "{:>2}  {:14}  {:14}  {:>7}  {:>7} {:>7} {:>7}  {:>7} {:>7} {:>7}\n",  //
                 "", "", "", "kg", "m", "m", "m", "deg", "deg", "deg");
  for (std::size_t i = 0; i < report.bodies.size(); ++i) {
    const Body& body = report.bodies[i];
    const auto& [x, y, z, roll, pitch, yaw] = body.pose;
    fmt::format_to(out, "{:>2}  {:14}  {:14}  {:7.3f}  {:7.3f} {:7.3f} {:7.3f}  {:7.1f} {:7.1f} {:7.1f}\n",  //
                   i, body.name, body.parent, body.mass, x, y, z, degrees(roll), degrees(pitch), degrees(yaw));
  }

  fmt::format_to(out, "\nJoints: torque against gravity, and the entry on the mass matrix's diagonal\n\n");
  fmt::format_to(out, "{:>2}  {:14}  {:>9} {:>9}  {:>9}  {:>10}\n", "", "joint", "angle", "angle", "torque", "inertia");
  fmt::format_to(out, "{:>2}  {:14}  {:>9} {:>9}  {:>9}  {:>10}\n", "", "", "rad", "deg", "N m", "kg m^2");
  for (std::size_t i = 0; i < report.joints.size(); ++i) {
    const Joint& joint = report.joints[i];
    fmt::format_to(out, "{:>2}  {:14}  {:9.4f} {:9.2f}  {:9.4f}  {:10.7f}\n",  //
                   i, joint.name, joint.angle, degrees(joint.angle), joint.torque, joint.inertia);
  }

  const auto& [mx, my, mz, ix, iy, iz] = report.rootInertia;
  fmt::format_to(out, "\nWhole robot\n\n");
  fmt::format_to(out, "{:35}{:9.4f} kg\n", "mass", report.mass);
  const auto row = [out](const char* what, float x, float y, float z, const char* unit) {
    fmt::format_to(out, "{:35}{:9.4f} {:9.4f} {:9.4f} {}\n", what, x, y, z, unit);
  };
  row("centre of mass in the world, xyz", report.com[0], report.com[1], report.com[2], "m");
  row("centre of mass in the root, xyz", report.comInRoot[0], report.comInRoot[1], report.comInRoot[2], "m");
  row("mass matrix diagonal, root xyz", mx, my, mz, "kg");
  row("  and about the root's axes", ix, iy, iz, "kg m^2");
  return text;
}

void run(int argc, char** argv) {
  CLI::App app{"Puts a plug-in's robot into a pose and prints where its bodies are, its torques and inertia.",
               "lumo-inspect"};
  std::filesystem::path file = lumo::ownPlugin();
  app.add_option("--plugin", file, "The plug-in to load, by default ../lib/lumo/norvaX3.so beside this program")
      ->type_name("FILE");
  if (!lumo::parse(app, argc, argv)) return;

  const lumo::Plugin plugin(file);
  const auto robot = plugin.create();
  setPose(*robot);
  compute(*robot);
  lumo::write(toText(read(*robot)));
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-inspect", [&] { run(argc, argv); });
}
