// lumo-fuzz: takes bytes for a sequence of calls of the interface, with valid indexes and any floats, and makes them
// while the sanitizers watch. Only those calls may allocate that say so, and none may change the floating-point
// environment, its flags apart.
//
// A call is a letter from a to y, a digit for the object, and its arguments: an index is a byte; a float is a capital
// letter, for one of the values below, or any other byte and then the four of the float. Line breaks between calls are
// skipped; every other byte stands for something.

#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <sanitizer/allocator_interface.h>
#include <xmmintrin.h>

#include <models/norvaX3/norvaX3.hpp>
#include <tests/plugin/answers.hpp>

extern "C" lumo::RigidBodySystem* create();
extern "C" void destroy(lumo::RigidBodySystem* system);

namespace {

using lumo::test::answers;

std::size_t allocations = 0;

std::array<unsigned, 3> environment() {
  return {static_cast<unsigned>(std::fegetround()), static_cast<unsigned>(fegetexcept()),
          _mm_getcsr() & ~static_cast<unsigned>(_MM_EXCEPT_MASK)};
}

/// The bytes, read one argument after another; zeros when they run out.
struct Input {
  const std::uint8_t *next, *end;

  std::uint8_t byte() { return next == end ? std::uint8_t{0} : *next++; }
  std::size_t index(std::size_t size) { return byte() % size; }
  float number() {
    using Limits = std::numeric_limits<float>;
    constexpr float values['Z' - 'A' + 1] = {
        0,    -0.0F,  1,      -1,     0.3F,   -2.5F,  1.57079633F,        3.14159265F,        -7,
        1e5F, -3e7F,  1e15F,  1e19F,  -1e25F, 1e30F,  Limits::max(),      Limits::lowest(),   Limits::min(),
        1e8F, -1e-4F, 1e-20F, 1e-30F, 1e-40F, -1e38F, Limits::infinity(), Limits::quiet_NaN()};
    const std::uint8_t kind = byte();
    if (kind >= 'A' && kind <= 'Z') return values[kind - 'A'];
    return from(std::array{byte(), byte(), byte(), byte()}, float());
  }
  /// A value that consists of floats.
  template <class Value>
  Value value() {
    std::array<float, sizeof(Value) / sizeof(float)> numbers;
    for (float& x : numbers) x = number();
    return from(numbers, Value());
  }
  template <class Parts, class Value>
  static Value from(const Parts& parts, Value result) {
    std::memcpy(static_cast<void*>(&result), parts.data(), sizeof result);
    return result;
  }
};

struct Calls {
  static constexpr std::size_t bodies = 16;
  using Object = std::unique_ptr<lumo::RigidBodySystem>;
  using Pose = OX::Math::Transform;
  using Angles = Eigen::Array<float, 15, 1>;

  Object objects[3] = {Object(create()), Object(create()), Object(create())};
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  std::vector<float> wrench = std::vector<float>(6);

  void makeOne(Input& in) {
    const std::uint8_t letter = in.byte();
    if (letter == '\n') return;
    const char call = static_cast<char>('a' + (letter + 3) % 25);  // a letter from a to y stands for itself
    const bool mayAllocate = std::strchr("abuy", call) != nullptr || (call == 't' && J.cols() != 21);
    const std::size_t before = allocations;
    const auto same = environment();
    make(call, objects[in.index(3)], in);
    if ((mayAllocate || allocations == before) && environment() == same) return;
    std::fprintf(stderr, "ERROR: call %c allocates or changes the floating-point environment\n", call);
    std::abort();
  }

  void make(char call, Object& object, Input& in) {
    lumo::RigidBodySystem& o = *object;
    const std::size_t body = std::strchr("cjklmntvw", call) != nullptr ? in.index(bodies) : 0, joint = body % 15;
    if (call == 'm' || call == 'n') {
      for (float& x : wrench) x = in.number();
    }
    if (call == 'a') return destroy(object.release()), object.reset(create());
    if (call == 'b') return void(objects[in.index(3)] = o.clone());
    if (call == 'c') {
      const auto x = in.value<std::array<float, 4>>();
      return o.setBodyInertia(body, x[0], {x[1], x[2], x[3]}, in.value<Eigen::Matrix3f>());
    }
    if (call == 'd') return o.setRootPose(in.value<Pose>());
    if (call == 'e') return o.setRootVelocity(in.value<OX::Math::Velocity6D>());
    if (call == 'f') return o.setRootAcceleration(in.value<OX::Math::Velocity6D>());
    if (call == 'g') return o.setJointAnglesPos(in.value<Angles>());
    if (call == 'h') return o.setJointAnglesVel(in.value<Angles>());
    if (call == 'i') return o.setJointAnglesAcc(in.value<Angles>());
    if (call == 'j') return o.setJointAnglePos(joint, in.number());
    if (call == 'k') return o.setJointAngleVel(joint, in.number());
    if (call == 'l') return o.setJointAngleAcc(joint, in.number());
    if (call == 'm') return o.setExternalWrench(body, wrench);
    if (call == 'n') return o.setExternalWrench(body, wrench, in.value<Pose>());
    if (call == 'o') return o.computeFwdKinematicsExceptRoot();
    if (call == 'p') return o.computeFwdKinematicsOnlyRoot();
    if (call == 'q') return o.computeFwdKinematics();
    if (call == 'r') return o.computeGeneralizedMass();
    if (call == 's') return o.computeInverseDynamics();
    if (call == 't') return o.computePartialComJacobian(body, J);
    if (call == 'u') return J.resize(3, static_cast<Eigen::Index>(in.index(40)));
    if (call == 'v') return void(o.computePartialComPositionInRoot(body));
    if (call == 'w') return o.setPose(body, in.value<Pose>());
    if (call == 'x') return o.setVolatilePose(0, in.value<Pose>());
    if (answers(*o.clone()) != answers(o)) std::abort();
  }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { ++allocations; },
                                            [](const volatile void*) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto inertias = kinetra::norvaX3::inertias;
  kinetra::norvaX3::inertias = inertias;  // which an earlier sequence may have changed
  Calls calls;
  for (Input in{data, data + size}; in.next != in.end;) calls.makeOne(in);
  return 0;
}
