#include <gtest/gtest.h>

#include <oxmath/oxmath.h>
#include <tests/support/matchers.hpp>

namespace {

using namespace lumo::test;
using namespace OX::Math;

// Other tests see wrong angles in the world poses. At gimbal lock the axes of roll and yaw coincide, so the angles are
// not unique, and only the pose can be compared.
TEST(OxMath, PoseRoundTripReturnsThePoseInGimbalLock) {
  for (const float pitch : {1.57079633F, -1.57079633F}) {
    Transform locked = transformFromPosition6D({1, 2, 3, 0.5F, pitch, -2});
    locked.m[0][0] = locked.m[1][0] = locked.m[2][1] = locked.m[2][2] = 0;
    const Transform again = transformFromPosition6D(position6DFromTransform(locked));
    EXPECT_TRUE(near(again, locked, 2 * 0x1p-23)) << "pitch " << pitch;
  }
}

}  // namespace
