#include <malloc.h>

#include <thread>

#include <tests/plugin/answers.hpp>
#include <tests/plugin/support.hpp>

namespace {

using namespace lumo::test;

/// The answers of an object and of its clones in several states, which depend on the seed.
Answers work(RigidBodySystem& system, unsigned seed) {
  Answers all;
  for (unsigned i = 0; i < 20; ++i) {
    set(system, RandomState(100 * seed + i));
    const auto clone = system.clone();
    compute(system);
    for (const Answers& more : {answers(system), answers(*clone)}) all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

// This test also runs under the thread sanitizer. The objects are created first, because creation must overlap nothing.
TEST(Threads, SeparateObjectsComputeTheSameBitsInParallel) {
  constexpr unsigned count = 4;
  std::vector<Object> objects;
  for (unsigned i = 0; i < count; ++i) objects.push_back(create());
  Answers together[count];
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < count; ++i) threads.emplace_back([&, i] { together[i] = work(*objects[i], i); });
  for (std::thread& thread : threads) thread.join();
  for (unsigned i = 0; i < count; ++i) EXPECT_TRUE(identical(together[i], work(*create(), i))) << "thread " << i;
}

// The thread sanitizer of gcc does not see every write, so this test compares the memory of the object, which includes
// the blocks behind the poses and the matrices.
TEST(Threads, QueriesDoNotWriteToTheObject) {
  const auto object = computed(RandomState(1));
  const RigidBodySystem& o = *object;
  const void* const blocks[] = {&o, &o.getPose(0), &o.getPoseInRoot(0), o.getJacobianInRoot().data(),
                                o.getGeneralizedMass().data()};
  const auto memory = [&blocks] {
    std::string all;
    for (const void* block : blocks) {
      all.append(static_cast<const char*>(block), malloc_usable_size(const_cast<void*>(block)));
    }
    return all;
  };
  const std::string before = memory();
  queries(o);
  EXPECT_TRUE(memory() == before);
}

TEST(Threads, CanQueryOneObjectAtTheSameTime) {
  const auto object = computed(RandomState(1));
  const Answers expected = queries(*object);
  Answers together[4];
  std::vector<std::thread> threads;
  for (Answers& mine : together) threads.emplace_back([&] { mine = queries(*object); });
  for (std::thread& thread : threads) thread.join();
  for (const Answers& mine : together) EXPECT_TRUE(identical(mine, expected));
}

}  // namespace
