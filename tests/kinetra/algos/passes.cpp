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
#include <tools/accuracy/WholeRobot.hpp>
#include <tools/toFloats.hpp>

namespace {

using namespace lumo::test;
using namespace kinetra::internal;
using kinetra::norvaX3;
using Vector6f = Eigen::Matrix<float, 6, 1>;
using Vector21 = Scenario::Vector21;
using Matrix21 = Eigen::Matrix<float, 21, 21>;

TEST(FreeFlyerBodyJoint, TurnsByYawThenPitchThenRollInFixedProducts) {
  Random random(1);
  const Vector6f q = random.matrix<6>(3.0F), dq = random.matrix<6>();
  kinetra::FreeFlyerBodyJoint joint;
  joint.jcalc(q, dq);
  const auto turn = [&](int i) { return Eigen::AngleAxisf(q[3 + i], Eigen::Vector3f::Unit(i)); };
  EXPECT_TRUE(near(joint.Xj.E.matrix().transpose(), (turn(2) * turn(1) * turn(0)).matrix().cast<double>(), 1e-6));
  EXPECT_TRUE(identical(joint.Xj.r, q.head<3>()));
  EXPECT_TRUE(identical(joint.vj.angular(), dq.tail<3>()) && identical(joint.vj.linear(), dq.head<3>()));

  joint.jcalc_pos({0.0F, 0.0F, 0.0F, 1.94F, 1.48F, -2.28F});
  Eigen::Matrix3f expected;  // any other grouping of a product of three changes one of these
  expected << -0.0590480343F, -0.0688089356F, -0.995880842F, -0.87870419F, -0.469817132F, 0.0845616981F, -0.473700464F,
      0.880077958F, -0.0327209271F;
  EXPECT_TRUE(identical(joint.Xj.E.matrix(), expected));
  joint.jcalc_pos(Vector6f::Zero());
  expected << 1.0F, 0.0F, -0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F;
  EXPECT_TRUE(identical(joint.Xj.E.matrix(), expected));
}

TEST(Jcalc, BothPassesGiveTheSameBitsAndWriteNothingElse) {
  const Scenario s(2);
  norvaX3 full;
  spoil(full);
  forEachNode(full, [](auto& n) { n.joint.vj = kinetra::Spatial::Motion(Vector6f::Constant(7.0F)); });
  norvaX3 position_only = full;
  depth_first_traversal<JcalcVisitor, norvaX3>::run(full, s.q, s.dq);
  depth_first_traversal<JcalcPosVisitor, norvaX3>::run(position_only, s.q);

  std::array<Eigen::Matrix<float, 3, 8>, 16> transforms;
  for (norvaX3* robot : {&full, &position_only}) {
    forEachNode(*robot, [&](auto& n) {
      Eigen::Matrix<float, 3, 8> both;
      both << n.joint.Xj.E.matrix(), n.joint.Xj.r, n.sXp.E.matrix(), n.sXp.r;
      if (robot == &full) {
        transforms[n.id] = both;
        const Vector6f revolute{0.0F, 0.0F, s.dq[n.dof_index], 7.0F, 7.0F, 7.0F};  // the linear part is not written
        EXPECT_TRUE(n.id == 0 || identical(Vector6f(n.joint.vj), revolute));
      } else {
        EXPECT_TRUE(identical(both, transforms[n.id]));
        EXPECT_TRUE(identical(Vector6f(n.joint.vj), Vector6f::Constant(7.0F)));
      }
      const auto product = n.joint.Xj * n.Xt;
      EXPECT_TRUE(identical(n.sXp.E.matrix(), product.E.matrix()) && identical(n.sXp.r, Eigen::Vector3f(product.r)));
      EXPECT_TRUE(n.F.array().isNaN().all() && Vector6f(n.body.vi).array().isNaN().all());
      EXPECT_TRUE(Vector6f(n.joint.f).array().isNaN().all() && std::isnan(n.body.Iic.m));
      EXPECT_TRUE(identical(Vector6f(n.joint.cj), Vector6f::Zero()));
      EXPECT_TRUE(identical(n.joint.S.matrix(), decltype(n.joint.S)().matrix()));
    });
  }
}

TEST(Kinematics, AgreesWithGeometry) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    const Scenario s(seed);
    norvaX3 robot;
    std::array<lumo::SpatialTransform, 16> iX1;
    iX1[0] = {kinetra::Spatial::RotationMatrix(Eigen::Matrix3f::Identity()), {0.0F, 0.0F, 0.0F}};
    Eigen::Matrix<float, 6, Eigen::Dynamic> J = Eigen::Matrix<float, 6, 21>::Constant(nan_f);
    Eigen::Vector3f comSum = Eigen::Vector3f::Constant(nan_f);
    std::vector<OX::Math::Transform> poses(17);
    depth_first_traversal<JcalcPosVisitor, norvaX3>::run(robot, s.q);
    kinetra::fwd_kin_iX1<norvaX3>::run(robot, iX1.data(), J, comSum);
    lumo::invToOXMath(iX1[3], poses[16]);
    lumo::fwd_kin_H01_from_iX1<norvaX3>::run(robot, iX1.data(), poses);

