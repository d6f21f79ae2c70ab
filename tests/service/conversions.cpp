#include <gtest/gtest.h>

#include <service/conversions.hpp>
#include <tests/support/Random.hpp>
#include <tests/support/matchers.hpp>
#include <tools/toFloats.hpp>

namespace {

using namespace lumo::test;
using kinetra::Spatial::RotationMatrix;
using lumo::SpatialTransform, lumo::toMatrix;

TEST(Conversions, TakePointsAsTheirTransforms) {
  Random random(1);
  const SpatialTransform A(RotationMatrix(random.rotation()), random.matrix<3>());
  const SpatialTransform B(RotationMatrix(random.rotation()), random.matrix<3>());
  const Eigen::Vector3f p = random.matrix<3>(), p_A = A.applyToPoint(p), p_AB = A.applyToPoint(B.applyToPoint(p));
  OX::Math::Transform H;
  lumo::toOXMath(A, H);
  EXPECT_TRUE(near(toMatrix(H) * p.homogeneous(), p_A.cast<double>(), 1e-6));
  const SpatialTransform back = lumo::fromOXMath(H);
  EXPECT_TRUE(identical(back.E.matrix(), A.E.matrix()) && near(back.r, A.r.cast<double>(), 1e-6));
  lumo::invToOXMath(A, H);
  EXPECT_TRUE(near(toMatrix(H) * p_A.homogeneous(), p.cast<double>(), 1e-6));
  lumo::invProdToOXMath(A, B, H);
  EXPECT_TRUE(near(toMatrix(H) * p_AB.homogeneous(), p.cast<double>(), 1e-6));

  // The third row closes the first two, whatever the product says.
  lumo::invProdToOXMath(A, SpatialTransform(RotationMatrix(random.matrix<3, 3>()), p), H);
  const Eigen::Matrix3f columns = toMatrix(H).leftCols<3>().transpose();
  EXPECT_TRUE(identical(columns.col(2), columns.col(0).cross(columns.col(1))));
}

}  // namespace
