#include <cmath>

#include <tests/plugin/support.hpp>

namespace {

using namespace lumo::test;

// The axis of the first joint is the root's z axis, so the pose contains the sine and the cosine of the joint angle.
TEST(AnyInput, SineOfHugeAnglesIsCorrectlyRounded) {
  const auto system = create();
  for (int power = -30; power <= 30; ++power) {
    const double size = std::pow(10.0, power);
    for (const float angle : {static_cast<float>(size), static_cast<float>(-0.37 * size)}) {
      system->setJointAnglePos(0, angle);
      system->computeFwdKinematics();
      const auto expected = [angle](auto function) {
        return static_cast<float>(function(static_cast<long double>(angle)));
      };
      const Eigen::Matrix3d R = frame(system->getPose(1)).linear();
      EXPECT_EQ(R(1, 0), expected([](long double x) { return std::sin(x); })) << angle;
      EXPECT_EQ(R(0, 0), expected([](long double x) { return std::cos(x); })) << angle;
    }
  }
}

}  // namespace
