#include <gtest/gtest.h>

#include <kinetra/algos/crba.hpp>
#include <kinetra/algos/fwd_kin_iX1.hpp>
#include <kinetra/algos/jcalc.hpp>
#include <kinetra/algos/partial_com.hpp>
#include <kinetra/algos/partial_crba.hpp>
#include <kinetra/algos/rnea.hpp>
#include <service/fwd_kin_H01_from_iX1.hpp>
#include <tests/support/Scenario.hpp>
#include <tests/support/matchers.hpp>
#include <tools/reference/Robot.hpp>

namespace {

using namespace lumo::test;
using namespace kinetra::internal;
using kinetra::norvaX3;
using Vector6f = Eigen::Matrix<float, 6, 1>;
using Vector21 = Scenario::Vector21;

TEST(FreeFlyerBodyJoint, TurnsByYawThenPitchThenRoll) {
  Random random(1);
  const Vector6f q = random.matrix<6>(3.0F), dq = random.matrix<6>();
  kinetra::FreeFlyerBodyJoint joint;
  joint.jcalc(q, dq);
  const auto turn = [&](int i) { return Eigen::AngleAxisf(q[3 + i], Eigen::Vector3f::Unit(i)); };
  EXPECT_TRUE(near(joint.Xj.E.matrix().transpose(), (turn(2) * turn(1) * turn(0)).matrix(), 1e-6));
  EXPECT_TRUE(identical(joint.Xj.r, q.head<3>()));
  EXPECT_TRUE(identical(joint.vj.angular(), dq.tail<3>()));
  EXPECT_TRUE(identical(joint.vj.linear(), dq.head<3>()));
}

TEST(Joints, HaveFunctionsThatTakeBracesAndHaveAddresses) {
  using Free = kinetra::FreeFlyerBodyJoint;
  using Revolute = kinetra::RevoluteJointAboutZ;
  void (Free::*const jcalc)(const Vector6f&, const Vector6f&) = &Free::jcalc;
  void (Revolute::*const jcalc_pos)(float) = &Revolute::jcalc_pos;
  Free free, other;
  (free.*jcalc)({1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1});
  other.jcalc({Vector6f(Vector6f::LinSpaced(1, 6))}, {Vector6f(Vector6f::LinSpaced(6, 1))});
  EXPECT_TRUE(identical(free.Xj.E.matrix(), other.Xj.E.matrix()));
  Revolute revolute;
  (revolute.*jcalc_pos)(0.5F);
  EXPECT_TRUE(identical(revolute.Xj.E.s(), std::sin(0.5F)));
}

TEST(FreeFlyerBodyJoint, HasANegativeZeroAtZeroPitch) {
  kinetra::FreeFlyerBodyJoint joint;
  joint.jcalc_pos(Vector6f::Zero());
  const Eigen::Matrix3f E = joint.Xj.E.matrix();
  EXPECT_TRUE(identical(E, (Eigen::Matrix3f() << 1.0F, 0.0F, -0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F).finished()));
}

/// Two robots after one joint pass each: `full` with velocities, the other without. Before the pass all results were
/// NaN and all joint velocities 7.
struct Jcalc : testing::Test {
  const Scenario s{2};
  norvaX3 full, positionOnly;

