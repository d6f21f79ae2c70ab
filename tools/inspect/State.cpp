#include <tools/inspect/State.hpp>

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <string_view>

namespace lumo::inspect {

namespace {

/// The number of letters that must be inserted and deleted to turn one name into the other. Upper and lower case are
/// the same. A changed letter counts as two, so that the beginning of a long name is more similar to that name than to
/// another short name.
std::size_t editDistance(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  std::vector<std::size_t> row(b.size() + 1);  // row[j]: from the first i letters of a to the first j of b
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (const char c : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t same = diagonal;
      diagonal = row[j + 1];
      row[j + 1] = lower(c) == lower(b[j]) ? same : std::min(row[j], row[j + 1]) + 1;
    }
  }
  return row.back();
}

/// Returns the index of a name among the `count` names that nameOf returns.
template <typename NameOf>
std::size_t find(const char* kind, const std::string& name, std::size_t count, NameOf nameOf) {
  std::size_t nearest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (nameOf(i) == name) return i;
    if (editDistance(name, nameOf(i)) < editDistance(name, nameOf(nearest))) nearest = i;
  }
  // Without this condition a name that has little in common with any other would still have a most similar name.
  const bool similar = editDistance(name, nameOf(nearest)) < nameOf(nearest).size();
  const std::string hint =
      similar ? "the most similar name is " + nameOf(nearest) : "the option --list prints all names";
  throw std::runtime_error(std::string("there is no ") + kind + " named \"" + name + "\"; " + hint);
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
    if (name == robot.getRootName()) throw std::runtime_error(name + " is the root and has no joint angle; use --root");
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
