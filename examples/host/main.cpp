// A host: loads the plug-in, sets a state, computes, reads results and makes a clone. The build defines LUMO_PLUGIN,
// the path of the plug-in. If the program has an argument, it loads the plug-in with that path instead.

#include <exception>
#include <iostream>
#include <vector>

#include <host/Plugin.hpp>

namespace {

void run(const char* file) {
  const lumo::Plugin plugin(file);
  const lumo::Plugin::Object robot = plugin.create();

  // Look up names once, before the control loop. An unknown name throws std::out_of_range.
  const std::size_t shoulder = robot->getJointAngleId("RShoulderPitch"), elbow = robot->getJointAngleId("RElbowRoll");
  const std::size_t knee = robot->getJointAngleId("KneePitch"), hand = robot->getBodyId("RWristYaw");

  // Set the state: the torso is 0.75 m above the ground, the right elbow is bent and moving, and 10 N press the right
  // hand down. The wrench is in the frame of the hand, whose y axis points almost straight up. All other inputs are
  // zero.
  robot->setRootPose(OX::Math::transformFromPosition6D({0, 0, 0.75F, 0, 0, 0}));
  robot->setJointAnglePos(elbow, 0.5F);
  robot->setJointAngleVel(elbow, -1.0F);
  robot->setExternalWrench(hand, std::vector<float>{0, -10, 0, 0, 0, 0});

  // Compute. Setting a value does not update any of the results that are read below.
  robot->computeFwdKinematics();
  robot->computeGeneralizedMass();
  robot->computeInverseDynamics();

  // Read the results. The references also show later results.
  const OX::Math::Transform& wrist = robot->getPose(hand);
  const OX::Math::Position3D& com = robot->getComPosition();
  std::cout << "wrist at x = " << wrist.m[0][3] << " m, z = " << wrist.m[2][3] << " m\n"
            << "centre of mass at z = " << com.z << " m\n"
            << "shoulder torque " << robot->getJointAngleTorque(shoulder) << " N m\n"
            << "knee inertia " << robot->getGeneralizedMass()(knee + 6, knee + 6) << " kg m^2\n";

  // A clone is a separate object with the same state and results, for example to try a plan while the first object
  // controls the robot.
  const auto plan = robot->clone();
  plan->setJointAnglePos(knee, 0.4F);
  plan->computeFwdKinematics();
  std::cout << "with a bent knee the centre of mass would be at x = " << plan->getComPosition().x << " m, not " << com.x
            << " m\n";
}  // Here the clone and the robot are destroyed, and then the plug-in is unloaded.

}  // namespace

int main(int argc, char** argv) {
  try {
    run(argc > 1 ? argv[1] : LUMO_PLUGIN);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