  Jcalc() {
    spoil(full);
    forEachNode(full, [](auto& n) { n.joint.vj = kinetra::Spatial::Motion(Vector6f::Constant(7.0F)); });
    positionOnly = full;
    depth_first_traversal<JcalcVisitor, norvaX3>::run(full, s.q, s.dq);
    depth_first_traversal<JcalcPosVisitor, norvaX3>::run(positionOnly, s.q);
  }
};

TEST_F(Jcalc, PlacesEachBodyByItsJointAndPlacement) {
  forEachNode(full, [](auto& n) {
    const auto product = n.joint.Xj * n.Xt;
    EXPECT_TRUE(identical(n.sXp.E.matrix(), product.E.matrix())) << "node " << n.id;
    EXPECT_TRUE(identical(n.sXp.r, Eigen::Vector3f(product.r))) << "node " << n.id;
  });
}

TEST_F(Jcalc, OnlyThePassWithVelocitiesWritesVelocities) {
  forEachNode(positionOnly, [](auto& n) {
    EXPECT_TRUE(identical(Vector6f(n.joint.vj), Vector6f::Constant(7.0F))) << "node " << n.id;
  });
  forEachNode(full, [this](auto& n) {
    Vector6f expected{0.0F, 0.0F, s.dq[n.dof_index], 7.0F, 7.0F, 7.0F};
    if (n.id == 0) expected << s.dq.segment<3>(3), s.dq.head<3>();
    EXPECT_TRUE(identical(Vector6f(n.joint.vj), expected)) << "node " << n.id;
  });
}

TEST_F(Jcalc, WritesOnlyTransformsAndVelocities) {
  forEachNode(full, [](auto& n) {
    SCOPED_TRACE("node " + std::to_string(n.id));
    EXPECT_TRUE(n.F.array().isNaN().all());
    EXPECT_TRUE(Vector6f(n.body.vi).array().isNaN().all());
    EXPECT_TRUE(Vector6f(n.joint.f).array().isNaN().all());
    EXPECT_TRUE(std::isnan(n.body.Iic.m));
    EXPECT_TRUE(identical(Vector6f(n.joint.cj), Vector6f::Zero()));
    EXPECT_TRUE(identical(n.joint.S.matrix(), decltype(n.joint.S)().matrix()));
  });
}

/// All results of the kinematics, which are NaN before, and the reference.
struct Kinematics : testing::TestWithParam<unsigned> {
  const Scenario s{GetParam()};
  const RandomInertias inertias{GetParam()};
  const reference::Robot expected{s.q};
  norvaX3 robot;
  std::array<lumo::SpatialTransform, 16> iX1;
  Eigen::Matrix<float, 6, Eigen::Dynamic> J = Eigen::Matrix<float, 6, 21>::Constant(nan_f);
  Eigen::Vector3f comSum = Eigen::Vector3f::Constant(nan_f);
  std::vector<OX::Math::Transform> poses{17};

  Kinematics() {
    iX1[0] = {kinetra::Spatial::RotationMatrix(Eigen::Matrix3f::Identity()), {0.0F, 0.0F, 0.0F}};
    depth_first_traversal<JcalcPosVisitor, norvaX3>::run(robot, s.q);
    kinetra::fwd_kin_iX1<norvaX3>::run(robot, iX1.data(), J, comSum);
    lumo::invToOXMath(iX1[3], poses[16]);
    lumo::fwd_kin_H01_from_iX1<norvaX3>::run(robot, iX1.data(), poses);
  }

