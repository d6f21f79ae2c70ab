#include <map>
#include <sstream>

#include <tests/plugin/support.hpp>

// Tests which operation brings which result up to date, as docs/freshness.md says.

namespace {

using namespace lumo::test;
using Eigen::MatrixXd;

/// One column for each body except the root.
template <class Read>
MatrixXd each(Read read) {
  MatrixXd all;
  for (Size b = 1; b < nb_bodies; ++b) {
    const MatrixXd value = toDoubles(read(b));
    all.conservativeResize(value.size(), all.cols() + 1);
    all.rightCols(1) = value.reshaped();
  }
  return all;
}

MatrixXd rootColumnsOfPartialJacobian(Host& s) {
  Jacobian J;
  s.computePartialComJacobian(5, J);
  return toDoubles(J.leftCols(3));
}

const std::map<std::string, MatrixXd (*)(Host&)> results = {
    {"rootPose", [](Host& s) { return toDoubles(s.getRootPose()); }},
    {"poses", [](Host& s) { return each([&s](Size b) { return s.getPose(b); }); }},
    {"com", [](Host& s) { return toDoubles(s.getComPosition()); }},
    {"bodyComs", [](Host& s) { return each([&s](Size b) { return s.getComPosition(b); }); }},
    {"posesInRoot", [](Host& s) { return each([&s](Size b) { return s.getPoseInRoot(b); }); }},
    {"comInRoot", [](Host& s) { return toDoubles(s.getComPositionInRoot()); }},
    {"partialComs", [](Host& s) { return each([&s](Size b) { return s.computePartialComPositionInRoot(b); }); }},
    {"jacobian", [](Host& s) { return toDoubles(s.getJacobianInRoot()); }},
    {"massMatrix", [](Host& s) { return toDoubles(s.getGeneralizedMass()); }},
    {"torques", [](Host& s) { return toDoubles(s.getJointAnglesTorque()); }},
    {"masses", [](Host& s) { return each([&s](Size b) { return s.getPartialMass(b); }); }},
    // The configuration inside the object: these columns show its root, and a mass matrix computed from it its joints.
    {"rootOfNodes", rootColumnsOfPartialJacobian},
    {"jointsOfNodes",
     [](Host& s) {
       const auto clone = s.clone();
       clone->computeGeneralizedMass();
       return toDoubles(clone->getGeneralizedMass());
     }},
};

const RandomState before(2), after(3);

const std::map<std::string, void (*)(Host&)> operations = {
    {"setRootPose", [](Host& s) { s.setRootPose(after.rootPose()); }},
    {"setPose(0)", [](Host& s) { s.setPose(0, after.rootPose()); }},
    {"setJoints", [](Host& s) { s.setJointAnglesPos(after.q.tail<15>()); }},
    {"setRates",
     [](Host& s) { s.setJointAnglesVel(after.dq.tail<15>()), s.setRootAcceleration(Velocity6D(1, 2, 3, 4, 5, 6)); }},
    {"setWrench", [](Host& s) { s.setExternalWrench(2, after.wrenches[2]); }},
    {"setInertia", [](Host& s) { s.setBodyInertia(7, 0.7F, s.getComPositionInRoot(), Eigen::Matrix3f::Ones()); }},
    {"ExceptRoot", [](Host& s) { s.computeFwdKinematicsExceptRoot(); }},
    {"OnlyRoot", [](Host& s) { s.computeFwdKinematicsOnlyRoot(); }},
    {"Kinematics", [](Host& s) { s.computeFwdKinematics(); }},
    {"Mass", [](Host& s) { s.computeGeneralizedMass(); }},
    {"Dynamics", [](Host& s) { s.computeInverseDynamics(); }},
};

struct Row {
  const char* set;       // the setter that is called after everything was computed
  const char* run;       // the operation that is called next
  const char* upToDate;  // the results that are new; all others have the old bits
};
const Row rows[] = {
    {"setRootPose", "", "rootPose"},
    {"setRootPose", "ExceptRoot", "rootPose rootOfNodes"},
    {"setRootPose", "OnlyRoot", "rootPose rootOfNodes poses com bodyComs"},
    {"setRootPose", "Mass", "rootPose"},
    {"setRootPose", "Dynamics", "rootPose rootOfNodes torques"},
    {"setPose(0)", "", "rootPose"},
    {"setPose(0)", "ExceptRoot", "rootPose"},
    {"setPose(0)", "OnlyRoot", ""},
    {"setPose(0)", "Dynamics", "rootPose"},
    {"setJoints", "", ""},
    {"setJoints", "ExceptRoot", "jointsOfNodes posesInRoot comInRoot partialComs jacobian"},
    {"setJoints", "OnlyRoot", ""},
    {"setJoints", "Kinematics", "jointsOfNodes posesInRoot comInRoot partialComs jacobian poses com bodyComs"},
    {"setJoints", "ExceptRoot Mass", "jointsOfNodes posesInRoot comInRoot partialComs jacobian massMatrix"},
    {"setJoints", "Mass", ""},
    {"setJoints", "Dynamics", "jointsOfNodes torques"},
    {"setJoints", "Dynamics Mass OnlyRoot", "jointsOfNodes torques massMatrix"},
    {"setRates", "Kinematics Mass", ""},
    {"setRates", "Dynamics", "torques"},
    {"setWrench", "Kinematics Mass", ""},
    {"setWrench", "Dynamics", "torques"},
    {"setInertia", "", "masses bodyComs partialComs jointsOfNodes rootOfNodes"},
    {"setInertia", "ExceptRoot", "masses bodyComs partialComs jointsOfNodes rootOfNodes comInRoot"},
    {"setInertia", "OnlyRoot", "masses bodyComs partialComs jointsOfNodes rootOfNodes"},
    {"setInertia", "Kinematics", "masses bodyComs partialComs jointsOfNodes rootOfNodes comInRoot com"},
    {"setInertia", "Mass", "masses bodyComs partialComs jointsOfNodes rootOfNodes massMatrix"},
    {"setInertia", "Dynamics", "masses bodyComs partialComs jointsOfNodes rootOfNodes torques"},
};

TEST(Freshness, EachOperationUpdatesItsResultsAndNoOthers) {
  for (const Row& row : rows) {
    const lumo::Plugin plugin(LUMO_PLUGIN);  // with the masses that it has when it is loaded
    const Object system = create(plugin);
    set(*system, before);
    compute(*system);
    std::map<std::string, MatrixXd> old;
    for (const auto& [name, read] : results) old[name] = read(*system);

    const auto reference = system->clone();
    operations.at(row.set == std::string("setPose(0)") ? "setRootPose" : row.set)(*reference);
    compute(*reference);
    operations.at(row.set)(*system);
    std::istringstream run(row.run);
    for (std::string operation; run >> operation;) operations.at(operation)(*system);

    for (const auto& [name, read] : results) {
      SCOPED_TRACE(std::string(row.set) + ", then " + row.run + ": " + name);
      if ((std::string(" ") + row.upToDate + " ").find(" " + name + " ") == std::string::npos) {
        EXPECT_TRUE(identical(read(*system), old[name])) << "should be as before";
      } else {
        EXPECT_TRUE(near(read(*system), read(*reference), name == "rootPose" ? 1e-6 : -1)) << "should be up to date";
        EXPECT_FALSE(identical(old[name], read(*reference))) << "should have changed";
      }
    }
  }
}

}  // namespace
