// lumo-fuzz: reads its input as a sequence of calls of the interface, with valid indexes and any floats, and makes
// these calls under the sanitizers. Only calls that may allocate memory are allowed to do so, and none may change the
// floating-point environment, apart from its flags.
//
// A call is a letter from a to y, a digit for the object, and the arguments. An index is one byte. A float is a capital
// letter, which means one of the values below, or any other byte followed by the four bytes of the float. Line breaks
// between calls are skipped. Every other byte has a meaning, so every input is valid.

#include <algorithm>
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

/// Reads arguments from the input, one after another. After the end of the input all bytes are zero.
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
    float x;
    const std::uint8_t bytes[] = {byte(), byte(), byte(), byte()};
    std::memcpy(&x, bytes, sizeof x);
    return x;
  }
  /// A value that consists of floats.
  template <class Value>
  Value value() {
    Value result;
    std::generate_n(reinterpret_cast<float*>(&result), sizeof result / sizeof(float), [this] { return number(); });
    return result;
  }
};

using Object = std::unique_ptr<lumo::RigidBodySystem>;
using System = lumo::RigidBodySystem;
using Pose = OX::Math::Transform;
using Velocity = OX::Math::Velocity6D;
using Angles = Eigen::Array<float, 15, 1>;

/// The objects and the arguments that calls use.
struct Session {
  Object objects[3] = {Object(create()), Object(create()), Object(create())};
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  std::size_t body = 0, joint = 0;
  std::vector<float> wrench = std::vector<float>(6);
};

void setBodyInertia(System& o, Input& in, Session& s) {
  const auto x = in.value<std::array<float, 4>>();
  o.setBodyInertia(s.body, x[0], OX::Math::Position3D(x[1], x[2], x[3]), in.value<Eigen::Matrix3f>());
}
void answerAsAClone(System& o) {
  if (!(answers(*o.clone()) == answers(o))) std::abort();
}

enum Reads { nothing, aBody, aBodyAndAWrench };
struct Call {
  bool mayAllocate;
  Reads reads;
  void (*make)(Object&, Input&, Session&);
};
/// The calls of the letters a, b, c, ...
constexpr Call calls[] = {
    /* a */ {true, nothing, [](Object& o, Input&, Session&) { destroy(o.release()), o.reset(create()); }},
    /* b */ {true, nothing, [](Object& o, Input& in, Session& s) { s.objects[in.index(3)] = o->clone(); }},
    /* c */ {false, aBody, [](Object& o, Input& in, Session& s) { setBodyInertia(*o, in, s); }},
    /* d */ {false, nothing, [](Object& o, Input& in, Session&) { o->setRootPose(in.value<Pose>()); }},
    /* e */ {false, nothing, [](Object& o, Input& in, Session&) { o->setRootVelocity(in.value<Velocity>()); }},
    /* f */ {false, nothing, [](Object& o, Input& in, Session&) { o->setRootAcceleration(in.value<Velocity>()); }},
    /* g */ {false, nothing, [](Object& o, Input& in, Session&) { o->setJointAnglesPos(in.value<Angles>()); }},
    /* h */ {false, nothing, [](Object& o, Input& in, Session&) { o->setJointAnglesVel(in.value<Angles>()); }},
    /* i */ {false, nothing, [](Object& o, Input& in, Session&) { o->setJointAnglesAcc(in.value<Angles>()); }},
    /* j */ {false, aBody, [](Object& o, Input& in, Session& s) { o->setJointAnglePos(s.joint, in.number()); }},
    /* k */ {false, aBody, [](Object& o, Input& in, Session& s) { o->setJointAngleVel(s.joint, in.number()); }},
    /* l */ {false, aBody, [](Object& o, Input& in, Session& s) { o->setJointAngleAcc(s.joint, in.number()); }},
    /* m */ {false, aBodyAndAWrench, [](Object& o, Input&, Session& s) { o->setExternalWrench(s.body, s.wrench); }},
    /* n */
    {false, aBodyAndAWrench,
     [](Object& o, Input& in, Session& s) { o->setExternalWrench(s.body, s.wrench, in.value<Pose>()); }},
    /* o */ {false, nothing, [](Object& o, Input&, Session&) { o->computeFwdKinematicsExceptRoot(); }},
    /* p */ {false, nothing, [](Object& o, Input&, Session&) { o->computeFwdKinematicsOnlyRoot(); }},
    /* q */ {false, nothing, [](Object& o, Input&, Session&) { o->computeFwdKinematics(); }},
    /* r */ {false, nothing, [](Object& o, Input&, Session&) { o->computeGeneralizedMass(); }},
    /* s */ {false, nothing, [](Object& o, Input&, Session&) { o->computeInverseDynamics(); }},
    /* t */ {false, aBody, [](Object& o, Input&, Session& s) { o->computePartialComJacobian(s.body, s.J); }},
    /* u */ {true, nothing, [](Object&, Input& in, Session& s) { s.J.resize(3, in.byte() % 40); }},
    /* v */ {false, aBody, [](Object& o, Input&, Session& s) { (void)o->computePartialComPositionInRoot(s.body); }},
    /* w */ {false, aBody, [](Object& o, Input& in, Session& s) { o->setPose(s.body, in.value<Pose>()); }},
    /* x */ {false, nothing, [](Object& o, Input& in, Session&) { o->setVolatilePose(0, in.value<Pose>()); }},
    /* y */ {true, nothing, [](Object& o, Input&, Session&) { answerAsAClone(*o); }},
};

void makeCall(Input& in, Session& s) {
  const std::uint8_t letter = in.byte();
  if (letter == '\n') return;
  const std::size_t number = (letter + 3U) % std::size(calls);  // the letters a to y have the numbers 0 to 24
  const Call& call = calls[number];
  const bool mayAllocate = call.mayAllocate || (number == 't' - 'a' && s.J.cols() != 21);
  const std::size_t before = allocations;
  const auto same = environment();
  Object& object = s.objects[in.index(3)];
  if (call.reads != nothing) s.body = in.index(16), s.joint = s.body % 15;
  if (call.reads == aBodyAndAWrench) std::generate(s.wrench.begin(), s.wrench.end(), [&in] { return in.number(); });
  call.make(object, in, s);
  if ((mayAllocate || allocations == before) && environment() == same) return;
  std::fprintf(stderr, "ERROR: call %c allocates or changes the floating-point environment\n",
               'a' + static_cast<char>(number));
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { ++allocations; },
                                            [](const volatile void*) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto inertias = kinetra::norvaX3::inertias;
  kinetra::norvaX3::inertias = inertias;  // an earlier sequence can have changed them
  Session session;
  for (Input in{data, data + size}; in.next != in.end;) makeCall(in, session);
  return 0;
}
