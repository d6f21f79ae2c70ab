#pragma once

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <service/RigidBodySystem.hpp>
#include <tests/support/toDoubles.hpp>

namespace lumo::test {

using Size = std::size_t;
constexpr Size nb_bodies = 16, nb_joint_angles = 15;

/// Calls visit(kind, query) or visit(kind, query, index) for every query of a state, a result or a name. The call
/// std::invoke(query, system) or std::invoke(query, system, index) makes the query.
template <class Visit>
void forEachQuery(const Visit& visit) {
  using S = RigidBodySystem;
  visit("rootPose", &S::getRootPose);
  visit("rootVelocity", &S::getRootVelocity);
  visit("rootAcceleration", &S::getRootAcceleration);
  visit("positions", &S::getJointAnglesPos);
  visit("velocities", &S::getJointAnglesVel);
  visit("accelerations", &S::getJointAnglesAcc);
  visit("masses", [](const S& s) { return s.getMass(); });
  visit("com", [](const S& s) { return s.getComPosition(); });
  visit("comInRoot", &S::getComPositionInRoot);
  visit("jacobian", &S::getJacobianInRoot);
  visit("massMatrix", &S::getGeneralizedMass);
  visit("torques", &S::getJointAnglesTorque);
  visit("volatilePose", [](const S& s) { return s.getVolatilePose(0); });
  visit("worldPose", [](const S& s) { return s.getPose(static_cast<Size>(-1)); });
  visit("rootName", [](const S& s) { return s.getBodyId(s.getRootName()); });
  for (Size k = 0; k < nb_joint_angles; ++k) {
    visit("positions", &S::getJointAnglePos, k);
    visit("velocities", &S::getJointAngleVel, k);
    visit("accelerations", &S::getJointAngleAcc, k);
    visit("torques", &S::getJointAngleTorque, k);
    visit(
        "jointNames", [](const S& s, Size i) { return s.getJointAngleId(s.getJointAngleName(i)); }, k);
  }
  for (Size b = 0; b < nb_bodies; ++b) {
    visit("poses", &S::getPose, b);
    visit("posesInRoot", &S::getPoseInRoot, b);
    visit(
        "bodyComs", [](const S& s, Size i) { return s.getComPosition(i); }, b);
    visit(
        "masses", [](const S& s, Size i) { return s.getMass(i); }, b);
    visit("partialMasses", &S::getPartialMass, b);
    visit(
        "bodyNames", [](const S& s, Size i) { return s.getBodyId(s.getBodyName(i)); }, b);
  }
}

/// A value that an object returns, with the name that failures print: its kind, and the index after a space.
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

/// The answers to all queries. No query changes the object.
inline Answers queries(const RigidBodySystem& o) {
  Answers all;
  forEachQuery([&](std::string what, auto query, auto... index) {
    ((what += " " + std::to_string(index)), ...);
    all.push_back({what, toDoubles(std::invoke(query, o, index...))});
  });
  return all;
}

/// The same and the results that an object computes at each call.
inline Answers answers(RigidBodySystem& o) {
  Answers all = queries(o);
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  for (Size b = 0; b < nb_bodies; ++b) {
    o.computePartialComJacobian(b, J);
    all.push_back({"partialJacobians " + std::to_string(b), toDoubles(J)});
    all.push_back({"partialComs " + std::to_string(b), toDoubles(o.computePartialComPositionInRoot(b))});
  }
  return all;
}

}  // namespace lumo::test
