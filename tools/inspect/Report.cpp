#include <tools/inspect/Report.hpp>

#include <tools/toFloats.hpp>

namespace lumo::inspect {

Report computeReport(RigidBodySystem& robot) {
  robot.computeFwdKinematics();
  robot.computeGeneralizedMass();
  robot.computeInverseDynamics();

  Report report;
  const auto parents = robot.getParentsVector();
  for (std::size_t b = 0; b < robot.getNbBodies(); ++b) {
    const auto [x, y, z, roll, pitch, yaw] = toFloats(OX::Math::position6DFromTransform(robot.getPose(b)));
    report.bodies.push_back({robot.getBodyName(b),
                             static_cast<int>(parents[b]),
                             robot.getMass(b),
                             toMatrix(robot.getPose(b)),
                             {roll, pitch, yaw},
                             toFloats(robot.getComPosition(b))});
  }
  const auto coordinates = robot.getDofIndexesVector();
  for (std::size_t k = 0; k < robot.getNbJointAngles(); ++k) {
    const std::size_t body = k + 1;
    report.joints.push_back({robot.getJointAngleName(k), body, robot.getJointAnglePos(k), robot.getJointAngleVel(k),
                             robot.getJointAngleAcc(k), robot.getJointAngleTorque(k),
                             robot.getJacobianInRoot().col(coordinates[body]).head<3>()});
  }
  report.mass = robot.getMass();
  report.com = toFloats(robot.getComPosition());
  report.comInRoot = toFloats(robot.getComPositionInRoot());
  report.generalizedMass = robot.getGeneralizedMass();
  return report;
}

}  // namespace lumo::inspect
