#include <tests/plugin/support.hpp>

// A host compiled against a declaration of the interface of its own: the order of the virtual functions and their types
// are all that ties it to the plug-in.

using namespace lumo::test;
using OX::Math::Position3D, OX::Math::Transform, OX::Math::Velocity6D;
using Size = std::size_t;
using String = std::string;
using Angles = Eigen::Ref<const Eigen::ArrayXf>;
using Table = std::vector<std::int64_t>;
using View = lumo::FloatView;
using Wrench = std::vector<float>;

// Outside any unnamed namespace, where a compiler could tell that nothing implements it.
struct Host {
  virtual ~Host() = default;
  virtual std::unique_ptr<Host> slot02_clone() const = 0;
  virtual String slot03_name() const = 0;
  virtual Size slot04_nbJoints() const = 0, slot05_nbBodies() const = 0, slot06_nbFrames() const = 0;
  virtual const String &slot07_rootName() const = 0, &slot08_jointName(Size) const = 0;
  virtual Size slot09_jointId(const String&) const = 0;
  virtual const String& slot10_bodyName(Size) const = 0;
  virtual Size slot11_bodyId(const String&) const = 0;
  virtual void slot12_setBodyInertia(Size, float, const Position3D&, const Eigen::Matrix3f&) = 0;
  virtual float slot13_mass() const = 0, slot14_partialMass(Size) const = 0, slot15_massOf(Size) const = 0;
  virtual void slot16_setRootPose(const Transform&) = 0;
  virtual const Transform& slot17_rootPose() const = 0;
  virtual void slot18_setRootVel(const Velocity6D&) = 0, slot19_setRootAcc(const Velocity6D&) = 0;
  virtual Velocity6D slot20_rootVel() const = 0, slot21_rootAcc() const = 0;
  virtual void slot22_setPos(const Angles&) = 0, slot23_setVel(const Angles&) = 0, slot24_setAcc(const Angles&) = 0;
  virtual void slot25_setPos(Size, float) = 0, slot26_setVel(Size, float) = 0, slot27_setAcc(Size, float) = 0;
  virtual float slot28_pos(Size) const = 0, slot29_vel(Size) const = 0, slot30_acc(Size) const = 0;
  virtual View slot31_pos() const = 0, slot32_vel() const = 0, slot33_acc() const = 0;
  virtual void slot34_setWrench(Size, const Wrench&) = 0, slot35_setWrench(Size, const Wrench&, Transform) = 0;
  virtual void slot36_exceptRoot() = 0, slot37_onlyRoot() = 0, slot38_fwdKinematics() = 0, slot39_generalizedMass() = 0;
  virtual void slot40_partialComJacobian(Size, Jacobian&) = 0;
  virtual Position3D slot41_partialComInRoot(Size) = 0;
  virtual const Transform &slot42_poseInRoot(Size) const = 0, &slot43_pose(Size) const = 0;
  virtual void slot44_setPose(Size, const Transform&) = 0;
  virtual const Transform& slot45_volatilePose(Size) const = 0;
  virtual void slot46_setVolatilePose(Size, const Transform&) = 0;
  virtual Position3D slot47_comOf(Size) const = 0;
  virtual const Position3D &slot48_comInRoot() const = 0, &slot49_com() const = 0;
  virtual const Eigen::MatrixXf& slot50_generalizedMass() const = 0;
  virtual const Eigen::Matrix<float, 6, Eigen::Dynamic>& slot51_jacobianInRoot() const = 0;
  virtual Table slot52_parents() const = 0, slot53_dofNumbers() const = 0, slot54_dofIndexes() const = 0;
  virtual void slot55_inverseDynamics() = 0;
  virtual float slot56_torque(Size) const = 0;
  virtual View slot57_torques() const = 0;
};

struct Slots : testing::Test {
  const lumo::Plugin::Object named = plugin().create();
  Host& host = *reinterpret_cast<Host*>(named.get());
};

