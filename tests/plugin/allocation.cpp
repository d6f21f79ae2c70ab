#include <cerrno>

#include <tests/plugin/support.hpp>

// The allocation functions of this program, which the loaded plug-in gets too, count their calls.

static std::size_t allocations = 0;

extern "C" {
void *__libc_malloc(std::size_t), *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void*, std::size_t), *__libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t size) noexcept { return ++allocations, __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) noexcept { return ++allocations, __libc_calloc(count, size); }
void* realloc(void* memory, std::size_t size) noexcept { return ++allocations, __libc_realloc(memory, size); }
void* aligned_alloc(std::size_t to, std::size_t size) noexcept { return ++allocations, __libc_memalign(to, size); }
int posix_memalign(void** memory, std::size_t to, std::size_t size) noexcept {
  return (*memory = aligned_alloc(to, size)) == nullptr ? ENOMEM : 0;
}
}

namespace {

using namespace lumo::test;

template <class Call>
std::size_t allocationsIn(const Call& call) {
  const std::size_t before = allocations;
  call();
  return allocations - before;
}

TEST(Allocation, OnlyWhereTheInterfaceSaysSo) {
  const auto object = plugin().create();
  const State x(40);
  const std::string name = "RShoulderPitch";
  Jacobian J(3, 21);
  const auto setters = [&, &s = *object] {
    set(s, x);
    s.setJointAnglePos(1, 2), s.setJointAngleVel(1, 2), s.setJointAngleAcc(1, 2);
    s.setExternalWrench(1, x.wrenches[1], pose(x.q)), s.setPose(1, pose(x.q)), s.setVolatilePose(0, pose(x.q));
    s.setBodyInertia(7, 0.5F, {}, Eigen::Matrix3f::Identity());
  };
  const auto computations = [&, &s = *object] {
    compute(s);
    for (std::size_t b : {0U, 3U, 16U}) s.computePartialComJacobian(b, J), s.computePartialComPositionInRoot(b);
  };
  const auto queries = [&, &s = *object] {
    (void)s.getRootName(), s.getBodyName(1), s.getJointAngleName(1), s.getBodyId(name), s.getJointAngleId(name);
    (void)s.getRootPose(), s.getPose(1), s.getPoseInRoot(1), s.getVolatilePose(0), s.getComPosition(1);
    (void)s.getComPosition(), s.getComPositionInRoot(), s.getGeneralizedMass(), s.getJacobianInRoot();
    (void)s.getJointAnglesPos(), s.getJointAnglesVel(), s.getJointAnglesAcc(), s.getJointAnglesTorque();
  };
  for (const char* round : {"on a new object", "again"}) {
    EXPECT_EQ(allocationsIn(setters), 0U) << round;
    EXPECT_EQ(allocationsIn(computations), 0U) << round;
    EXPECT_EQ(allocationsIn(queries), 0U) << round;
  }
  // Those that there are do count, by operator new and by Eigen.
  EXPECT_GE(allocationsIn([&] { object->clone(); }), 6U);
  EXPECT_EQ(allocationsIn([&] { object->getParentsVector(); }), 1U);
  J.resize(3, 20);
  EXPECT_EQ(allocationsIn([&] { object->computePartialComJacobian(1, J); }), 1U);
}

}  // namespace