    const oracle::WholeRobot expected(s.q);
    const auto inWorld = [&](std::size_t i) { return lumo::toMatrix(poses[i]); };
    Eigen::Array3f inOrder = norvaX3::inertias[0].h;
    for (std::size_t i = 0; i < 16; ++i) {
      SCOPED_TRACE(i);
      const auto E = iX1[i].E.matrix();
      Eigen::Matrix<float, 3, 4> inRoot;
      inRoot << E.transpose(), iX1[i].r;
      EXPECT_TRUE(near(inRoot, expected.poseInRoot(static_cast<int>(i)), 4));
      EXPECT_TRUE(near(inWorld(i), expected.poseInWorld(static_cast<int>(i)), 6));
      EXPECT_TRUE(i < 2 || i == 10 || identical(E.col(2), E.col(0).cross(E.col(1))));
      EXPECT_TRUE(i != 3 || identical(inWorld(16), inRoot)) << "there is no pose 16";
      if (i == 0) continue;
      // The order in which these are rounded is promised.
      const Eigen::Array3f x = E.row(0), y = E.row(1), z = E.row(2), r = iX1[i].r;
      const Eigen::Array3f a = (E.col(0).array() * r[0] + E.col(1).array() * r[1]) + E.col(2).array() * r[2];
      const auto column = J.col(norvaX3::dof_indexes[i]);
      EXPECT_TRUE(identical(column.head<3>(), z.matrix()));
      EXPECT_TRUE(identical(column.tail<3>(), (x * a[1] - y * a[0]).matrix()));
      const auto& [m, h, I] = norvaX3::inertias[i];
      inOrder += (((x * (h[0] / m) + y * (h[1] / m)) + z * (h[2] / m)) + r) * m;
    }
    EXPECT_TRUE(identical(comSum, inOrder.matrix()));
    EXPECT_TRUE(J.leftCols(6).array().isNaN().all());
    J.leftCols(6).setZero();
    EXPECT_TRUE(near(J, expected.jacobianInRoot(), 12));
    EXPECT_TRUE(near(comSum, expected.firstMomentInRoot(), 4));

    const auto comSumWithout = [&](int body) {
      Eigen::Vector3f sum = Eigen::Vector3f::Constant(nan_f);
      kinetra::partial_com<norvaX3>::run(robot, iX1.data(), body, sum);
      return sum;
    };
    for (int body = -1; body < 17; ++body) {
      const auto sum = comSumWithout(body);
      EXPECT_TRUE(body < 1 || body > 15 ? identical(sum, comSum) : near(sum, expected.firstMomentInRoot(body), 4))
          << body;
    }
    norvaX3::inertias[5] = kinetra::Spatial::Inertia::zero();  // its own centre of mass is no number
    EXPECT_TRUE(near(comSumWithout(5), expected.firstMomentInRoot(5), 4));
  }
}

TEST(Dynamics, AgreesWithNewtonAndEuler) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    const Scenario s(seed);
    norvaX3 robot;
    // Velocities are those of the last joint pass with velocities, positions those of the last of any kind.
    depth_first_traversal<JcalcVisitor, norvaX3>::run(robot, s.ddq, s.dq);
    depth_first_traversal<JcalcPosVisitor, norvaX3>::run(robot, s.q);
    const oracle::WholeRobot whole(s.q, s.dq, s.ddq, s.fext.data());

    Matrix21 partial;
    // Entries that couple two branches are not written.
    const Eigen::Array<bool, 21, 21> apart = whole.massMatrix().magnitude.array() == 0.0;
    for (const int excluded : {0, 7, 9, 12, 16}) {
      oracle::Estimate expected = whole.massMatrix(excluded);
      expected.value = apart.select(-7.0, expected.value);
      spoil(robot);
      partial.setConstant(-7.0F);
      kinetra::partial_crba<norvaX3>::run(robot, partial, excluded);
      EXPECT_TRUE(near(partial, expected, 10)) << excluded;
      EXPECT_TRUE(identical(partial, partial.transpose()));
    }
    spoil(robot);
    Eigen::MatrixXf large = Eigen::MatrixXf::Constant(30, 25, -7.0F);
    auto H = large.block(2, 3, 21, 21);
    kinetra::crba<norvaX3, false>::run(robot, H);
    EXPECT_TRUE(identical(H, partial));
    EXPECT_EQ(H(12, 12), norvaX3::inertias[7].I[5]);
    forEachNode(robot, [&](const auto& n) {  // F has come to the root, whose S only swaps its halves
      const auto couplings = H.block(0, n.dof_index, 6, n.dof_number);
      EXPECT_TRUE(identical(n.F.topRows(3), couplings.bottomRows(3))) << n.id;
      EXPECT_TRUE(identical(n.F.bottomRows(3), couplings.topRows(3))) << n.id;
    });

    const auto inverseDynamics = [&](const Vector21& ddq) {
      spoil(robot);
      Vector21 torques = Vector21::Constant(nan_f);
      kinetra::rnea<norvaX3, false>::run(robot, ddq, s.fext.data(), torques);
      return torques;
    };
    const Vector21 torques = inverseDynamics(s.ddq), bias = inverseDynamics(Vector21::Zero());
    EXPECT_TRUE(near(torques, whole.torques(), 4));
    const Vector6f a0 = kinetra::node<0>(robot).body.ai, c0 = s.dq.tail<6>();  // the bias of an imagined joint
    kinetra::node<0>(robot).joint.cj = kinetra::Spatial::Motion(c0);
    inverseDynamics(Vector21::Zero());
    EXPECT_TRUE(near(kinetra::node<0>(robot).body.ai.linear() - a0.tail<3>(), c0.tail<3>().cast<double>(), 4e-6));
    const Vector21 inertial = (H.array() == -7.0F).select(0.0F, H) * s.ddq;
    EXPECT_TRUE(near(torques - bias, oracle::Estimate{inertial.cast<double>(), whole.torques().magnitude}, 4));
  }
}

}  // namespace
