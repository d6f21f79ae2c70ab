// lumo-fuzz: takes bytes for a sequence of calls of the interface, with valid indexes and any floats, and makes them
// while the sanitizers watch. Only those calls may allocate that say so, and none may change the floating-point
// environment, its flags apart.
//
// A call is a letter from a to z, a digit for the object, and its arguments: an index is a byte; a float is a capital
// letter, for one of the values below, or any other byte and then the four of the float. Every byte stands for
// something.

#include <algorithm>
#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <sanitizer/allocator_interface.h>
#include <xmmintrin.h>

#include <models/norvaX3/norvaX3.hpp>
#include <service/RigidBodySystem.hpp>

extern "C" lumo::RigidBodySystem* create();
extern "C" void destroy(lumo::RigidBodySystem* system);

namespace {

std::size_t allocations = 0;

struct Environment {
  int rounding = std::fegetround(), traps = fegetexcept();
  unsigned vector_control = _mm_getcsr() & ~static_cast<unsigned>(_MM_EXCEPT_MASK);

  bool operator==(const Environment& other) const {
    return rounding == other.rounding && traps == other.traps && vector_control == other.vector_control;
  }
};

void require(bool condition, const char* what, char call) {
  if (condition) return;
  std::fprintf(stderr, "ERROR: call %c %s\n", call, what);
  std::abort();
}

/// The calls' arguments, read from the bytes one after another; zeros when these run out.
class Input {
 public:
  Input(const std::uint8_t* first, std::size_t size) : next_(first), last_(first + size) {}

  bool ended() const { return next_ == last_; }
  std::uint8_t byte() { return ended() ? std::uint8_t{0} : *next_++; }
  std::size_t index(std::size_t size) { return byte() % size; }
  float number() {
    using Limits = std::numeric_limits<float>;
    constexpr float values['Z' - 'A' + 1] = {
        0,    -0.0F,  1,      -1,     0.3F,   -2.5F,  1.57079633F,        3.14159265F,        -7,
        1e5F, -3e7F,  1e15F,  1e19F,  -1e25F, 1e30F,  Limits::max(),      Limits::lowest(),   Limits::min(),
        1e8F, -1e-4F, 1e-20F, 1e-30F, 1e-40F, -1e38F, Limits::infinity(), Limits::quiet_NaN()};
    const std::uint8_t kind = byte();
    if (kind >= 'A' && kind <= 'Z') return values[kind - 'A'];
    const std::uint8_t bytes[sizeof(float)] = {byte(), byte(), byte(), byte()};
    float result;
    std::memcpy(&result, bytes, sizeof result);
    return result;
  }
  /// A value that consists of floats.
  template <class Value>
  Value value() {
    float numbers[sizeof(Value) / sizeof(float)];
    for (float& x : numbers) x = number();
    Value result;
    std::memcpy(static_cast<void*>(&result), numbers, sizeof result);
    return result;
  }

 private:
  const std::uint8_t *next_, *last_;
};

volatile unsigned char sink;

/// Reads every byte of a result.
void read(const void* result, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) sink = static_cast<const unsigned char*>(result)[i];
}
void read(lumo::FloatView view) { read(view.first, view.size() * sizeof(float)); }
template <class Value>
void read(const Value& value) {
  read(&value, sizeof value);
}

struct Calls {
  static constexpr std::size_t bodies = 16, joints = 15;
  using Object = std::unique_ptr<lumo::RigidBodySystem>;
  using Pose = OX::Math::Transform;
  using Joints = Eigen::Array<float, joints, 1>;

  Object objects[3] = {Object(create()), Object(create()), Object(create())};
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  std::vector<float> wrench = std::vector<float>(6);

  void makeOne(Input& in) {
    const std::uint8_t letter = in.byte();
    if (letter == '\n') return;
    const char call = static_cast<char>('a' + (letter + 7) % 26);  // a letter from a to z stands for itself
    const bool allocates = std::strchr("abuz", call) != nullptr || (call == 't' && J.cols() != 21);
    const std::size_t before = allocations;
    const Environment environment{};
    make(call, objects[in.index(3)], in);
    require(allocates || allocations == before, "allocates", call);
    require(environment == Environment(), "changes the floating-point environment", call);
  }

