#include <cstdint>

#include <tests/plugin/support.hpp>

// What the interface promises of a new object, and of how fresh, how independent and how shared each result is.

namespace {

using namespace lumo::test;
using lumo::toFloats, lumo::toMatrix;

/// All results by the computation that writes them, the root's world pose apart, which setRootPose writes too.
enum { inRoot, inWorld, mass, torques };
using Results = std::array<std::vector<float>, 4>;

Results results(const Host& system) {
  Results r;
  const auto append = [&r](std::size_t to, const auto& from) { r[to].insert(r[to].end(), from.begin(), from.end()); };
  for (Size b = 0; b < nb_bodies; ++b) append(inRoot, toFloats(system.getPoseInRoot(b)));
  append(inRoot, toFloats(system.getComPositionInRoot()));
  append(inRoot, system.getJacobianInRoot().reshaped());
  for (Size b = 1; b < nb_bodies; ++b) append(inWorld, toFloats(system.getPose(b)));
  append(inWorld, toFloats(system.getComPosition()));
  append(mass, system.getGeneralizedMass().reshaped());
  append(torques, system.getJointAnglesTorque());
  return r;
}

TEST(Contract, NewObject) {
  const auto system = create();
  lumo::Plugin(LUMO_PLUGIN).create().get_deleter().destroy(nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(system.get()) % 16, 0U);
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(6, 21);
  J.block(3, 0, 3, 3) = J.block(0, 3, 3, 3) = Eigen::Matrix3d::Identity();
  EXPECT_TRUE(near(system->getJacobianInRoot(), J, 0));
  EXPECT_TRUE(near(system->getGeneralizedMass(), Eigen::MatrixXd::Zero(21, 21), 0));
  EXPECT_TRUE(toMatrix(system->getRootVelocity()).isZero(0) && toMatrix(system->getRootAcceleration()).isZero(0));
  EXPECT_TRUE(toMatrix(system->getJointAnglesPos()).isZero(0) && toMatrix(system->getJointAnglesVel()).isZero(0));
  EXPECT_TRUE(toMatrix(system->getJointAnglesAcc()).isZero(0) && toMatrix(system->getJointAnglesTorque()).isZero(0));
  for (Size b = 0; b < nb_bodies; ++b) {
    for (const auto* T : {&system->getPose(b), &system->getPoseInRoot(b), &system->getVolatilePose(0)}) {
      EXPECT_TRUE(frame(*T).matrix().isIdentity(0)) << b;
    }
  }
  // Before any computation in the root's frame the other bodies have no rotation at all.
  system->computeFwdKinematicsOnlyRoot();
  for (Size b = 1; b < nb_bodies; ++b) EXPECT_TRUE(frame(system->getPose(b)).linear().isZero(0)) << b;
}

TEST(Contract, Names) {
  const auto system = create();
  const char* const names[] = {
      "Torso",   "HeadYaw",  "HeadPitch", "LShoulderPitch", "LShoulderRoll", "LElbowYaw", "LElbowRoll", "LWristYaw",
      "HipRoll", "HipPitch", "KneePitch", "RShoulderPitch", "RShoulderRoll", "RElbowYaw", "RElbowRoll", "RWristYaw"};
  for (Size b = 0; b < nb_bodies; ++b) {
    EXPECT_EQ(system->getBodyName(b), names[b]);
    EXPECT_EQ(system->getBodyId(names[b]), b);
    EXPECT_EQ(b == 0 ? system->getRootName() : system->getJointAngleName(b - 1), names[b]);
    EXPECT_EQ(b == 0 ? 0 : system->getJointAngleId(names[b]) + 1, b);
    EXPECT_EQ(system->getPartialMass(b), 27.824242F - system->getMass(b));
  }
  for (const std::string name : {"", "HeadYaw ", "headYaw", "Torso"}) {
    const std::string body = name == "Torso" ? "torso" : name;
    for (const bool joint : {true, false}) {
      try {
        ADD_FAILURE() << name << " is " << (joint ? system->getJointAngleId(name) : system->getBodyId(body));
      } catch (const std::out_of_range& error) {
        EXPECT_EQ(error.what(), joint ? "no joint angle named \"" + name + "\"" : "no body named \"" + body + "\"");
      }
    }
  }
  EXPECT_EQ(system->getName(), "");
  EXPECT_EQ(system->getNbJointAngles() * 10000 + system->getNbBodies() * 100 + system->getNbVolatileFrames(), 151601U);
  EXPECT_EQ(system->getParentsVector(), (Table{-1, 0, 1, 0, 3, 4, 5, 6, 0, 8, 9, 0, 11, 12, 13, 14}));
  EXPECT_EQ(system->getDofNumbersVector(), (Table{6, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(system->getDofIndexesVector(), (Table{0, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
}

TEST(Contract, Inputs) {
  const auto system = create();
  const Transform mine = State(1).rootPose(), &root = system->getRootPose();
  const lumo::FloatView views[] = {system->getJointAnglesPos(), system->getJointAnglesVel(),
                                   system->getJointAnglesAcc()};
  const Eigen::ArrayXf counted = Eigen::ArrayXf::LinSpaced(20, 0, 19);  // of which the first fifteen are taken
  system->setRootPose(mine);
  system->setRootVelocity({1, 2, 3, 4, 5, 6});
  system->setRootAcceleration({7, 8, 9, 10, 11, 12});
  system->setJointAnglesPos(counted);
  system->setJointAnglesVel(counted + 100);
  system->setJointAnglesAcc(counted + 200);
  for (Size k = 0; k < 15; ++k) {
    const float pos = system->getJointAnglePos(k), vel = system->getJointAngleVel(k), acc = system->getJointAngleAcc(k);
    EXPECT_TRUE(pos == static_cast<float>(k) && vel == pos + 100 && acc == pos + 200) << k;
    system->setJointAnglePos(k, pos / 16);
    system->setJointAngleVel(k, vel / 16);
    system->setJointAngleAcc(k, acc / 16);
    EXPECT_TRUE(views[0][k] == pos / 16 && views[1][k] == vel / 16 && views[2][k] == acc / 16) << k;
  }
  for (const auto& view : views) EXPECT_EQ(view.size(), 15U);
  EXPECT_TRUE(near(toMatrix(root), toMatrix(mine), 2 * epsilon));
  EXPECT_TRUE(near(toMatrix(system->getRootVelocity()), Eigen::VectorXd::LinSpaced(6, 1, 6), 0));
  EXPECT_TRUE(near(toMatrix(system->getRootAcceleration()), Eigen::VectorXd::LinSpaced(6, 7, 12), 0));
}

TEST(Contract, ResultsAreAsFreshAsTheirComputation) {
  const State before(2), after(3);
  const auto system = computed(before), reference = computed(after);
  const Results fresh = results(*reference);
  Results expected = results(*system);
  set(*system, after);
  EXPECT_EQ(results(*system), expected);

  // The root computation carries the old root-relative poses along, and the mass matrices know nothing newer.
  system->computeFwdKinematicsOnlyRoot();
  system->computeGeneralizedMass();
  expected[inWorld] = results(*system)[inWorld];
  EXPECT_EQ(results(*system), expected);
  const Eigen::Affine3d root = frame(after.rootPose());
  for (Size b = 0; b < nb_bodies; ++b) {
    const Eigen::Affine3d old = root * frame(system->getPoseInRoot(b));
    EXPECT_TRUE(near(frame(system->getPose(b)).matrix(), old.matrix(), 8 * epsilon)) << b;
  }
  Jacobian J;
  system->computePartialComJacobian(5, J);
  EXPECT_TRUE(near(J.leftCols(3) / system->getPartialMass(5), root.linear(), 8 * epsilon));

  // Inverse dynamics brings its own configuration, which the mass matrices take over and the poses do not.
  system->computeInverseDynamics();
  system->computeGeneralizedMass();
  system->computeFwdKinematicsOnlyRoot();
  expected[torques] = fresh[torques];
  expected[mass] = fresh[mass];
  EXPECT_EQ(results(*system), expected);

  // What is in the root's frame is brought up to date without the world, and then the world for any root. What the host
  // sets a pose to is never used.
  system->setRootPose(before.rootPose());
  system->computeFwdKinematicsExceptRoot();
  expected[inRoot] = fresh[inRoot];
  EXPECT_EQ(results(*system), expected);
  system->setPose(0, after.rootPose());
  system->setVolatilePose(0, after.rootPose());
  EXPECT_EQ(toFloats(system->getRootPose()), toFloats(after.rootPose()));
  system->computeFwdKinematicsOnlyRoot();
  reference->setRootPose(before.rootPose());
  reference->computeFwdKinematics();
  EXPECT_EQ(results(*system), results(*reference));
  EXPECT_EQ(toFloats(system->getRootPose()), toFloats(reference->getPose(0)));
  EXPECT_EQ(toFloats(system->getVolatilePose(0)), toFloats(after.rootPose()));
  EXPECT_TRUE(frame(system->getPose(SIZE_MAX)).matrix().isIdentity(0));
}

TEST(Contract, ObjectsAndClonesShareNothing) {
  const State x(7), other(8);
  const auto source = computed(other), reference = computed(x);
  const Results stale = results(*source);
  set(*source, x);
  const auto clone = source->clone();  // with the new inputs and the old results
  EXPECT_EQ(results(*clone), stale);
  compute(*clone);
  EXPECT_EQ(results(*clone), results(*reference));
  EXPECT_EQ(results(*source), stale);
  set(*clone, other);
  compute(*source);
  EXPECT_EQ(results(*source), results(*reference));
}

TEST(Contract, IndexesThatAreNoBody) {
  const auto system = computed(State(12));
  Jacobian J = Jacobian::Constant(3, 5, 7);
  for (const std::size_t none : {std::size_t{16}, (std::size_t{1} << 32) + 3, SIZE_MAX}) {
    system->computePartialComJacobian(none, J);
    EXPECT_EQ(J, Jacobian(Jacobian::Constant(3, 5, 7))) << none;
    EXPECT_EQ(system->getPartialMass(none), system->getMass()) << none;
    EXPECT_EQ(toFloats(system->computePartialComPositionInRoot(none)), toFloats(system->getComPosition())) << none;
  }
  EXPECT_EQ(toFloats(system->computePartialComPositionInRoot(0)), toFloats(system->getComPosition()));
  system->computePartialComJacobian(15, J);  // is one: the matrix grows, and keeps its storage from then on
  const Jacobian expected = J;
  const float* const storage = J.setConstant(NAN).data();
  system->computePartialComJacobian(15, J);
  EXPECT_EQ(J, expected);
  EXPECT_EQ(J.data(), storage);
}

TEST(Contract, MassesBelongToAllObjects) {
  // The changes stay in the process. Of the model's data other tests only know the masses, put back at the end.
  const auto system = create();
  const float mass0 = system->getMass(0), mass7 = system->getMass(7);
  const float changed = (5.62F - mass7) + 27.824242F;
  const auto other = system->clone();
  const Position3D com(0.1F, -0.2F, 0.3F);
  const Eigen::Matrix3f none = Eigen::Matrix3f::Zero();
  system->setBodyInertia(7, 5.62F, com, none);
  const auto later = system->clone();  // leaves the total alone
  EXPECT_EQ(other->getPartialMass(7), changed - 5.62F);
  EXPECT_EQ(system->getMass(), changed);
  const auto added = create();  // adds up the table again, for all, and gets something else for this mass
  float sum = 0;
  for (Size b = 0; b < nb_bodies; ++b) sum += system->getMass(b);
  EXPECT_NE(sum, changed);
  EXPECT_EQ(system->getMass(), sum);

  // The next computation sees the root's new share: mass, first moment, and, from the lower triangle, inertia.
  set(*other, State(20));
  system->setBodyInertia(0, 0, com, none);
  compute(*other);
  const Eigen::MatrixXf without = other->getGeneralizedMass();
  other->setBodyInertia(0, 5, com, (Eigen::Matrix3f() << 1, 99, 99, 0.25F, 2, 99, -0.5F, 0.75F, 3).finished());
  EXPECT_EQ(other->getGeneralizedMass(), without);
  other->computeGeneralizedMass();
  Eigen::MatrixXd cx(3, 3), I(3, 3), share = Eigen::MatrixXd::Zero(21, 21);
  cx << 0, -0.3, -0.2, 0.3, 0, -0.1, 0.2, 0.1, 0;
  I << 1, 0.25, -0.5, 0.25, 2, 0.75, -0.5, 0.75, 3;
  share.topLeftCorner(6, 6) << 5 * Eigen::Matrix3d::Identity(), -5 * cx, 5 * cx, I - 5 * cx * cx;
  EXPECT_TRUE(near(other->getGeneralizedMass() - without, share, 64 * epsilon));

  // A body without mass has no centre of mass, but results without that body have.
  const Eigen::Vector3f expected = toMatrix(other->computePartialComPositionInRoot(7));
  system->setBodyInertia(7, 0, com, none);
  compute(*other);
  EXPECT_FALSE(toMatrix(other->getComPositionInRoot()).allFinite());
  EXPECT_TRUE(near(toMatrix(other->computePartialComPositionInRoot(7)), expected, 4 * epsilon));
  system->setBodyInertia(0, mass0, com, none);
  system->setBodyInertia(7, mass7, com, none);
}

}  // namespace