  Eigen::Matrix<float, 3, 4> poseInRoot(std::size_t i) const {
    return (Eigen::Matrix<float, 3, 4>() << iX1[i].E.matrix().transpose(), iX1[i].r).finished();
  }
  Eigen::Vector3f comSumWithout(int body) {
    Eigen::Vector3f sum = Eigen::Vector3f::Constant(nan_f);
    kinetra::partial_com<norvaX3>::run(robot, iX1.data(), body, sum);
    return sum;
  }
};
INSTANTIATE_TEST_SUITE_P(Seed, Kinematics, testing::Range(1U, 5U));

TEST_P(Kinematics, PosesAgreeWithGeometry) {
  for (int i = 0; i < 16; ++i) {
    const auto b = static_cast<std::size_t>(i);
    EXPECT_TRUE(near(poseInRoot(b), expected.poseInRoot(i), 4)) << "body " << i;
    EXPECT_TRUE(near(poses[b], expected.poseInWorld(i), 6)) << "body " << i;
  }
  EXPECT_TRUE(identical(poses[16], poseInRoot(3))) << "the entry after the bodies' poses must not change";
}

TEST_P(Kinematics, JacobianAgreesWithGeometryAndDoesNotChangeTheRootColumns) {
  EXPECT_TRUE(J.leftCols(6).array().isNaN().all());
  J.leftCols(6).setZero();
  EXPECT_TRUE(near(J, expected.jacobianInRoot(), 12));
}

TEST_P(Kinematics, FirstMomentAgreesWithGeometry) { EXPECT_TRUE(near(comSum, expected.firstMomentInRoot(), 4)); }

TEST_P(Kinematics, PartialFirstMomentOmitsOneBodyButNotItsDescendants) {
  for (int body = 1; body < 16; ++body) {
    EXPECT_TRUE(near(comSumWithout(body), expected.firstMomentInRoot(body), 4)) << "without body " << body;
  }
  for (const int none : {-1, 0, 16}) EXPECT_TRUE(identical(comSumWithout(none), comSum)) << "without body " << none;
}

TEST_P(Kinematics, HooksOfABodyAddItsFirstMomentToTheSum) {
  Eigen::Vector3f sums[] = {comSumWithout(1), comSumWithout(1)};
  Eigen::MatrixBase<Eigen::Vector3f>&first = sums[0], &second = sums[1];
  FwdKiniX1Visitor<norvaX3, 1>::discover(robot, iX1.data(), J, first);
  depth_first_traversal_internal<PartialComVisitor, norvaX3, 1>::run(robot, iX1.data(), 2, second);
  for (const Eigen::Vector3f& sum : sums) EXPECT_TRUE(near(sum, expected.firstMomentInRoot(), 4));
}

/// A robot whose joint passes have run, and the reference.
struct Dynamics : testing::TestWithParam<unsigned> {
  static constexpr float untouched = -7.0F;

  const Scenario s{GetParam()};
  const RandomInertias inertias{GetParam()};
  const reference::Robot whole{s.q, s.dq, s.ddq, s.fext.data()};
  norvaX3 robot;

  Dynamics() {
    // The second pass replaces the positions of the first one and leaves the velocities.
    depth_first_traversal<JcalcVisitor, norvaX3>::run(robot, s.ddq, s.dq);
    depth_first_traversal<JcalcPosVisitor, norvaX3>::run(robot, s.q);
    spoil(robot);
  }

