// lumo-accuracy: compares every kind of result in many random states with reference::Robot, and prints the
// errors beside those that docs/accuracy.md states. It links the model and loads no plug-in.

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <models/norvaX3/norvaX3.hpp>
#include <service/KinetraRigidBodySystem.hpp>
#include <tools/RandomState.hpp>
#include <tools/program.hpp>
#include <tools/reference/Errors.hpp>
#include <tools/reference/Robot.hpp>
#include <tools/toFloats.hpp>

namespace {

using kinetra::norvaX3;
using lumo::toMatrix;
using reference::Errors;
using reference::WithMagnitude;

struct Report {
  Errors axesInRoot{"axes in root", 0.223, 3.2};
  Errors originsInRoot{"origins in root", 0.113, 1.3};
  Errors axes{"axes in world", 0.419, 4.6};
  Errors origins{"origins in world", 0.115, 0.9};
  Errors comInRoot{"centre of mass in root", 0.217, 2.0};
  Errors com{"centre of mass in world", 0.116, 0.9};
  Errors comsOfBodies{"bodies' centres of mass", 0.166, 1.6};
  Errors partialComs{"partial centres of mass", 0.231, 2.1};
  Errors jacobian{"Jacobian", 0.595, 9.0};
  Errors mass{"mass matrix", 0.609, 5.4};
  Errors partialJacobians{"partial com Jacobians", 0.749, 5.8};
  Errors torques{"torques", 0.197, 2.1};

  std::array<const Errors*, 12> all() const {
    return {&axesInRoot,   &originsInRoot, &axes,     &origins, &comInRoot,        &com,
            &comsOfBodies, &partialComs,   &jacobian, &mass,    &partialJacobians, &torques};
  }
};

WithMagnitude divided(const WithMagnitude& sum, double mass) { return {sum.value / mass, sum.magnitude / mass}; }
WithMagnitude rightColumns(const WithMagnitude& all, Eigen::Index count) {
  return {all.value.rightCols(count), all.magnitude.rightCols(count)};
}

/// Adds the errors of the axes and of the origin of one pose.
void addPose(const OX::Math::Transform& pose, const WithMagnitude& expected, Errors& axes, Errors& origins) {
  const auto actual = toMatrix(pose);
  axes.add(actual.leftCols<3>(), {expected.value.leftCols(3), expected.magnitude.leftCols(3)});
  origins.add(actual.col(3), {expected.value.col(3), expected.magnitude.col(3)});
}

/// Computes all results of one state and adds their errors. Of the results that leave out a body, it computes those
/// that leave out `excluded`.
void compare(lumo::RigidBodySystem& robot, const lumo::RandomState& state, std::size_t excluded, Report& report) {
  state.set(robot);
  state.setWrenches(robot);
  robot.computeFwdKinematics();
  robot.computeGeneralizedMass();
  robot.computeInverseDynamics();

  // The root's angles reach the system through the host's math library, whose rounding is not counted as an error.
  reference::Robot::Vector21f q = state.q;
  q.head<6>() = toMatrix(OX::Math::position6DFromTransform(state.rootPose()));
  const reference::Robot expected(q, state.dq, state.ddq, reference::toForces(state.wrenches).data());

  double mass = 0.0;
  WithMagnitude momentInWorld{Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero()};
  for (std::size_t b = 0; b < 16; ++b) {
    const int body = static_cast<int>(b);
    addPose(robot.getPoseInRoot(b), expected.poseInRoot(body), report.axesInRoot, report.originsInRoot);
    addPose(robot.getPose(b), expected.poseInWorld(body), report.axes, report.origins);
    const WithMagnitude com = expected.bodyComInWorld(body);
    report.comsOfBodies.add(toMatrix(robot.getComPosition(b)), com);
    const double m = static_cast<double>(norvaX3::inertias[b].m);
    mass += m;
    momentInWorld.value += m * com.value;
    momentInWorld.magnitude += m * com.magnitude;
  }
  report.com.add(toMatrix(robot.getComPosition()), divided(momentInWorld, mass));
  report.comInRoot.add(toMatrix(robot.getComPositionInRoot()), divided(expected.firstMomentInRoot(), mass));
  report.jacobian.add(robot.getJacobianInRoot().rightCols(15), rightColumns(expected.jacobianInRoot(), 15));
  report.mass.add(robot.getGeneralizedMass(), expected.massMatrix());
  report.torques.add(toMatrix(robot.getJointAnglesTorque()),
                     {expected.torques().value.bottomRows(15), expected.torques().magnitude.bottomRows(15)});

  const int without = static_cast<int>(excluded);
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  robot.computePartialComJacobian(excluded, J);
  report.partialJacobians.add(J, expected.momentumJacobianInWorld(without));
  if (excluded > 0) {
    report.partialComs.add(
        toMatrix(robot.computePartialComPositionInRoot(excluded)),
        divided(expected.firstMomentInRoot(without), mass - static_cast<double>(norvaX3::inertias[excluded].m)));
  }
}

void run(int argc, char** argv) {
  CLI::App app{"Compares every kind of result with a reference in double precision that computes in another way.",
               "lumo-accuracy"};
  std::uint64_t states = 100000;
  std::uint64_t seed = 1;
  bool check = false;
  app.add_option("--states", states, "Number of states")->capture_default_str()->check(CLI::Range(1U, 0xffffffffU));
  app.add_option("--seed", seed, "Seed of the random states")->capture_default_str()->check(CLI::Range(0xffffffffU));
  app.add_flag("--check", check, "Fail if the errors are not near those in docs/accuracy.md");
  if (!lumo::parse(app, argc, argv)) return;

  Report report;
  lumo::KinetraRigidBodySystem<norvaX3> robot;
  for (std::uint64_t i = 0; i < states; ++i) compare(robot, lumo::RandomState((seed << 32U) + i), i % 16, report);

  std::string text =
      fmt::format("{} states from seed {}; errors in float epsilons (2^-23) of the magnitude\n\n", states, seed);
  text += fmt::format("{:26} {:>12} {:>10} {:>10} {:>10}\n", "kind of result", "entries", "rms", "largest", "stated");
  std::string wrong;
  for (const Errors* errors : report.all()) {
    text += errors->row();
    if (!errors->isAsStated()) wrong += fmt::format("{}{}", wrong.empty() ? "" : ", ", errors->kind());
  }
  lumo::write(text);
  if (check && !wrong.empty()) {
    throw std::runtime_error("the errors differ from those in docs/accuracy.md: " + wrong);
  }
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-accuracy", [&] { run(argc, argv); });
}
