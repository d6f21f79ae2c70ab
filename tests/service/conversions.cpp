#include <gtest/gtest.h>

#include <service/conversions.hpp>
#include <tests/support/Random.hpp>
#include <tests/support/matchers.hpp>

namespace {

using namespace lumo::test;
using kinetra::Spatial::RotationMatrix;
using lumo::SpatialTransform;

struct Conversions : testing::Test {
  Random random{1};
  const SpatialTransform A{RotationMatrix(random.rotation()), random.matrix<3>()};
  const SpatialTransform B{RotationMatrix(random.rotation()), random.matrix<3>()};
  const Eigen::Vector3f p = random.matrix<3>(), p_A = A.applyToPoint(p);
  OX::Math::Transform H;
};

TEST_F(Conversions, HostPoseMapsPointsLikeTheTransform) {
  lumo::toOXMath(A, H);
  EXPECT_TRUE(near(toDoubles(H) * p.homogeneous().cast<double>(), p_A, 1e-6));
}

TEST_F(Conversions, RoundTripThroughHostTypeReturnsTheTransform) {
  lumo::toOXMath(A, H);
  const SpatialTransform back = lumo::fromOXMath(H);
  EXPECT_TRUE(identical(back.E.matrix(), A.E.matrix()));
  EXPECT_TRUE(near(back.r, A.r, 1e-6));
}

TEST_F(Conversions, InverseMapsPointsBack) {
  lumo::invToOXMath(A, H);
  EXPECT_TRUE(near(toDoubles(H) * p_A.homogeneous().cast<double>(), p, 1e-6));
}

TEST_F(Conversions, InverseOfProductMapsPointsBack) {
  const Eigen::Vector3f p_AB = A.applyToPoint(B.applyToPoint(p));
  lumo::invProdToOXMath(A, B, H);
  EXPECT_TRUE(near(toDoubles(H) * p_AB.homogeneous().cast<double>(), p, 1e-6));
}

}  // namespace
