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

TEST(AnyInput, TorquesAreNotFiniteIfAnInputIsNotFinite) {
  using S = RigidBodySystem;
  struct Input {
    const char* name;
    void (*set)(S&, float);
  };
  const Input inputs[] = {
      {"root pose",
       [](S& s, float x) { s.setRootPose(OX::Math::transformFromPosition6D(OX::Math::Position6D(0, 0, 0, x, 0, 0))); }},
      {"root velocity", [](S& s, float x) { s.setRootVelocity(Velocity6D(0, 0, 0, x, 0, 0)); }},
      {"root acceleration", [](S& s, float x) { s.setRootAcceleration(Velocity6D(x, 0, 0, 0, 0, 0)); }},
      {"joint position", [](S& s, float x) { s.setJointAnglePos(9, x); }},
      {"joint velocity", [](S& s, float x) { s.setJointAngleVel(9, x); }},
      {"joint acceleration", [](S& s, float x) { s.setJointAngleAcc(9, x); }},
      {"wrench",
       [](S& s, float x) {
         s.setExternalWrench(10, {0, 0, x, 0, 0, 0});
       }},
      {"wrench in a frame",
       [](S& s, float x) {
         s.setExternalWrench(10, {0, 0, x, 0, 0, 0}, Transform());
       }},
  };
  for (const Input& input : inputs) {
    for (const float x : {NAN, HUGE_VALF}) {
      const auto system = create();
      input.set(*system, x);
      system->computeInverseDynamics();
      EXPECT_FALSE(toDoubles(system->getJointAnglesTorque()).allFinite()) << input.name << ' ' << x;
    }
  }
}

}  // namespace
