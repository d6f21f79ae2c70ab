#include <tests/plugin/support.hpp>

// What must hold between the results of different passes: each is computed here from others.

namespace {

using namespace lumo::test;
using Eigen::MatrixXd, Eigen::Vector3d, Eigen::VectorXd;

struct Identities : testing::TestWithParam<unsigned> {
  const State x{GetParam(), 0.3F};
  const Object system = computed(x);
  const Table parents = system->getParentsVector();
  const Eigen::Affine3d root = frame(system->getRootPose());
  const MatrixXd H = system->getGeneralizedMass().cast<double>(), J = system->getJacobianInRoot().cast<double>();
  const double mass = static_cast<double>(system->getMass());
};
INSTANTIATE_TEST_SUITE_P(Seed, Identities, testing::Range(100U, 104U));

TEST_P(Identities, CentresOfMassAndMomentum) {
  Vector3d moments[nb_bodies], moment = Vector3d::Zero();
  const auto atRest = create();  // all its poses are the identity
  for (Size b = 0; b < nb_bodies; ++b) {
    const Vector3d com = toDoubles(system->getComPosition(b));
    EXPECT_TRUE(near(com, frame(system->getPose(b)) * toDoubles(atRest->getComPosition(b)), 8 * epsilon)) << b;
    moment += moments[b] = static_cast<double>(system->getMass(b)) * com;
  }
  EXPECT_TRUE(near(toDoubles(system->getComPosition()), moment / mass, 8 * epsilon));
  EXPECT_TRUE(near(root * toDoubles(system->getComPositionInRoot()), moment / mass, 8 * epsilon));
  MatrixXd sum = MatrixXd::Zero(3, 21);
  for (Size b = 0; b < nb_bodies; ++b) {
    const double others = static_cast<double>(system->getPartialMass(b));
    Jacobian partial;
    system->computePartialComJacobian(b, partial);
    sum += partial.cast<double>();
    // The others' momentum when the root turns about the first of its axes.
    const Vector3d arm = (moment - moments[b]) - others * root.translation(), axis = root.linear().col(0);
    EXPECT_TRUE(near(partial.col(3), axis.cross(arm), 16 * epsilon * mass)) << b;
    if (b == 0) continue;
    const Vector3d com = root * toDoubles(system->computePartialComPositionInRoot(b));
    EXPECT_TRUE(near(com, (moment - moments[b]) / others, 8 * epsilon)) << b;
  }
  // Each body is left out once in sixteen.
  EXPECT_TRUE(near(sum, 15 * root.linear() * H.topRows(3), 64 * epsilon * mass));
}

TEST_P(Identities, Torques) {
  // At rest: inertia, weight and wrenches, every other one given in a frame of its own.
  VectorXd expected = H * x.ddq.matrix().cast<double>() + 9.81 * (root.linear() * H.topRows(3)).row(2).transpose();
  const Transform tool = State(GetParam() + 50).rootPose(), own;
  for (Size b = 0; b < nb_bodies; ++b) {
    if (b % 2 != 0) system->setExternalWrench(b, x.wrenches[b], tool);
    const Eigen::Affine3d T = frame(system->getPoseInRoot(b)) * frame(b % 2 != 0 ? tool : own);
    const Vector3d f = T.linear() * Eigen::Vector3f(&x.wrenches[b][0]).cast<double>();
    const Vector3d n = T.linear() * Eigen::Vector3f(&x.wrenches[b][3]).cast<double>() + T.translation().cross(f);
    for (std::int64_t i = static_cast<std::int64_t>(b); i > 0; i = parents[static_cast<std::size_t>(i)]) {
      expected[i + 5] -= J.col(i + 5).head(3).dot(n) + J.col(i + 5).tail(3).dot(f);
    }
  }
  const auto torquesAt = [this](float speed) {
    const Eigen::ArrayXf v = speed * x.dq;
    system->setRootVelocity({v[0], v[1], v[2], v[3], v[4], v[5]});
    system->setJointAnglesVel(v.tail<15>());
    system->computeInverseDynamics();
    return toDoubles(system->getJointAnglesTorque());
  };
  EXPECT_TRUE(near(torquesAt(0), expected.tail(15), 2 * epsilon * 9.81 * mass));

  // In motion: what velocities add grows with their square.
  const VectorXd added = torquesAt(1) - torquesAt(0);
  EXPECT_GT(added.cwiseAbs().minCoeff(), 1e-5);
  EXPECT_TRUE(near(torquesAt(-2) - torquesAt(0), 4 * added, 8 * epsilon * 9.81 * mass));
}

}  // namespace
