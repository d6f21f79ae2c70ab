#include <map>
#include <set>
#include <sstream>

#include <tests/plugin/support.hpp>

// Tests which operation brings which result up to date, as docs/freshness.md says.

namespace {

using namespace lumo::test;

const RandomState before(2), after(3);

const std::map<std::string, void (*)(RigidBodySystem&)> operations = {
    {"setRootPose", [](auto& s) { s.setRootPose(after.rootPose()); }},
    {"setPose(0)", [](auto& s) { s.setPose(0, after.rootPose()); }},
    {"setJoints", [](auto& s) { s.setJointAnglesPos(after.q.tail<15>()); }},
    {"setVelocities", [](auto& s) { s.setJointAnglesVel(after.dq.tail<15>()); }},
    {"setAcceleration", [](auto& s) { s.setRootAcceleration(Velocity6D(1, 2, 3, 4, 5, 6)); }},
    {"setWrench", [](auto& s) { s.setExternalWrench(2, after.wrenches[2]); }},
    {"setInertia", [](auto& s) { s.setBodyInertia(7, 0.7F, s.getComPositionInRoot(), Eigen::Matrix3f::Ones()); }},
    {"ExceptRoot", [](auto& s) { s.computeFwdKinematicsExceptRoot(); }},
    {"OnlyRoot", [](auto& s) { s.computeFwdKinematicsOnlyRoot(); }},
    {"Kinematics", [](auto& s) { s.computeFwdKinematics(); }},
    {"Mass", [](auto& s) { s.computeGeneralizedMass(); }},
    {"Dynamics", [](auto& s) { s.computeInverseDynamics(); }},
};

// Results that change together. The partial Jacobians show the transforms inside the object.
const std::string inRoot = "posesInRoot comInRoot partialComs jacobian partialJacobians ";
const std::string inWorld = "poses com bodyComs ";
const std::string withInertia = "masses partialMasses bodyComs partialComs partialJacobians ";

struct Row {
  const char* set;       // the setter that is called after everything was computed
  const char* run;       // the operation that is called next
  std::string upToDate;  // the answers that are new; all others have the old bits
};
const Row rows[] = {
    {"setRootPose", "", "rootPose"},
    {"setRootPose", "ExceptRoot", "rootPose partialJacobians"},
    {"setRootPose", "OnlyRoot", "rootPose partialJacobians " + inWorld},
    {"setRootPose", "Mass", "rootPose"},
    {"setRootPose", "Dynamics", "rootPose partialJacobians torques"},
    {"setPose(0)", "", "rootPose"},
    {"setPose(0)", "ExceptRoot", "rootPose"},
    {"setPose(0)", "OnlyRoot", ""},
    {"setPose(0)", "Dynamics", "rootPose"},
    {"setJoints", "", "positions"},
    {"setJoints", "ExceptRoot", "positions " + inRoot},
    {"setJoints", "OnlyRoot", "positions"},
    {"setJoints", "Kinematics", "positions " + inRoot + inWorld},
    {"setJoints", "ExceptRoot Mass", "positions massMatrix " + inRoot},
    {"setJoints", "Mass", "positions"},
    {"setJoints", "Dynamics", "positions partialJacobians torques"},
    {"setJoints", "Dynamics Mass OnlyRoot", "positions partialJacobians torques massMatrix"},
    {"setVelocities", "Kinematics Mass", "velocities"},
    {"setVelocities", "Dynamics", "velocities torques"},
    {"setAcceleration", "Kinematics Mass", "rootAcceleration"},
    {"setAcceleration", "Dynamics", "rootAcceleration torques"},
    {"setWrench", "Kinematics Mass", ""},
    {"setWrench", "Dynamics", "torques"},
    {"setInertia", "", withInertia},
    {"setInertia", "ExceptRoot", withInertia + "comInRoot"},
    {"setInertia", "OnlyRoot", withInertia},
    {"setInertia", "Kinematics", withInertia + "comInRoot com"},
    {"setInertia", "Mass", withInertia + "massMatrix"},
    {"setInertia", "Dynamics", withInertia + "torques"},
};

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

TEST(Freshness, EachOperationUpdatesItsResultsAndNoOthers) {
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.set) + ", then " + row.run);
    const lumo::Plugin plugin(LUMO_PLUGIN);  // with the masses that it has when it is loaded
    const Object system = plugin.create();
    set(*system, before);
    compute(*system);
    const Answers old = answers(*system);

    const auto reference = system->clone();
    operations.at(row.set == std::string("setPose(0)") ? "setRootPose" : row.set)(*reference);
    compute(*reference);
    operations.at(row.set)(*system);
    for (const std::string& operation : words(row.run)) operations.at(operation)(*system);

    const Answers expected = answers(*reference), actual = answers(*system);
    const auto expectedKinds = words(row.upToDate);
    const std::set<std::string> upToDate(expectedKinds.begin(), expectedKinds.end());
    std::set<std::string> changed;
    for (Size i = 0; i < actual.size(); ++i) {
      const std::string& what = actual[i].what;
      // The first two change with the root's pose. The third is the same as com.
      if (what == "poses 0" || what == "bodyComs 0" || what == "partialComs 0") continue;
      const std::string kind = words(what).front();
      if (!(actual[i] == old[i])) changed.insert(kind);
      if (upToDate.count(kind) == 0) continue;
      EXPECT_TRUE(near(actual[i].value, expected[i].value, kind == "rootPose" ? 1e-6 : -1)) << what;
    }
    EXPECT_EQ(changed, upToDate) << "the kinds of answers that change";
  }
}

}  // namespace