TEST_F(Slots, NamesAndTables) {
  const char* const names[] = {
      "Torso",   "HeadYaw",  "HeadPitch", "LShoulderPitch", "LShoulderRoll", "LElbowYaw", "LElbowRoll", "LWristYaw",
      "HipRoll", "HipPitch", "KneePitch", "RShoulderPitch", "RShoulderRoll", "RElbowYaw", "RElbowRoll", "RWristYaw"};
  for (Size b = 0; b < nb_bodies; ++b) {
    EXPECT_EQ(host.slot10_bodyName(b), names[b]);
    EXPECT_EQ(host.slot11_bodyId(names[b]), b);
    EXPECT_EQ(b == 0 ? host.slot07_rootName() : host.slot08_jointName(b - 1), names[b]);
    EXPECT_EQ(b == 0 ? 0 : host.slot09_jointId(names[b]) + 1, b);
    EXPECT_EQ(host.slot14_partialMass(b), 27.824242F - host.slot15_massOf(b));
  }
  for (const String name : {"", "HeadYaw ", "headYaw", "Torso"}) {
    const String body = name == "Torso" ? "torso" : name;
    for (const bool joint : {true, false}) {
      try {
        ADD_FAILURE() << name << " is " << (joint ? host.slot09_jointId(name) : host.slot11_bodyId(body));
      } catch (const std::out_of_range& error) {
        EXPECT_EQ(error.what(), joint ? "no joint angle named \"" + name + "\"" : "no body named \"" + body + "\"");
      }
    }
  }
  EXPECT_EQ(host.slot03_name(), "");
  EXPECT_EQ(host.slot04_nbJoints() * 10000 + host.slot05_nbBodies() * 100 + host.slot06_nbFrames(), 151601U);
  EXPECT_EQ(host.slot52_parents(), (Table{-1, 0, 1, 0, 3, 4, 5, 6, 0, 8, 9, 0, 11, 12, 13, 14}));
  EXPECT_EQ(host.slot53_dofNumbers(), (Table{6, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(host.slot54_dofIndexes(), (Table{0, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
}

TEST_F(Slots, InputsAndResults) {
  const State x(60);
  const Transform mine = pose(x.q), &root = host.slot17_rootPose();
  const View views[] = {host.slot31_pos(), host.slot32_vel(), host.slot33_acc()};
  const Eigen::ArrayXf counted = Eigen::ArrayXf::LinSpaced(20, 0, 19);  // of which the first fifteen are taken
  host.slot16_setRootPose(mine);
  host.slot18_setRootVel({1, 2, 3, 4, 5, 6});
  host.slot19_setRootAcc({7, 8, 9, 10, 11, 12});
  host.slot22_setPos(counted);
  host.slot23_setVel(counted + 100);
  host.slot24_setAcc(counted + 200);
  for (Size k = 0; k < 15; ++k) {
    const float pos = host.slot28_pos(k), vel = host.slot29_vel(k), acc = host.slot30_acc(k);
    EXPECT_TRUE(pos == static_cast<float>(k) && vel == pos + 100 && acc == pos + 200) << k;
    host.slot25_setPos(k, pos / 16);
    host.slot26_setVel(k, vel / 16);
    host.slot27_setAcc(k, acc / 16);
    EXPECT_TRUE(views[0][k] == pos / 16 && views[1][k] == vel / 16 && views[2][k] == acc / 16) << k;
  }
  for (const View& view : views) EXPECT_EQ(view.size(), 15U);
  EXPECT_TRUE(near(vector(root), vector(mine), 2 * epsilon));
  EXPECT_TRUE(near(vector(host.slot20_rootVel()), Eigen::VectorXd::LinSpaced(6, 1, 6), 0));
  EXPECT_TRUE(near(vector(host.slot21_rootAcc()), Eigen::VectorXd::LinSpaced(6, 7, 12), 0));

  host.slot34_setWrench(1, x.wrenches[1]);
  host.slot35_setWrench(2, x.wrenches[2], mine);
  const auto clone = host.slot02_clone();
  compute(*named);
  const auto same = [](const auto& a, const auto& b) { return lumo::toFloats(a) == lumo::toFloats(b); };
  clone->slot36_exceptRoot();
  EXPECT_TRUE(same(clone->slot48_comInRoot(), named->getComPositionInRoot()));
  EXPECT_TRUE(same(clone->slot49_com(), Position3D()));
  clone->slot37_onlyRoot();
  EXPECT_TRUE(same(clone->slot49_com(), named->getComPosition()));
  clone->slot44_setPose(5, mine);
  clone->slot46_setVolatilePose(0, mine);
  EXPECT_TRUE(same(clone->slot43_pose(5), mine));
  clone->slot38_fwdKinematics();
  EXPECT_TRUE(same(clone->slot43_pose(5), named->getPose(5)) && same(clone->slot45_volatilePose(0), mine));
  EXPECT_TRUE(same(clone->slot42_poseInRoot(5), named->getPoseInRoot(5)));
  EXPECT_TRUE(same(clone->slot47_comOf(5), named->getComPosition(5)));
  EXPECT_TRUE(same(clone->slot41_partialComInRoot(5), named->computePartialComPositionInRoot(5)));
  clone->slot39_generalizedMass();
  EXPECT_EQ(clone->slot50_generalizedMass(), named->getGeneralizedMass());
  EXPECT_EQ(clone->slot51_jacobianInRoot(), named->getJacobianInRoot());
  Jacobian J;
  clone->slot40_partialComJacobian(5, J);
  EXPECT_NEAR(J.col(0).norm(), host.slot14_partialMass(5), 1e-4F);
  clone->slot55_inverseDynamics();
  EXPECT_EQ(clone->slot57_torques()[1], named->getJointAngleTorque(1));
  EXPECT_EQ(clone->slot56_torque(1), named->getJointAngleTorque(1));

  // With the mass as it was no other test notices, though the change stays.
  host.slot12_setBodyInertia(9, host.slot15_massOf(9), Position3D(), Eigen::Matrix3f::Identity());
  EXPECT_EQ(host.slot13_mass(), 27.824242F);
  EXPECT_TRUE(vector(host.slot47_comOf(9)).isApprox(frame(host.slot43_pose(9)).translation()));
}
