#include <cerrno>
#include <fstream>
#include <functional>

#include <tests/plugin/answers.hpp>
#include <tests/plugin/support.hpp>

// The allocation functions of this program, which the loaded plug-in uses too. They count their calls and the blocks
// that are not freed yet, and they fail on request.

namespace lumo::test {
namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);
std::size_t allocations = 0, blocks = 0;
std::size_t first_to_fail = none, last_to_fail = none;

bool fails() {
  ++allocations;
  if (allocations < first_to_fail || allocations > last_to_fail) return false;
  errno = ENOMEM;
  return true;
}
void* counted(void* block) {
  if (block != nullptr) ++blocks;
  return block;
}

}  // namespace
}  // namespace lumo::test

using lumo::test::fails, lumo::test::counted;

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): they are the C library's own.
void *__libc_malloc(std::size_t), *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void*, std::size_t), *__libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t n) noexcept { return fails() ? nullptr : counted(__libc_malloc(n)); }
void* calloc(std::size_t count, std::size_t n) noexcept { return fails() ? nullptr : counted(__libc_calloc(count, n)); }
void* aligned_alloc(std::size_t to, std::size_t n) noexcept {
  return fails() ? nullptr : counted(__libc_memalign(to, n));
}
void* realloc(void* block, std::size_t n) noexcept {
  if (block == nullptr) return malloc(n);
  return fails() ? nullptr : __libc_realloc(block, n);
}
int posix_memalign(void** block, std::size_t to, std::size_t n) noexcept {
  return (*block = aligned_alloc(to, n)) == nullptr ? ENOMEM : 0;
}
void free(void* block) noexcept {
  if (block != nullptr) --lumo::test::blocks;
  __libc_free(block);
}
}

namespace {

using namespace lumo::test;

template <class Call>
std::size_t allocationsIn(const Call& call) {
  const Size before = allocations;
  call();
  return allocations - before;
}

TEST(Allocation, HappensOnlyInDocumentedOperations) {
  const auto object = lumo::Plugin(LUMO_PLUGIN).create();
  RigidBodySystem& s = *object;
  const RandomState x(40);
  Jacobian J(3, 21);
  const auto setters = [&] {
    set(s, x);
    s.setJointAnglePos(1, 2);
    s.setJointAngleVel(1, 2);
    s.setJointAngleAcc(1, 2);
    s.setExternalWrench(1, x.wrenches[1], x.rootPose());
    s.setPose(1, x.rootPose());
    s.setVolatilePose(0, x.rootPose());
    s.setBodyInertia(7, 0.5F, Position3D(), Eigen::Matrix3f::Identity());
  };
  const auto computations = [&] {
    compute(s);
    for (const Size b : {0U, 3U, 16U}) {
      s.computePartialComJacobian(b, J);
      s.computePartialComPositionInRoot(b);
    }
  };
  for (const char* round : {"on a new object", "again"}) {
    EXPECT_EQ(allocationsIn(setters), 0U) << round;
    EXPECT_EQ(allocationsIn(computations), 0U) << round;
    forEachQuery([&s, round](const char* kind, auto query, auto... index) {
      EXPECT_EQ(allocationsIn([&] { (void)std::invoke(query, s, index...); }), 0U) << kind << ", " << round;
    });
  }
}

/// Lets each allocation of a call fail, alone and then together with all that follow it, and returns the number of
/// allocations. Each time the call must throw std::bad_alloc, leak no block and leave the object as it was.
std::size_t failedIn(
    RigidBodySystem& object, const std::function<void()>& call, const std::function<void()>& check = [] {}) {
  const Answers expected = answers(object);
  for (std::size_t k = 1;; ++k) {
    for (const bool alone : {true, false}) {
      SCOPED_TRACE("allocation " + std::to_string(k) + (alone ? " fails alone" : " fails with all that follow"));
      const std::size_t before = blocks;
      bool thrown = false;
      first_to_fail = allocations + k;
      last_to_fail = alone ? first_to_fail : none;
      try {
        call();
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      const bool failed = allocations >= first_to_fail;
      first_to_fail = none;
      EXPECT_EQ(thrown, failed) << "whether std::bad_alloc arrives";
      if (!failed) return k - 1;
      EXPECT_EQ(blocks, before) << "blocks";
      check();
    }
    EXPECT_TRUE(identical(answers(object), expected)) << "after allocation " << k << " failed";
  }
}

struct AllocationFailure : testing::Test {
  const lumo::Plugin plugin{LUMO_PLUGIN};
  const Object object = plugin.create();
  AllocationFailure() {
    set(*object, RandomState(41));
    compute(*object);
  }
};

TEST_F(AllocationFailure, ThrowsBadAllocWithoutLeak) {
  EXPECT_EQ(failedIn(*object, [&] { plugin.create(); }), 6U);
  EXPECT_EQ(failedIn(*object, [&] { object->clone(); }), 6U);
  EXPECT_EQ(failedIn(*object, [&] { object->getParentsVector(); }), 1U);
  EXPECT_EQ(failedIn(*object, [&] { object->getDofNumbersVector(); }), 1U);
  EXPECT_EQ(failedIn(*object, [&] { object->getDofIndexesVector(); }), 1U);
  EXPECT_EQ(failedIn(*object, [&] { object->getName(); }), 0U);
}

TEST_F(AllocationFailure, InThePartialJacobianThrowsBadAllocAndDoesNotChangeTheMatrix) {
  for (const Eigen::Index columns : {0, 20, 22}) {
    const Jacobian old = Jacobian::Constant(3, columns, 7);
    Jacobian J = old;
    const auto compute = [&] { object->computePartialComJacobian(1, J); };
    EXPECT_EQ(failedIn(*object, compute, [&] { EXPECT_TRUE(identical(J, old)); }), 1U) << columns << " columns";
  }
}

bool isLoaded() {
  std::ifstream maps("/proc/self/maps");
  return std::string(std::istreambuf_iterator<char>(maps), {}).find("norvaX3.so") != std::string::npos;
}

TEST(Unloading, FreesAllMemory) {
  const RandomState x(42);
  std::size_t before = 0;
  for (int cycle = 0; cycle < 1000; ++cycle) {
    {
      const auto object = lumo::Plugin(LUMO_PLUGIN).create();
      set(*object, x);
      compute(*object);
      compute(*object->clone());
      ASSERT_TRUE(isLoaded());
    }
    ASSERT_FALSE(isLoaded()) << "after cycle " << cycle;
    if (cycle == 9) before = blocks;  // the loader has allocated its own tables by then
  }
  EXPECT_EQ(blocks, before);
}

}  // namespace
