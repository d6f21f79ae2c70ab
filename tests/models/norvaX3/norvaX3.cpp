#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include <tests/support/Scenario.hpp>
#include <tests/support/matchers.hpp>
#include <tools/reference/BodyData.hpp>
#include <tools/reference/Robot.hpp>

namespace {

using namespace lumo::test;
using kinetra::norvaX3;

TEST(Model, NewRobotHasItsDefaultValues) {
  alignas(norvaX3) static unsigned char memory[sizeof(norvaX3)];
  void* (*volatile fill)(void*, int, std::size_t) = std::memset;  // members not set must not be zero
  fill(memory, 0xff, sizeof memory);
  const Eigen::Matrix<float, 6, 1> zero = Eigen::Matrix<float, 6, 1>::Zero();
  forEachNode(*new (memory) norvaX3, [&zero](auto& n) {
    SCOPED_TRACE("node " + std::to_string(n.id));
    EXPECT_TRUE(near(n.sXp.E.matrix().row(0), zero.head<3>().transpose(), 0));
    EXPECT_TRUE(near(n.joint.Xj.E.matrix().row(0), zero.head<3>().transpose(), 0));
    EXPECT_TRUE(near(n.body.iX0.E.matrix(), Eigen::Matrix3f::Zero(), 0));
    EXPECT_TRUE(near(Eigen::Matrix<float, 6, 1>(n.joint.cj), zero, 0));
    EXPECT_TRUE(near(n.body.Iic.m, 0, 0));
    if (n.id > 0) {
      EXPECT_TRUE(near(n.joint.vj.linear(), zero.head<3>(), 0));
    }
  });
}

TEST(Model, EveryBodyIsNearlyAPointMass) {
  for (std::size_t b = 0; b < 16; ++b) {
    const auto& body = norvaX3::inertias[b];
    const Eigen::Vector3d h = body.h.cast<double>();
    const Eigen::Matrix3d point = (h.squaredNorm() * Eigen::Matrix3d::Identity() - h * h.transpose()) / body.m;
    EXPECT_TRUE(near(reference::rotationalInertia(body), point, 5e-6 * point.trace())) << norvaX3::body_names[b];
  }
}

TEST(Model, JointsBodiesAndNodesHaveTheSameNames) {
  EXPECT_EQ(norvaX3::body_names, norvaX3::joint_names);
  EXPECT_EQ(norvaX3::Node10::joint_name, "KneePitch");
}

TEST(Model, PlacementOfTheElbowIsUsedAsStored) { EXPECT_TRUE(identical(norvaX3::Node5::Xt.E(1, 2), 0.987688F)); }

TEST(Model, AtZeroAnglesTheArmsAreMirrorImages) {
  const reference::Robot robot{Scenario::Vector21::Zero()};
  const Eigen::Vector3d mirror(1.0, -1.0, 1.0);
  for (int left = 3; left < 8; ++left) {
    const auto com = robot.bodyComInWorld(left).value;
    EXPECT_TRUE(near(mirror.asDiagonal() * com, robot.bodyComInWorld(left + 8).value, 1e-8)) << left;
    EXPECT_EQ("R" + norvaX3::joint_names.data()[left].substr(1), norvaX3::joint_names.data()[left + 8]);
  }
  EXPECT_TRUE(near(robot.poseInWorld(7).value.col(3), Eigen::Vector3d(0.272353, 0.164740, 0.110415), 1e-6));
  EXPECT_TRUE(near(robot.poseInWorld(10).value.col(3), Eigen::Vector3d(0.00002, 0.0, -0.486), 1e-7));
  EXPECT_TRUE(near(robot.firstMomentInRoot().value / 27.824242, Eigen::Vector3d(0.0096903, 0.0, -0.394897), 1e-6));
}

}  // namespace