  /// The reference for a mass matrix in which the pass does not write the entries between two branches.
  reference::WithMagnitude massMatrix(int excluded) const {
    reference::WithMagnitude H = whole.massMatrix(excluded);
    const Eigen::Array<bool, 21, 21> apart = whole.massMatrix().magnitude.array() == 0.0;
    H.value = apart.select(static_cast<double>(untouched), H.value);
    return H;
  }
  Eigen::MatrixXf partialCrba(int excluded) {
    Eigen::MatrixXf H = Eigen::MatrixXf::Constant(21, 21, untouched);
    kinetra::partial_crba<norvaX3>::run(robot, H, excluded);
    return H;
  }
  Eigen::MatrixXf crba() {
    Eigen::MatrixXf large = Eigen::MatrixXf::Constant(30, 25, untouched);
    auto H = large.block(2, 3, 26, 22);
    kinetra::crba<norvaX3, false>::run(robot, H);
    const Eigen::MatrixXf result = H.topLeftCorner(21, 21);
    H.topLeftCorner(21, 21).setConstant(untouched);
    EXPECT_TRUE((large.array() == untouched).all()) << "the pass writes outside of the first 21 rows and columns";
    return result;
  }
  Vector21 rnea(const Vector21& ddq) {
    Vector21 torques = Vector21::Constant(nan_f);
    kinetra::rnea<norvaX3, false>::run(robot, ddq, s.fext.data(), torques);
    return torques;
  }
};
INSTANTIATE_TEST_SUITE_P(Seed, Dynamics, testing::Range(1U, 5U));

TEST_P(Dynamics, PartialMassMatrixAgreesWithNewtonAndEuler) {
  for (const int excluded : {0, 7, 9, 12, 16}) {
    EXPECT_TRUE(near(partialCrba(excluded), massMatrix(excluded), 10)) << "without body " << excluded;
  }
}

TEST_P(Dynamics, MassMatrixIsSymmetricToTheBit) {
  const Eigen::MatrixXf H = partialCrba(9);
  EXPECT_TRUE(identical(H, H.transpose()));
}

TEST_P(Dynamics, PartialMassMatrixThatOmitsNoBodyEqualsMassMatrix) { EXPECT_TRUE(identical(crba(), partialCrba(16))); }

TEST_P(Dynamics, MassMatrixPassWritesCompositeInertias) {
  crba();
  EXPECT_TRUE(identical(kinetra::node<7>(robot).body.Iic.I, norvaX3::inertias[7].I));
  EXPECT_FLOAT_EQ(kinetra::node<5>(robot).body.Iic.m,
                  norvaX3::inertias[5].m + norvaX3::inertias[6].m + norvaX3::inertias[7].m);
}

/// A tree whose branches have branches: 0 (1 (2, 3), 4).
struct Branching {
  static constexpr int nb_dof = 10;
  static constexpr std::array<int, 5> parents = {-1, 0, 1, 1, 0};
  static constexpr std::array<int, 5> dof_indexes = {0, 6, 7, 8, 9};
};
static_assert(kinetra::internal::endOfSubtree<Branching, 0>() == 10);
static_assert(kinetra::internal::endOfSubtree<Branching, 1>() == 9);
static_assert(kinetra::internal::endOfSubtree<Branching, 2>() == 8);
static_assert(kinetra::internal::endOfSubtree<Branching, 4>() == 10);

TEST_P(Dynamics, MassMatrixPassWritesForcesInTheRootFrame) {
  const Eigen::MatrixXf H = crba();
  forEachNode(robot, [&H](const auto& n) {  // the root's S swaps the halves of a force
    const auto couplings = H.block(0, n.dof_index, 6, n.dof_number);
    EXPECT_TRUE(identical(n.F.topRows(3), couplings.bottomRows(3))) << "node " << n.id;
    EXPECT_TRUE(identical(n.F.bottomRows(3), couplings.topRows(3))) << "node " << n.id;
  });
}

TEST_P(Dynamics, HooksCanBeCalledWithoutThePass) {
  using Crba = kinetra::crba<norvaX3, false>;
  const Eigen::MatrixXf expected = crba();
  Eigen::MatrixXf blocks = Eigen::MatrixXf::Constant(21, 21, untouched);
  Crba::MassMatrix H(blocks);
  depth_first_traversal<Crba::DftVisitor, norvaX3>::run(robot, H);
  EXPECT_TRUE(identical(blocks, expected));

  rnea(s.ddq);
  norvaX3 other = robot;
  spoil(other);
  forEachNode(robot, [&](const auto& n) {
    using Node = std::decay_t<decltype(n)>;
    using update = kinetra::rnea<norvaX3, false>::update_kinematics<Node::id, Node::parent_id>;
    update::run(other, s.ddq.template segment<Node::dof_number>(Node::dof_index));
    const auto& updated = kinetra::node<Node::id>(other);
    EXPECT_TRUE(identical(Vector6f(updated.body.vi), Vector6f(n.body.vi))) << "node " << n.id;
    EXPECT_TRUE(identical(Vector6f(updated.body.ai), Vector6f(n.body.ai))) << "node " << n.id;
    EXPECT_TRUE(Vector6f(updated.joint.f).array().isNaN().all()) << "node " << n.id;
  });
}

TEST_P(Dynamics, TorquesAgreeWithNewtonAndEuler) { EXPECT_TRUE(near(rnea(s.ddq), whole.torques(), 4)); }

TEST_P(Dynamics, VelocityProductAccelerationOfAJointIsAddedToThatOfItsBody) {
  rnea(Vector21::Zero());
  auto& root = kinetra::node<0>(robot);
  const Vector6f without = root.body.ai, bias = s.dq.tail<6>();  // of an imagined joint
  root.joint.cj = kinetra::Spatial::Motion(bias);
  rnea(Vector21::Zero());
  EXPECT_TRUE(near(Vector6f(root.body.ai) - without, bias, 4e-6));
}

}  // namespace
