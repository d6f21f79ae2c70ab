#include <tools/inspect/State.hpp>

#include <stdexcept>

namespace lumo::inspect {

namespace {

/// Returns the index of a name among the `count` names that nameOf returns.
template <typename NameOf>
std::size_t find(const char* kind, const std::string& name, std::size_t count, NameOf nameOf) {
  std::string names;
  for (std::size_t i = 0; i < count; ++i) {
    if (nameOf(i) == name) return i;
    names += (i == 0 ? "" : ", ") + nameOf(i);
  }
  throw std::runtime_error(std::string("there is no ") + kind + " named \"" + name + "\"; the names are " + names);
}

}  // namespace

State greeting() {
  State pose;
  pose.root = {0.5F, -0.25F, 0.8F, 0.05F, 0.12F, 0.6F};
  pose.positions = {
      {"HeadYaw", 0.45F},   {"HeadPitch", -0.2F},  {"LShoulderPitch", -1.1F}, {"LShoulderRoll", 0.35F},
      {"LElbowYaw", -1.3F}, {"LElbowRoll", -0.9F}, {"LWristYaw", -0.6F},      {"HipRoll", -0.03F},
      {"HipPitch", -0.4F},  {"KneePitch", 0.3F},   {"RShoulderPitch", 1.4F},  {"RShoulderRoll", -0.15F},
      {"RElbowYaw", 1.2F},  {"RElbowRoll", 0.5F},  {"RWristYaw", 0.1F},
  };
  return pose;
}

void setState(const State& state, RigidBodySystem& robot) {
  const auto joint = [&robot](const std::string& name) {
    return find("joint", name, robot.getNbJointAngles(), [&](std::size_t k) { return robot.getJointAngleName(k); });
  };
  const auto body = [&robot](const std::string& name) {
    return find("body", name, robot.getNbBodies(), [&](std::size_t b) { return robot.getBodyName(b); });
  };
  const auto& [x, y, z, roll, pitch, yaw] = state.root;
  robot.setRootPose(OX::Math::transformFromPosition6D(OX::Math::Position6D(x, y, z, roll, pitch, yaw)));
  for (const auto& [name, angle] : state.positions) robot.setJointAnglePos(joint(name), angle);
  for (const auto& [name, velocity] : state.velocities) robot.setJointAngleVel(joint(name), velocity);
  for (const auto& [name, acceleration] : state.accelerations) robot.setJointAngleAcc(joint(name), acceleration);
  for (const auto& [name, wrench] : state.wrenches) robot.setExternalWrench(body(name), wrench);
}

}  // namespace lumo::inspect
