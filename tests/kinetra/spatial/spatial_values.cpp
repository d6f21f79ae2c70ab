#include <gtest/gtest.h>

#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>
#include <kinetra/spatial/ConstraintMotionFreeFlyerBody.hpp>
#include <kinetra/spatial/Transform.hpp>
#include <tests/support/Random.hpp>
#include <tests/support/matchers.hpp>
#include <tools/reference/BodyData.hpp>

// Compares the spatial value types with the 6 x 6 matrices that define them, in double precision.

namespace {

using namespace lumo::test;
using namespace kinetra::Spatial;
using Vector6f = Eigen::Matrix<float, 6, 1>;
using Matrix6d = Eigen::Matrix<double, 6, 6>;
constexpr double tolerance = 3e-6;  // for sums of a few products of numbers below 1

Eigen::Matrix3d skew(const Eigen::Vector3f& a) {
  const Eigen::Vector3d d = a.cast<double>();
  return (Eigen::Matrix3d() << 0.0, -d.z(), d.y(), d.z(), 0.0, -d.x(), -d.y(), d.x(), 0.0).finished();
}

template <typename Rotation>
Matrix6d onMotions(const TransformT<Rotation>& X) {
  const Eigen::Matrix3d E = X.E.matrix().template cast<double>();
  return (Matrix6d() << E, Eigen::Matrix3d::Zero(), -E * skew(X.r), E).finished();
}
Matrix6d matrix(const Inertia& body) {
  const Eigen::Matrix3d m = static_cast<double>(body.m) * Eigen::Matrix3d::Identity();
  return (Matrix6d() << reference::rotationalInertia(body), skew(body.h), -skew(body.h), m).finished();
}

template <typename Rotation>
TransformT<Rotation> make(Random& random) {
  const Eigen::Vector3f r = random.matrix<3>();
  if constexpr (std::is_same_v<Rotation, RotationMatrix>) {
    return {Rotation(random.rotation()), r};
  } else {
    return {Rotation(2.0F), r};  // an angle for RotationMatrixAboutZ, the factor k for RotationMatrixIdentity
  }
}

TEST(Rotations, ProductWithARotationAboutZKeepsTheThirdRow) {
  Eigen::Matrix3f B = Random(1).matrix<3, 3>();
  B(2, 1) = -0.0F;
  EXPECT_TRUE(identical((RotationMatrixAboutZ(2.0F) * RotationMatrix(B)).matrix().row(2), B.row(2)));
}

TEST(Rotations, TheThirdColumnOfAProductIsTheCrossProductOfTheOthers) {
  Random random(1);
  const RotationMatrix A(random.rotation()), B(random.matrix<3, 3>());  // B is far from orthonormal
  const Eigen::Matrix3f AB = (A * B).matrix();
  EXPECT_TRUE(identical(AB.col(2), AB.col(0).cross(AB.col(1))));
}

TEST(Rotations, ProductWithAMultipleOfTheIdentityIsScaledByItsFactor) {
  const RotationMatrixIdentity third(1.0F / 3.0F);
  const Eigen::Matrix3f B = Random(1).matrix<3, 3>();
  EXPECT_TRUE(identical((RotationMatrix(B) * third).matrix(), B * third.k()));
  const auto X = TransformT<RotationMatrixAboutZ>({0.7F, 0.4F}, {4.0F, 5.0F, 6.0F}) *
                 TransformT<RotationMatrixIdentity>(third, {1.0F, 2.0F, 3.0F});
  EXPECT_TRUE(identical(X.E.c(), 0.7F * third.k()));
  EXPECT_TRUE(identical(X.E.s(), 0.4F * third.k()));
  EXPECT_TRUE(identical(X.r, Eigen::Vector3f(5.0F, 7.0F, 9.0F)));
}

TEST(MotionAndForce, StoreTheAngularPartFirstAndAddEntryByEntry) {
  Random random(1);
  const Vector6f a = random.matrix<6>(), b = random.matrix<6>();
  EXPECT_TRUE(identical(Motion(a).angular(), a.head<3>()));
  EXPECT_TRUE(identical(Force(a).couple(), a.head<3>()));
  EXPECT_TRUE(identical(Vector6f(Motion(a) + Motion(b)), a + b));
  EXPECT_TRUE(identical(Vector6f(Motion(a) + b), a + b));
  EXPECT_TRUE(identical(Vector6f(Motion(a) - Motion(b)), a - b));
  EXPECT_TRUE(identical(Vector6f(Force(a) + Force(b)), a + b));
  EXPECT_TRUE(identical(Vector6f(Force(a) - Force(b)), a - b));
}

TEST(MotionAndForce, CrossProductEqualsThatOfTheMatrices) {
  Random random(1);
  const Vector6f a = random.matrix<6>(), b = random.matrix<6>();
  const Eigen::Matrix3d w = skew(a.head<3>()), v = skew(a.tail<3>());
  const Matrix6d cross = (Matrix6d() << w, Eigen::Matrix3d::Zero(), v, w).finished();
  EXPECT_TRUE(near(Vector6f(crm(Motion(a), Motion(b))), cross * b.cast<double>(), tolerance));
  EXPECT_TRUE(near(Vector6f(crf(Motion(a), Force(b))), -cross.transpose() * b.cast<double>(), tolerance));
}

template <typename Rotation>
struct Transforms : testing::Test {};
using Kinds = testing::Types<RotationMatrix, RotationMatrixAboutZ, RotationMatrixIdentity>;
TYPED_TEST_SUITE(Transforms, Kinds);

TYPED_TEST(Transforms, TransformMotionsAndForcesLikeTheir6x6Matrices) {
  Random random(2);
  const auto X = make<TypeParam>(random);
  const Matrix6d M = onMotions(X), F = M.inverse().transpose();  // power is the same in every frame
  const Vector6f x = random.matrix<6>();
  const auto x_d = x.cast<double>();
  EXPECT_TRUE(near(Vector6f(X.apply(Motion(x))), M * x_d, tolerance));
  EXPECT_TRUE(near(Vector6f(X.apply(Force(x))), F * x_d, tolerance));
  EXPECT_TRUE(near(Vector6f(X.applyInv(Motion(x))), M.inverse() * x_d, tolerance));
  EXPECT_TRUE(near(Vector6f(X.applyInv(Force(x))), F.inverse() * x_d, tolerance));
}

TYPED_TEST(Transforms, TransformForceColumnsInPlaceToo) {
  Random random(2);
  const auto X = make<TypeParam>(random);
  Eigen::Matrix<float, 6, 2> columns = random.matrix<6, 2>();
  const Eigen::Matrix<double, 6, 2> expected = onMotions(X).transpose() * columns.cast<double>();
  EXPECT_TRUE(near(X.applyInv(Eigen::Matrix<float, 6, Eigen::Dynamic>(columns)), expected, tolerance));
  columns = X.applyInv(columns);
  EXPECT_TRUE(near(columns, expected, tolerance));
}

TYPED_TEST(Transforms, TransformInertiasLikeTheir6x6Matrices) {
  Random random(2);
  const auto X = make<TypeParam>(random);
  const Inertia body = random.inertia();
  EXPECT_TRUE(near(matrix(X.applyInv(body)), onMotions(X).transpose() * matrix(body) * onMotions(X), 4 * tolerance));
}

TYPED_TEST(Transforms, InverseMovesPointsBack) {
  Random random(2);
  const auto X = make<TypeParam>(random);
  const Eigen::Vector3f p = random.matrix<3>(), p_new = X.E.matrix() * (p - X.r);
  EXPECT_TRUE(near(X.applyToPoint(p), p_new, tolerance));
  EXPECT_TRUE(near(X.applyInvToPoint(p_new), p, tolerance));
}

TEST(TransformProducts, ApplyTheRightFactorFirst) {
  Random random(3);
  const auto G1 = make<RotationMatrix>(random), G0 = make<RotationMatrix>(random);
  const auto Z1 = make<RotationMatrixAboutZ>(random);
  const TransformT<RotationMatrixIdentity> S0(RotationMatrixIdentity(1.0F), random.matrix<3>().eval());
  EXPECT_TRUE(near(onMotions(G1 * G0), onMotions(G1) * onMotions(G0), tolerance));
  EXPECT_TRUE(near(onMotions(Z1 * G0), onMotions(Z1) * onMotions(G0), tolerance));
  EXPECT_TRUE(near(onMotions(Z1 * S0), onMotions(Z1) * onMotions(S0), tolerance));
  EXPECT_TRUE(near(onMotions(G1 * S0), onMotions(G1) * onMotions(S0), tolerance));
}

TEST(Inertias, MultiplyAndAddLikeTheirMatrices) {
  Random random(5);
  const Inertia a = random.inertia(), b = random.inertia();
  const Vector6f v = random.matrix<6>();
  EXPECT_TRUE(near(Vector6f(a * Motion(v)), matrix(a) * v.cast<double>(), tolerance));
  EXPECT_TRUE(near(matrix(a + b), matrix(a) + matrix(b), tolerance));
}

template <typename Subspace>
struct MotionSubspaces : testing::Test {};
using SubspaceKinds = testing::Types<ConstraintMotionFreeFlyerBody, ConstraintMotionAboutZ>;
TYPED_TEST_SUITE(MotionSubspaces, SubspaceKinds);

TYPED_TEST(MotionSubspaces, SelectEntriesWithoutRounding) {
  Random random(5);
  const TypeParam S;
  const Matrix6d unit = Matrix6d::Identity();
  Eigen::MatrixXd expected = unit.col(2);
  if (S.dof_number == 6) expected = (Matrix6d() << unit.bottomRows<3>(), unit.topRows<3>()).finished();
  const Inertia a = random.inertia();
  EXPECT_TRUE(near(S.matrix(), expected, 0.0));
  EXPECT_TRUE(near(a * S, matrix(a) * expected, 0.0));
}

/// The full product, summed in order. Every NaN is replaced by the same number, so that any two are equal.
Eigen::VectorXf product(const Eigen::MatrixXf& A, const Eigen::VectorXf& x) {
  Eigen::VectorXf sum = A.col(0) * x[0];
  for (Eigen::Index j = 1; j < A.cols(); ++j) sum += A.col(j) * x[j];
  return sum.array().isNaN().select(7.0F, sum);
}

TYPED_TEST(MotionSubspaces, EqualTheFullProductBitForBit) {
  constexpr int n = TypeParam::dof_number;
  const TypeParam S;
  const auto number = [](const auto& x) { return x.array().isNaN().select(7.0F, x).eval(); };
  for (const float others : {0.0F, -0.0F, -2.0F}) {
    for (const float one : {0.0F, -0.0F, 3.0F, HUGE_VALF}) {
      for (int k = 0; k < 6; ++k) {
        Vector6f x = Vector6f::Constant(others);
        x[k] = one;
        const Eigen::Matrix<float, n, 1> rates = x.head<n>(), projected = S.transposeTimes(Force(x));
        EXPECT_TRUE(identical(number(projected), product(S.matrix().transpose(), x))) << "S'f, f = " << x.transpose();
        EXPECT_TRUE(identical(number(S * rates), product(S.matrix(), rates))) << "S a, a = " << rates.transpose();
      }
    }
  }
}

}  // namespace
