#include <cstdint>

#include <tests/plugin/support.hpp>

// What the interface promises of a new object, and of how fresh, how independent and how shared each result is.

namespace {

using namespace lumo::test;
using lumo::toFloats;

/// All results by the computation that writes them, the root's world pose apart, which setRootPose writes too.
enum { inRoot, inWorld, mass, torques };
using Results = std::array<std::vector<float>, 4>;

Results results(const lumo::RigidBodySystem& system) {
  Results r;
  const auto append = [&r](std::size_t to, const auto& from) { r[to].insert(r[to].end(), from.begin(), from.end()); };
  for (std::size_t b = 0; b < nb_bodies; ++b) append(inRoot, toFloats(system.getPoseInRoot(b)));
  append(inRoot, toFloats(system.getComPositionInRoot()));
  append(inRoot, system.getJacobianInRoot().reshaped());
  for (std::size_t b = 1; b < nb_bodies; ++b) append(inWorld, toFloats(system.getPose(b)));
  append(inWorld, toFloats(system.getComPosition()));
  append(mass, system.getGeneralizedMass().reshaped());
  append(torques, system.getJointAnglesTorque());
  return r;
}

TEST(Contract, NewObject) {
  const auto system = plugin().create();
  system.get_deleter().destroy(nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(system.get()) % 16, 0U);
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(6, 21);
  J.block(3, 0, 3, 3) = J.block(0, 3, 3, 3) = Eigen::Matrix3d::Identity();
  EXPECT_TRUE(near(system->getJacobianInRoot(), J, 0));
  EXPECT_TRUE(near(system->getGeneralizedMass(), Eigen::MatrixXd::Zero(21, 21), 0));
  EXPECT_TRUE(vector(system->getRootVelocity()).isZero(0) && vector(system->getRootAcceleration()).isZero(0));
  for (const auto& view : {system->getJointAnglesPos(), system->getJointAnglesVel(), system->getJointAnglesAcc(),
                           system->getJointAnglesTorque()}) {
    EXPECT_TRUE(near(vector(view), Eigen::VectorXd::Zero(15), 0));
  }
  for (std::size_t b = 0; b < nb_bodies; ++b) {
    for (const auto* T : {&system->getPose(b), &system->getPoseInRoot(b), &system->getVolatilePose(0)}) {
      EXPECT_TRUE(frame(*T).matrix().isIdentity(0)) << b;
    }
  }
  // Before any computation in the root's frame the other bodies have no rotation at all.
  system->computeFwdKinematicsOnlyRoot();
  for (std::size_t b = 1; b < nb_bodies; ++b) EXPECT_TRUE(frame(system->getPose(b)).linear().isZero(0)) << b;
}

TEST(Contract, ResultsAreAsFreshAsTheirComputation) {
  const State before(2), after(3);
  const auto system = computed(before), reference = computed(after);
  const Results fresh = results(*reference);
  Results expected = results(*system);
  set(*system, after);
  system->computeGeneralizedMass();
  EXPECT_EQ(results(*system), expected);

  // Inverse dynamics brings its own configuration, which the mass matrices take over and the poses do not.
  system->computeInverseDynamics();
  expected[torques] = fresh[torques];
  system->computeGeneralizedMass();
  expected[mass] = fresh[mass];
  EXPECT_EQ(results(*system), expected);

  // The new root carries the old root-relative poses.
  system->computeFwdKinematicsOnlyRoot();
  for (std::size_t b = 0; b < nb_bodies; ++b) {
    const Eigen::Affine3d old = frame(pose(after.q)) * frame(system->getPoseInRoot(b));
    EXPECT_TRUE(near(frame(system->getPose(b)).matrix(), old.matrix(), 8 * epsilon)) << b;
  }
  expected[inWorld] = results(*system)[inWorld];
  system->computeFwdKinematicsExceptRoot();
  expected[inRoot] = fresh[inRoot];
  EXPECT_EQ(results(*system), expected);

  // A moved root takes the root computation only. What the host sets a pose to is overwritten, and not used.
  system->setRootPose(pose(before.q));
  system->setPose(0, pose(after.q));
  EXPECT_EQ(toFloats(system->getRootPose()), toFloats(pose(after.q)));
  system->computeFwdKinematicsOnlyRoot();
  reference->setRootPose(pose(before.q));
  reference->computeFwdKinematics();
  EXPECT_EQ(results(*system), results(*reference));
  EXPECT_EQ(toFloats(system->getRootPose()), toFloats(reference->getPose(0)));
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
  // Changes the model for the rest of the process. Other tests hold for any mass properties; what they need is put back
  // at the end, the masses.
  const auto system = plugin().create();
  const float mass0 = system->getMass(0), mass7 = system->getMass(7);
  const float changed = (5.65F - mass7) + 27.824242F;
  const auto other = system->clone();
  const OX::Math::Position3D com(0.1F, -0.2F, 0.3F);
  const Eigen::Matrix3f none = Eigen::Matrix3f::Zero();
  system->setBodyInertia(7, 5.65F, com, none);
  const auto later = system->clone();  // leaves the total alone
  EXPECT_EQ(system->getMass(), changed);
  EXPECT_EQ(other->getPartialMass(7), changed - 5.65F);
  const auto added = plugin().create();  // adds up the table again, for all, and gets something else for this mass
  float sum = 0;
  for (std::size_t b = 0; b < nb_bodies; ++b) sum += system->getMass(b);
  EXPECT_NE(sum, changed);
  EXPECT_EQ(system->getMass(), sum);

  // The next computation sees the root's new share: mass, first moment, and, from the lower triangle, inertia.
  set(*other, State(20));
  system->setBodyInertia(0, 0, com, none);
  compute(*other);
  const Eigen::MatrixXf without = other->getGeneralizedMass();
  system->setBodyInertia(0, 5, com, (Eigen::Matrix3f() << 1, 99, 99, 0.25F, 2, 99, -0.5F, 0.75F, 3).finished());
  EXPECT_EQ(other->getGeneralizedMass(), without);
  other->computeGeneralizedMass();
  Eigen::MatrixXd cx(3, 3), I(3, 3), share = Eigen::MatrixXd::Zero(21, 21);
  cx << 0, -0.3, -0.2, 0.3, 0, -0.1, 0.2, 0.1, 0;
  I << 1, 0.25, -0.5, 0.25, 2, 0.75, -0.5, 0.75, 3;
  share.topLeftCorner(6, 6) << 5 * Eigen::Matrix3d::Identity(), -5 * cx, 5 * cx, I - 5 * cx * cx;
  EXPECT_TRUE(near(other->getGeneralizedMass() - without, share, 64 * epsilon));

  // A body without mass has no centre of mass, but results without that body have.
  const Eigen::Vector3d expected = vector(other->computePartialComPositionInRoot(7));
  system->setBodyInertia(7, 0, com, none);
  compute(*other);
  EXPECT_FALSE(vector(other->getComPositionInRoot()).allFinite());
  EXPECT_TRUE(near(vector(other->computePartialComPositionInRoot(7)), expected, 4 * epsilon));
  system->setBodyInertia(0, mass0, com, none);
  system->setBodyInertia(7, mass7, com, none);
}

}  // namespace
