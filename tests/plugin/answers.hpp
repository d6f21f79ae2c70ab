#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <tests/support/toDoubles.hpp>

namespace lumo::test {

/// One result of an object, with the name that failures print.
struct Answer {
  std::string what;
  Eigen::MatrixXd value;
};
using Answers = std::vector<Answer>;

/// Compares the bits, so that a NaN is equal to itself.
inline bool operator==(const Answer& a, const Answer& b) {
  const auto bytes = static_cast<std::size_t>(a.value.size()) * sizeof(double);
  return a.what == b.what && a.value.size() == b.value.size() &&
         std::memcmp(a.value.data(), b.value.data(), bytes) == 0;
}

/// The results of all queries of an object. No query changes the object.
template <class System>
Answers queries(const System& o) {
  Answers all;
  const auto add = [&all](const std::string& what, const auto& value) { all.push_back({what, toDoubles(value)}); };
  const auto addTable = [&](const char* what, const std::vector<std::int64_t>& table) {
    add(what, Eigen::Matrix<std::int64_t, 16, 1>(table.data()));
  };
  add("name '" + o.getName() + "', root " + o.getRootName() + ", joints, volatile frames",
      Eigen::Vector2i(static_cast<int>(o.getNbJointAngles()), static_cast<int>(o.getNbVolatileFrames())));
  addTable("parents", o.getParentsVector());
  addTable("numbers of coordinates", o.getDofNumbersVector());
  addTable("indexes of coordinates", o.getDofIndexesVector());
  add("root pose", o.getRootPose());
  add("root velocity", o.getRootVelocity());
  add("root acceleration", o.getRootAcceleration());
  add("all joint positions", o.getJointAnglesPos());
  add("all joint velocities", o.getJointAnglesVel());
  add("all joint accelerations", o.getJointAnglesAcc());
  add("all torques", o.getJointAnglesTorque());
  for (std::size_t k = 0; k < o.getNbJointAngles(); ++k) {
    const std::string& name = o.getJointAngleName(k);
    add("number of joint " + name, o.getJointAngleId(name));
    add("position, velocity, acceleration, torque of joint " + name,
        Eigen::Vector4f(o.getJointAnglePos(k), o.getJointAngleVel(k), o.getJointAngleAcc(k), o.getJointAngleTorque(k)));
  }
  for (std::size_t b = 0; b < o.getNbBodies(); ++b) {
    const std::string& name = o.getBodyName(b);
    add("number of body " + name, o.getBodyId(name));
    add("mass and partial mass of " + name, Eigen::Vector2f(o.getMass(b), o.getPartialMass(b)));
    add("pose of " + name, o.getPose(b));
    add("pose in the root of " + name, o.getPoseInRoot(b));
    add("centre of mass of " + name, o.getComPosition(b));
  }
  add("pose of the world", o.getPose(static_cast<std::size_t>(-1)));
  add("volatile pose", o.getVolatilePose(0));
  add("mass", o.getMass());
  add("centre of mass", o.getComPosition());
  add("centre of mass in the root", o.getComPositionInRoot());
  add("Jacobian", o.getJacobianInRoot());
  add("mass matrix", o.getGeneralizedMass());
  return all;
}

/// The results of all queries, and those that an object computes on each call.
template <class System>
Answers answers(System& o) {
  Answers all = queries(o);
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  for (std::size_t b = 0; b < o.getNbBodies(); ++b) {
    o.computePartialComJacobian(b, J);
    all.push_back({"partial Jacobian without " + o.getBodyName(b), toDoubles(J)});
    all.push_back(
        {"partial centre of mass without " + o.getBodyName(b), toDoubles(o.computePartialComPositionInRoot(b))});
  }
  return all;
}

}  // namespace lumo::test