  void make(char call, Object& object, Input& in) {
    lumo::RigidBodySystem& o = *object;
    const auto readWrench = [&] { std::generate(wrench.begin(), wrench.end(), [&in] { return in.number(); }); };
    const std::size_t i = std::strchr("cjklmntvwyz", call) != nullptr ? in.index(bodies) : 0, joint = i % joints;
    switch (call) {
      case 'a':
        return destroy(object.release()), object.reset(create());
      case 'b':
        return void(objects[in.index(3)] = o.clone());
      case 'c': {
        const float mass = in.number();
        const auto com = in.value<OX::Math::Position3D>();
        return o.setBodyInertia(i, mass, com, in.value<Eigen::Matrix3f>());
      }
      case 'd':
        return o.setRootPose(in.value<Pose>());
      case 'e':
        return o.setRootVelocity(in.value<OX::Math::Velocity6D>());
      case 'f':
        return o.setRootAcceleration(in.value<OX::Math::Velocity6D>());
      case 'g':
        return o.setJointAnglesPos(in.value<Joints>());
      case 'h':
        return o.setJointAnglesVel(in.value<Joints>());
      case 'i':
        return o.setJointAnglesAcc(in.value<Joints>());
      case 'j':
        return o.setJointAnglePos(joint, in.number());
      case 'k':
        return o.setJointAngleVel(joint, in.number());
      case 'l':
        return o.setJointAngleAcc(joint, in.number());
      case 'm':
        return readWrench(), o.setExternalWrench(i, wrench);
      case 'n':
        return readWrench(), o.setExternalWrench(i, wrench, in.value<Pose>());
      case 'o':
        return o.computeFwdKinematicsExceptRoot();
      case 'p':
        return o.computeFwdKinematicsOnlyRoot();
      case 'q':
        return o.computeFwdKinematics();
      case 'r':
        return o.computeGeneralizedMass();
      case 's':
        return o.computeInverseDynamics();
      case 't':
        return o.computePartialComJacobian(i, J), read({J.data(), J.data() + J.size()});
      case 'u':
        return J.resize(3, static_cast<Eigen::Index>(in.index(40)));
      case 'v':
        return read(o.computePartialComPositionInRoot(i)), read(o.computePartialComPositionInRoot(bodies));
      case 'w':
        return o.setPose(i, in.value<Pose>());
      case 'x':
        return o.setVolatilePose(0, in.value<Pose>());
      case 'y':
        return query(o, i, joint);
      default:
        return lookUp(o, i, joint);
    }
  }

  static void query(const lumo::RigidBodySystem& o, std::size_t body, std::size_t joint) {
    for (const float x :
         {o.getMass(), o.getMass(body), o.getPartialMass(body), o.getPartialMass(bodies), o.getJointAnglePos(joint),
          o.getJointAngleVel(joint), o.getJointAngleAcc(joint), o.getJointAngleTorque(joint)}) {
      read(x);
    }
    for (const Pose* pose : {&o.getRootPose(), &o.getPose(body), &o.getPoseInRoot(body), &o.getVolatilePose(0),
                             &o.getPose(std::numeric_limits<std::size_t>::max())}) {
      read(*pose);
    }
    read(o.getRootVelocity()), read(o.getRootAcceleration());
    read(o.getComPosition(body)), read(o.getComPosition()), read(o.getComPositionInRoot());
    for (const lumo::FloatView& view : {o.getJointAnglesPos(),
                                        o.getJointAnglesVel(),
                                        o.getJointAnglesAcc(),
                                        o.getJointAnglesTorque(),
                                        {o.getJacobianInRoot().data(), o.getJacobianInRoot().data() + 6 * 21},
                                        {o.getGeneralizedMass().data(), o.getGeneralizedMass().data() + 21 * 21}}) {
      read(view);
    }
  }

  static void lookUp(const lumo::RigidBodySystem& o, std::size_t body, std::size_t joint) {
    require(o.getBodyId(o.getBodyName(body)) == body, "finds another body", 'z');
    require(o.getJointAngleId(o.getJointAngleName(joint)) == joint, "finds another joint", 'z');
    for (const auto& table : {o.getParentsVector(), o.getDofNumbersVector(), o.getDofIndexesVector()}) {
      require(table.size() == bodies, "has another size", 'z');
    }
    require(o.getName().empty() && o.getRootName() == o.getBodyName(0), "names another", 'z');
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
  for (Input in(data, size); !in.ended();) calls.makeOne(in);
  return 0;
}
