#include <tests/plugin/support.hpp>

namespace {

using namespace lumo::test;

/// The masses are data of the loaded plug-in, so each test loads it afresh.
struct Masses : testing::Test {
  const lumo::Plugin plugin{LUMO_PLUGIN};
  const Object system = plugin.create();
  const Position3D com = Position3D(0.1F, -0.2F, 0.3F);
  const Eigen::Matrix3f none = Eigen::Matrix3f::Zero();
};

TEST_F(Masses, InitiallyEqualTheModel) {
  EXPECT_TRUE(identical(system->getMass(), 27.824242F));
  EXPECT_TRUE(identical(system->getMass(10), 15.4854F));
  for (Size b = 0; b < nb_bodies; ++b) {
    EXPECT_TRUE(identical(system->getPartialMass(b), 27.824242F - system->getMass(b))) << "body " << b;
  }
}

TEST_F(Masses, AreSharedByAllObjects) {
  const auto other = system->clone();
  const float total = (5.62F - system->getMass(7)) + system->getMass();
  system->setBodyInertia(7, 5.62F, com, none);
  EXPECT_TRUE(identical(other->getMass(7), 5.62F));
  EXPECT_TRUE(identical(other->getMass(), total));
  EXPECT_TRUE(identical(other->getPartialMass(7), total - 5.62F));
}

TEST_F(Masses, AreAddedUpAgainForANewObjectButNotForAClone) {
  system->setBodyInertia(7, 5.62F, com, none);
  const float total = system->getMass();
  float sum = 0;
  for (Size b = 0; b < nb_bodies; ++b) sum += system->getMass(b);
  ASSERT_NE(sum, total);  // they differ by rounding for this mass
  const auto clone = system->clone();
  EXPECT_TRUE(identical(system->getMass(), total));
  const auto added = plugin.create();
  EXPECT_TRUE(identical(system->getMass(), sum));
}

TEST_F(Masses, InertiaIsReadFromTheLowerTriangleAndMovedToTheOriginOfTheBody) {
  set(*system, RandomState(20));
  system->setBodyInertia(0, 0, com, none);
  compute(*system);
  const Eigen::MatrixXf without = system->getGeneralizedMass();
  system->setBodyInertia(0, 5, com, (Eigen::Matrix3f() << 1, 99, 99, 0.25F, 2, 99, -0.5F, 0.75F, 3).finished());
  system->computeGeneralizedMass();
  Eigen::MatrixXd cx(3, 3), I(3, 3), share = Eigen::MatrixXd::Zero(21, 21);
  cx << 0, -0.3, -0.2, 0.3, 0, -0.1, 0.2, 0.1, 0;
  I << 1, 0.25, -0.5, 0.25, 2, 0.75, -0.5, 0.75, 3;
  share.topLeftCorner(6, 6) << 5 * Eigen::Matrix3d::Identity(), -5 * cx, 5 * cx, I - 5 * cx * cx;
  EXPECT_TRUE(near(system->getGeneralizedMass() - without, share, 64 * epsilon));
}

TEST_F(Masses, ZeroMassMakesItsCentresOfMassNan) {
  set(*system, RandomState(21));
  compute(*system);
  const Position3D others = system->computePartialComPositionInRoot(7);
  system->setBodyInertia(7, 0, com, none);
  compute(*system);
  EXPECT_TRUE(toDoubles(system->getComPosition(7)).array().isNaN().all());
  EXPECT_TRUE(toDoubles(system->getComPositionInRoot()).array().isNaN().all());
  EXPECT_TRUE(toDoubles(system->computePartialComPositionInRoot(6)).array().isNaN().all());
  EXPECT_TRUE(near(system->computePartialComPositionInRoot(7), others, 4 * epsilon));
}

}  // namespace
