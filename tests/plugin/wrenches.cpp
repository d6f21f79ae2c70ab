#include <tests/plugin/support.hpp>

namespace {

using namespace lumo::test;
using Eigen::Vector3d, Eigen::VectorXd;

struct Wrenches : testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Seed, Wrenches, testing::Range(100U, 104U));

// Computes the torques from other results.
TEST_P(Wrenches, AddToTheTorquesOfInertiaAndWeight) {
  const RandomState x(GetParam(), 0.3F);
  const Object system = computed(x);
  const Eigen::Affine3d root = frame(system->getRootPose());
  const Eigen::MatrixXd H = toDoubles(system->getGeneralizedMass()), J = toDoubles(system->getJacobianInRoot());
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
  EXPECT_TRUE(near(system->getJointAnglesTorque(), expected.tail(15), 2 * epsilon * 9.81 * 27.8));
}

}  // namespace
