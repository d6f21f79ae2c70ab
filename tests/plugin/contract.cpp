#include <cstdint>

#include <tests/plugin/support.hpp>

// The promises of the interface about new objects, names, inputs, copies and indexes.

namespace {

using namespace lumo::test;

TEST(Contract, NewObjectHasIdentityPosesAndZeroInputsAndResults) {
  const auto system = create();
  for (Size b = 0; b < nb_bodies; ++b) {
    EXPECT_TRUE(identical(frame(system->getPose(b)).matrix(), Eigen::Matrix4d::Identity())) << "body " << b;
    EXPECT_TRUE(identical(frame(system->getPoseInRoot(b)).matrix(), Eigen::Matrix4d::Identity())) << "body " << b;
  }
  EXPECT_TRUE(identical(frame(system->getVolatilePose(0)).matrix(), Eigen::Matrix4d::Identity()));
  const Eigen::VectorXd none = Eigen::VectorXd::Zero(15);
  EXPECT_TRUE(identical(system->getRootVelocity(), none.head(6)));
  EXPECT_TRUE(identical(system->getRootAcceleration(), none.head(6)));
  EXPECT_TRUE(identical(system->getJointAnglesPos(), none));
  EXPECT_TRUE(identical(system->getJointAnglesVel(), none));
  EXPECT_TRUE(identical(system->getJointAnglesAcc(), none));
  EXPECT_TRUE(identical(system->getJointAnglesTorque(), none));
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(6, 21);
  J.block(3, 0, 3, 3) = J.block(0, 3, 3, 3) = Eigen::Matrix3d::Identity();
  EXPECT_TRUE(identical(system->getJacobianInRoot(), J));
  EXPECT_TRUE(identical(system->getGeneralizedMass(), Eigen::MatrixXd::Zero(21, 21)));
}

TEST(Contract, DestroyIgnoresNull) {
  const auto object = create();  // keeps the plug-in loaded
  const auto destroy =
      reinterpret_cast<void (*)(RigidBodySystem*)>(dlsym(dlopen(LUMO_PLUGIN, RTLD_NOW | RTLD_NOLOAD), "destroy"));
  ASSERT_NE(destroy, nullptr);
  destroy(nullptr);
}

TEST(Contract, OnlyRootOnANewObjectSetsZeroRotationMatrices) {
  const auto system = create();
  system->computeFwdKinematicsOnlyRoot();
  for (Size b = 1; b < nb_bodies; ++b) EXPECT_TRUE(frame(system->getPose(b)).linear().isZero(0)) << "body " << b;
}

TEST(Contract, BodiesAndJointAnglesAreFoundByTheirNames) {
  const auto system = create();
  const char* const names[] = {
      "Torso",   "HeadYaw",  "HeadPitch", "LShoulderPitch", "LShoulderRoll", "LElbowYaw", "LElbowRoll", "LWristYaw",
      "HipRoll", "HipPitch", "KneePitch", "RShoulderPitch", "RShoulderRoll", "RElbowYaw", "RElbowRoll", "RWristYaw"};
  EXPECT_EQ(system->getRootName(), names[0]);
  for (Size b = 0; b < nb_bodies; ++b) {
    EXPECT_EQ(system->getBodyName(b), names[b]);
    EXPECT_EQ(system->getBodyId(names[b]), b);
    if (b == 0) continue;
    EXPECT_EQ(system->getJointAngleName(b - 1), names[b]);
    EXPECT_EQ(system->getJointAngleId(names[b]), b - 1);
  }
}

TEST(Contract, NamesOutliveTheirObject) {
  const auto system = create(), other = create();
  EXPECT_EQ(&system->getRootName(), &other->getRootName());
  EXPECT_EQ(&system->getBodyName(3), &other->getBodyName(3));
  EXPECT_EQ(&system->getJointAngleName(3), &other->getJointAngleName(3));
}

TEST(Contract, ExceptionContainsTheUnknownName) {
  const auto system = create();
  const auto message = [](const auto& find) -> std::string {
    try {
      return "found: " + std::to_string(find());
    } catch (const std::out_of_range& error) {
      return error.what();
    }
  };
  for (const std::string name : {"", "HeadYaw ", "headYaw", "torso", "Torso"}) {
    EXPECT_EQ(message([&] { return system->getJointAngleId(name); }), "no joint angle named \"" + name + "\"");
    if (name == "Torso") continue;  // the root is a body without a joint angle
    EXPECT_EQ(message([&] { return system->getBodyId(name); }), "no body named \"" + name + "\"");
  }
}

TEST(Contract, SizesAndTablesDescribeTheTree) {
  const auto system = create();
  EXPECT_EQ(system->getName(), "");
  EXPECT_EQ(system->getNbJointAngles(), nb_joint_angles);
  EXPECT_EQ(system->getNbBodies(), nb_bodies);
  EXPECT_EQ(system->getNbVolatileFrames(), 1U);
  EXPECT_EQ(system->getParentsVector(), (Table{-1, 0, 1, 0, 3, 4, 5, 6, 0, 8, 9, 0, 11, 12, 13, 14}));
  EXPECT_EQ(system->getDofNumbersVector(), (Table{6, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(system->getDofIndexesVector(), (Table{0, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
}

TEST(Contract, RootInputsAreReturnedUpToRounding) {
  const auto system = create();
  const Transform mine = RandomState(1).rootPose(), &root = system->getRootPose();
  system->setRootPose(mine);
  system->setRootVelocity(Velocity6D(1, 2, 3, 4, 5, 6));
  system->setRootAcceleration(Velocity6D(7, 8, 9, 10, 11, 12));
  EXPECT_TRUE(near(root, mine, 2 * epsilon));
  EXPECT_TRUE(identical(system->getRootVelocity(), Eigen::VectorXd::LinSpaced(6, 1, 6)));
  EXPECT_TRUE(identical(system->getRootAcceleration(), Eigen::VectorXd::LinSpaced(6, 7, 12)));
}

TEST(Contract, JointInputsAndTorquesAreReturnedExactly) {
  using S = RigidBodySystem;
  struct Kind {
    const char* name;
    void (S::*setAll)(const Eigen::Ref<const Eigen::ArrayXf>&);
    void (S::*setOne)(Size, float);
    float (S::*one)(Size) const;
    FloatView (S::*all)() const;
  };
  const Kind kinds[] = {
      {"positions", &S::setJointAnglesPos, &S::setJointAnglePos, &S::getJointAnglePos, &S::getJointAnglesPos},
      {"velocities", &S::setJointAnglesVel, &S::setJointAngleVel, &S::getJointAngleVel, &S::getJointAnglesVel},
      {"accelerations", &S::setJointAnglesAcc, &S::setJointAngleAcc, &S::getJointAngleAcc, &S::getJointAnglesAcc},
  };
  const auto system = computed(RandomState(2));
  system->setRootVelocity(Velocity6D(1, 2, 3, 4, 5, 6));
  float first = 100;
  for (Size k = 0; k < nb_joint_angles; ++k) {
    EXPECT_TRUE(identical(system->getJointAngleTorque(k), system->getJointAnglesTorque()[k])) << "torque " << k;
  }
  for (const Kind& kind : kinds) {
    const FloatView view = ((*system).*kind.all)();
    const Eigen::ArrayXf numbers = Eigen::ArrayXf::LinSpaced(20, first, first + 19);  // fifteen are read
    ((*system).*kind.setAll)(numbers);
    EXPECT_TRUE(identical(view, numbers.head(15))) << kind.name;
    for (Size k = 0; k < nb_joint_angles; ++k) {
      EXPECT_TRUE(identical(((*system).*kind.one)(k), view[k])) << kind.name << ", joint angle " << k;
      ((*system).*kind.setOne)(k, -view[k]);
    }
    EXPECT_TRUE(identical(view, -numbers.head(15))) << kind.name;
    first += 100;
  }
  EXPECT_TRUE(identical(system->getJointAnglesPos(), Eigen::ArrayXf::LinSpaced(15, -100, -114)));
  EXPECT_TRUE(identical(system->getJointAnglesVel(), Eigen::ArrayXf::LinSpaced(15, -200, -214)));
  EXPECT_TRUE(identical(system->getRootVelocity(), Eigen::VectorXd::LinSpaced(6, 1, 6)));
}

TEST(Contract, FurtherValuesOfAWrenchAreIgnored) {
  const auto torques = [](const std::vector<float>& wrench) {
    const auto system = create();
    system->setExternalWrench(3, wrench);
    system->setExternalWrench(7, wrench, RandomState(6).rootPose());
    compute(*system);
    return toDoubles(system->getJointAnglesTorque());
  };
  EXPECT_TRUE(identical(torques({1, 2, 3, 4, 5, 6, NAN}), torques({1, 2, 3, 4, 5, 6})));
}

/// The names of the answers that differ between two lists.
std::string changes(const Answers& before, const Answers& after) {
  std::string names;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (!(before[i] == after[i])) names += before[i].what + "; ";
  }
  return names;
}

TEST(Contract, PoseFromSetPoseLastsUntilOnlyRootAndIsUsedByNoComputation) {
  const auto system = computed(RandomState(3));
  const Transform mine = RandomState(4).rootPose();
  system->computeFwdKinematics();
  const Answers before = answers(*system);
  system->setPose(3, mine);
  EXPECT_TRUE(identical(system->getPose(3), mine));
  EXPECT_EQ(changes(before, answers(*system)), "poses 3; bodyComs 3; ");
  system->setPose(0, mine);
  EXPECT_TRUE(identical(system->getRootPose(), mine));
  system->computeGeneralizedMass();
  system->computeInverseDynamics();
  system->computeFwdKinematicsOnlyRoot();
  EXPECT_EQ(changes(before, answers(*system)), "");
}

TEST(Contract, NoComputationReadsOrWritesTheVolatilePose) {
  const auto system = computed(RandomState(3));
  const Transform mine = RandomState(4).rootPose();
  const Answers before = answers(*system);
  system->setVolatilePose(0, mine);
  compute(*system);
  EXPECT_TRUE(identical(system->getVolatilePose(0), mine));
  EXPECT_EQ(changes(before, answers(*system)), "volatilePose; ");
}

TEST(Contract, CloneReturnsTheSameResultsIncludingOldOnes) {
  const auto source = computed(RandomState(8));
  set(*source, RandomState(7));
  source->setVolatilePose(0, RandomState(9).rootPose());
  source->computeFwdKinematicsExceptRoot();
  EXPECT_TRUE(identical(answers(*source->clone()), answers(*source)));
}

TEST(Contract, ObjectsAndClonesShareNoState) {
  const RandomState x(7), other(8);
  const auto source = computed(other), reference = computed(x);
  const Answers untouched = answers(*source);
  const auto clone = source->clone();
  set(*clone, x);
  compute(*clone);
  EXPECT_TRUE(identical(answers(*clone), answers(*reference)));
  EXPECT_TRUE(identical(answers(*source), untouched));
  set(*source, x);
  set(*clone, other);
  compute(*source);
  EXPECT_TRUE(identical(answers(*source), answers(*reference)));
}

TEST(Contract, InvalidBodyIndexMeansTheWholeRobotAndTheLargestTheWorld) {
  const auto system = computed(RandomState(12));
  for (const Size none : {Size{16}, (Size{1} << 32) + 3, SIZE_MAX}) {
    Jacobian J = Jacobian::Constant(3, 5, 7);
    system->computePartialComJacobian(none, J);
    EXPECT_TRUE(identical(J, Jacobian::Constant(3, 5, 7))) << "index " << none;
    EXPECT_TRUE(identical(system->getPartialMass(none), system->getMass())) << "index " << none;
    EXPECT_TRUE(identical(system->computePartialComPositionInRoot(none), system->getComPosition())) << "index " << none;
  }
  EXPECT_TRUE(identical(system->computePartialComPositionInRoot(0), system->getComPosition()));
  EXPECT_TRUE(identical(frame(system->getPose(SIZE_MAX)).matrix(), Eigen::Matrix4d::Identity()));
}

TEST(Contract, PartialJacobianResizesTheMatrixOnlyIfNeeded) {
  const auto system = computed(RandomState(12));
  Jacobian J = Jacobian::Constant(3, 5, 7);
  system->computePartialComJacobian(15, J);
  const Jacobian expected = J;
  const float* const storage = J.setConstant(NAN).data();
  system->computePartialComJacobian(15, J);
  EXPECT_TRUE(identical(J, expected));
  EXPECT_EQ(J.data(), storage);
}

}  // namespace
