#include <tests/plugin/support.hpp>

// Relations between the results of different passes: each test computes a result from other results.

namespace {

using namespace lumo::test;
using Eigen::MatrixXd, Eigen::Vector3d, Eigen::VectorXd;

struct Identities : testing::TestWithParam<unsigned> {
  const RandomState x{GetParam(), 0.3F};
  const Object system = computed(x);
  const Eigen::Affine3d root = frame(system->getRootPose());
  const MatrixXd H = toDoubles(system->getGeneralizedMass()), J = toDoubles(system->getJacobianInRoot());
  const double mass = static_cast<double>(system->getMass());

  /// Mass times centre of mass in the world, of one body and of all bodies.
  Vector3d moment(Size b) const {
    return static_cast<double>(system->getMass(b)) * toDoubles(system->getComPosition(b));
  }
  Vector3d moment() const {
    Vector3d sum = Vector3d::Zero();
    for (Size b = 0; b < nb_bodies; ++b) sum += moment(b);
    return sum;
  }
  double partialMass(Size b) const { return static_cast<double>(system->getPartialMass(b)); }
  MatrixXd partialJacobian(Size b) const {
    Jacobian partial;
    system->computePartialComJacobian(b, partial);
    return toDoubles(partial);
  }
};
INSTANTIATE_TEST_SUITE_P(Seed, Identities, testing::Range(100U, 104U));

TEST_P(Identities, CentreOfMassMovesWithItsBody) {
  const auto atRest = create();  // all its poses are the identity
  for (Size b = 0; b < nb_bodies; ++b) {
    const Vector3d expected = frame(system->getPose(b)) * Vector3d(toDoubles(atRest->getComPosition(b)));
    EXPECT_TRUE(near(system->getComPosition(b), expected, 8 * epsilon)) << "body " << b;
  }
}

TEST_P(Identities, CentreOfMassOfTheRobotIsTheWeightedMeanOfItsBodies) {
  EXPECT_TRUE(near(system->getComPosition(), moment() / mass, 8 * epsilon));
  EXPECT_TRUE(near(root * Vector3d(toDoubles(system->getComPositionInRoot())), moment() / mass, 8 * epsilon));
}

TEST_P(Identities, PartialCentreOfMassIsTheWeightedMeanOfTheOtherBodies) {
  for (Size b = 1; b < nb_bodies; ++b) {
    const Vector3d com = root * Vector3d(toDoubles(system->computePartialComPositionInRoot(b)));
    EXPECT_TRUE(near(com, (moment() - moment(b)) / partialMass(b), 8 * epsilon)) << "without body " << b;
  }
}

TEST_P(Identities, SumOfThePartialJacobiansIs15TimesTheMomentumRowsOfTheMassMatrix) {
  MatrixXd sum = MatrixXd::Zero(3, 21);
  for (Size b = 0; b < nb_bodies; ++b) sum += partialJacobian(b);  // each body is left out of one of the 16
  EXPECT_TRUE(near(sum, 15 * root.linear() * H.topRows(3), 64 * epsilon * mass));
}

TEST_P(Identities, TorquesAtRestAreTheSumOfInertiaWeightAndWrenches) {
  VectorXd expected = H * x.ddq.matrix().cast<double>() + 9.81 * (root.linear() * H.topRows(3)).row(2).transpose();
  const Table parents = system->getParentsVector();
  const Transform tool = RandomState(GetParam() + 50).rootPose(), own;
  for (Size b = 0; b < nb_bodies; ++b) {
    const bool inTool = b % 2 != 0;  // every other wrench is given in a frame of its own
    if (inTool) system->setExternalWrench(b, x.wrenches[b], tool);
    const Eigen::Affine3d T = frame(system->getPoseInRoot(b)) * frame(inTool ? tool : own);
    const Vector3d f = T.linear() * Eigen::Vector3f(&x.wrenches[b][0]).cast<double>();
    const Vector3d n = T.linear() * Eigen::Vector3f(&x.wrenches[b][3]).cast<double>() + T.translation().cross(f);
    for (std::int64_t i = static_cast<std::int64_t>(b); i > 0; i = parents[static_cast<std::size_t>(i)]) {
      expected[i + 5] -= J.col(i + 5).head(3).dot(n) + J.col(i + 5).tail(3).dot(f);
    }
  }
  system->setRootVelocity(Velocity6D(0, 0, 0, 0, 0, 0));
  system->setJointAnglesVel(Eigen::ArrayXf::Zero(15));
  system->computeInverseDynamics();
  EXPECT_TRUE(near(system->getJointAnglesTorque(), expected.tail(15), 2 * epsilon * 9.81 * mass));
}

}  // namespace
