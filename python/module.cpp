// The Python module lumo. It is a host: it loads the plug-in and does not link the model. It checks all arguments, and
// converts arguments and results by their types in the interface.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <host/Plugin.hpp>

namespace py = pybind11;

namespace {

using lumo::Plugin;
using OX::Math::Position3D;
using OX::Math::Transform;
using OX::Math::Velocity6D;
using System = lumo::RigidBodySystem;

// --- Objects ---------------------------------------------------------------------------------------------------

/// What Python holds: an object of a plug-in. Views keep it alive, and it keeps the plug-in loaded.
struct Robot {
  std::shared_ptr<void> library;
  std::shared_ptr<System> system;
  /// For each pose in the system that Python has asked for, a 4 x 4 matrix, stored by rows.
  std::map<const Transform*, std::array<float, 16>> matrices = {};

  void refreshMatrices() {
    for (auto& [pose, matrix] : matrices) std::memcpy(matrix.data(), pose, sizeof(Transform));
  }
};
using Self = std::shared_ptr<Robot>;

Self create(const Plugin& plugin) {
  Plugin::Object object = plugin.create();
  std::shared_ptr<void> library = object.get_deleter().library;
  return std::make_shared<Robot>(Robot{std::move(library), std::move(object)});
}

Self clone(const Robot& robot) { return std::make_shared<Robot>(Robot{robot.library, robot.system->clone()}); }

/// The plug-in of the same build or installation as this module.
std::filesystem::path ownPlugin() {
  Dl_info module;
  dladdr(reinterpret_cast<void*>(&ownPlugin), &module);
  const auto folder = std::filesystem::path(module.dli_fname).parent_path();
  const auto built = (folder / LUMO_BUILT_PLUGIN).lexically_normal();
  const auto installed = (folder / LUMO_INSTALLED_PLUGIN).lexically_normal();
  for (const auto& file : {built, installed}) {
    if (std::filesystem::exists(file)) return file;
  }
  throw std::runtime_error("no plug-in at " + built.string() + " nor at " + installed.string() +
                           ": name its file, lumo.Plugin(file)");
}

Plugin load(const py::object& file) {
  if (file.is_none()) return Plugin(ownPlugin());
  PyObject* path = nullptr;
  if (PyUnicode_FSConverter(file.ptr(), &path) == 0) throw py::error_already_set();
  return Plugin(std::string(py::reinterpret_steal<py::bytes>(path)));
}

// --- From Python: everything is checked before the plug-in is called -------------------------------------------

template <typename... Values>
[[noreturn]] void raise(PyObject* type, const char* format, const Values&... values) {
  PyErr_SetObject(type, py::str(format).format(values...).ptr());
  throw py::error_already_set();
}

py::object typeName(py::handle value) { return py::type::handle_of(value).attr("__name__"); }

/// The numbers of an array, a list or a number, by rows.
template <typename... Sizes>
std::vector<float> toFloats(py::handle value, Sizes... shape) {
  if (py::hasattr(value, "_mask") && py::module_::import("numpy.ma").attr("is_masked")(value).cast<bool>()) {
    raise(PyExc_TypeError, "expected numbers, got {} with masked values", typeName(value));
  }
  const py::array given(py::reinterpret_borrow<py::object>(value));
  bool areReal = std::string("fiu").find(given.dtype().kind()) != std::string::npos;
  if (given.dtype().kind() == 'O') {  // for example integers of more than 64 bits
    const py::object real = py::module_::import("numbers").attr("Real");
    const py::list elements = given.attr("ravel")().attr("tolist")();
    areReal = std::all_of(elements.begin(), elements.end(),
                          [&](py::handle x) { return py::isinstance(x, real) && !PyBool_Check(x.ptr()); });
  }
  if (!areReal) raise(PyExc_TypeError, "expected numbers, got {} of {}", typeName(value), given.dtype());

  const auto described = [](const py::object& sizes) {
    return py::len(sizes) == 0 ? py::str("one number") : py::str("an array of shape {}").format(sizes);
  };
  const py::tuple needed = py::make_tuple(shape...);
  if (!needed.equal(given.attr("shape"))) {
    raise(PyExc_ValueError, "expected {}, got {}", described(needed), described(given.attr("shape")));
  }
  constexpr auto largest = static_cast<long double>(std::numeric_limits<float>::max());
  const auto isTooLarge = [](long double x) { return std::isfinite(x) && std::abs(x) > largest; };
  // The conversion fails only for a real number that is too large.
  const auto numbers = py::array_t<long double, py::array::c_style | py::array::forcecast>::ensure(given);
  if (!numbers || std::any_of(numbers.data(), numbers.data() + numbers.size(), isTooLarge)) {
    raise(PyExc_ValueError, "expected numbers of at most 3.4e38, got a larger one");
  }
  return std::vector<float>(numbers.data(), numbers.data() + numbers.size());
}

/// A value of the host's math library from its floats.
template <typename Value>
Value fromFloats(const std::vector<float>& floats) {
  static_assert(std::is_trivially_copyable_v<Value>);
  Value value;
  std::memcpy(static_cast<void*>(&value), floats.data(), sizeof value);
  return value;
}

Transform toTransform(py::handle value) {
  const std::vector<float> floats = toFloats(value, 4, 4);
  for (std::size_t column = 0; column < 4; ++column) {
    if (!(std::abs(floats[12 + column] - (column == 3 ? 1.0F : 0.0F)) < 1e-6F)) {
      raise(PyExc_ValueError, "expected 0, 0, 0, 1 as the last row of a pose, got {}, {}, {}, {}", floats[12],
            floats[13], floats[14], floats[15]);
    }
  }
  return fromFloats<Transform>(floats);
}

/// What the index of an operation counts.
struct Indexed {
  const char* noun;
  std::size_t (System::*count)() const;
  const std::string& (System::*name)(std::size_t) const = nullptr;
  std::size_t (System::*id)(const std::string&) const = nullptr;
};
const Indexed body = {"body", &System::getNbBodies, &System::getBodyName, &System::getBodyId};
const Indexed joint = {"joint angle", &System::getNbJointAngles, &System::getJointAngleName, &System::getJointAngleId};
const Indexed frame = {"volatile frame", &System::getNbVolatileFrames};

std::string toName(const System& system, const Indexed& of, py::handle value) {
  if (!PyUnicode_Check(value.ptr())) {
    raise(PyExc_TypeError, "expected the name of a {}, got {}", of.noun, typeName(value));
  }
  py::dict names;
  for (std::size_t i = 0; i < (system.*of.count)(); ++i) {
    const std::string& name = (system.*of.name)(i);
    if (value.equal(py::str(name))) return name;
    names[py::str(name).attr("lower")()] = name;
  }
  const auto closest = py::module_::import("difflib").attr("get_close_matches");
  const py::object start = value[py::slice(0, 100, 1)];
  const py::list nearest = closest(start.attr("lower")(), names, 1, 0.0);
  raise(PyExc_KeyError, "no {} named \"{}\"; the nearest is \"{}\"", of.noun, start, names[nearest[0]]);
}

std::size_t toIndex(const System& system, const Indexed& of, py::handle value) {
  if (PyUnicode_Check(value.ptr()) && of.id != nullptr) return (system.*of.id)(toName(system, of, value));
  const bool isBool = PyBool_Check(value.ptr()) || py::type::handle_of(value).is(py::dtype::of<bool>().attr("type"));
  if (PyIndex_Check(value.ptr()) == 0 || isBool) {
    raise(PyExc_TypeError, of.id ? "expected the index or name of a {}, got {}" : "expected the index of a {}, got {}",
          of.noun, typeName(value));
  }
  const py::ssize_t index = PyNumber_AsSsize_t(value.ptr(), PyExc_IndexError);
  if (index == -1 && PyErr_Occurred()) throw py::error_already_set();
  const auto count = static_cast<py::ssize_t>((system.*of.count)());
  if (index < 0 || index >= count) {
    raise(PyExc_IndexError,
          count == 1 ? "expected 0 as the index of a {1}, got {2}" : "expected 0 to {0} as the index of a {1}, got {2}",
          count - 1, of.noun, index);
  }
  return static_cast<std::size_t>(index);
}

/// An argument of an operation, by its type in the interface.
template <typename Argument>
auto fromPython(const System& system, const Indexed& of, py::handle value) {
  using T = std::decay_t<Argument>;
  if constexpr (std::is_same_v<T, std::size_t>) {
    return toIndex(system, of, value);
  } else if constexpr (std::is_same_v<T, std::string>) {
    return toName(system, of, value);
  } else if constexpr (std::is_same_v<T, float>) {
    return toFloats(value)[0];
  } else if constexpr (std::is_same_v<T, Transform>) {
    return toTransform(value);
  } else if constexpr (std::is_same_v<T, Position3D>) {
    return fromFloats<Position3D>(toFloats(value, 3));
  } else if constexpr (std::is_same_v<T, Velocity6D>) {
    const std::vector<float> v = toFloats(value, 6);
    return Velocity6D(v[0], v[1], v[2], v[3], v[4], v[5]);
  } else if constexpr (std::is_same_v<T, std::vector<float>>) {  // a wrench
    return toFloats(value, 6);
  } else if constexpr (std::is_same_v<T, Eigen::Matrix3f>) {
    const std::vector<float> rows = toFloats(value, 3, 3);
    return Eigen::Matrix3f(Eigen::Matrix3f::Map(rows.data()).transpose());
  } else {  // all joint angles
    static_assert(std::is_same_v<T, Eigen::Ref<const Eigen::ArrayXf>>);
    const auto count = static_cast<py::ssize_t>(system.getNbJointAngles());
    const std::vector<float> angles = toFloats(value, count);
    return Eigen::ArrayXf(Eigen::ArrayXf::Map(angles.data(), count));
  }
}

// --- To Python: what an operation returns by reference is a view -----------------------------------------------

/// A read-only array of floats in the object, which it keeps alive. Without strides, the floats are stored by rows.
py::array view(const Self& robot, const float* floats, py::array::ShapeContainer shape,
               py::array::StridesContainer strides = {}) {
  py::array array(std::move(shape), std::move(strides), floats, py::cast(robot));
  array.attr("setflags")(py::arg("write") = false);
  return array;
}

/// A result of an operation, by its type in the interface.
template <typename Result>
py::object toPython(const Self& robot, const std::decay_t<Result>& result) {
  using T = std::decay_t<Result>;
  constexpr py::ssize_t size = sizeof(float), floats = sizeof(T) / size;
  if constexpr (std::is_same_v<Result, const Transform&>) {
    robot->matrices[&result] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    robot->refreshMatrices();
    return view(robot, robot->matrices[&result].data(), {4, 4});
  } else if constexpr (std::is_same_v<Result, const Position3D&>) {
    return view(robot, reinterpret_cast<const float*>(&result), {floats});
  } else if constexpr (std::is_same_v<Result, lumo::FloatView>) {
    return view(robot, result.begin(), {result.size()});
  } else if constexpr (std::is_same_v<T, Eigen::MatrixXf> ||
                       std::is_same_v<T, Eigen::Matrix<float, 6, Eigen::Dynamic>>) {
    return view(robot, result.data(), {result.rows(), result.cols()}, {size, size * result.rows()});
  } else if constexpr (std::is_same_v<T, Position3D> || std::is_same_v<T, Velocity6D>) {
    return py::array_t<float>(floats, reinterpret_cast<const float*>(&result));
  } else if constexpr (std::is_same_v<T, std::vector<std::int64_t>>) {
    return py::array_t<std::int64_t>(static_cast<py::ssize_t>(result.size()), result.data());
  } else {
    return py::cast(result);
  }
}

template <typename>
using Any = py::handle;

System& systemOf(const Self& robot) {
  if (robot == nullptr) throw py::type_error("expected a RigidBodySystem, got None");
  return *robot->system;
}

/// The class in Python, and how operations are added to it.
class Operations : public py::class_<Robot, Self> {
 public:
  using class_::class_;

  /// Adds an operation of the interface. `parameters` are the names that help() shows, or nullptr if there are
  /// overloads; then the text starts with its call and a colon. `of` says what an index or a name refers to.
  template <typename Result, typename... Arguments>
  void op(const char* name, const char* parameters, Result (System::*operation)(Arguments...) const, const char* text,
          const Indexed& of = body) {
    add<Result, Arguments...>(name, parameters, operation, text, of);
  }
  template <typename Result, typename... Arguments>
  void op(const char* name, const char* parameters, Result (System::*operation)(Arguments...), const char* text,
          const Indexed& of = body) {
    add<Result, Arguments...>(name, parameters, operation, text, of);
  }

  /// Adds a function. Python takes the signature from the first line of the documentation.
  template <typename Function>
  void add(const char* name, const char* parameters, const Function& function, const char* text) {
    std::string signature;
    if (parameters != nullptr) {
      signature = std::string(name) + "($self, " + parameters + (*parameters ? ", " : "") + "/)\n--\n\n";
    }
    def(name, function, (signature + text).c_str());
    std::string& call = calls_[name];
    if (!call.empty()) call += " or ";
    call += parameters ? std::string(name) + "(" + parameters + ")" : std::string(text, std::strchr(text, ':'));
  }

  /// Adds what pybind11 calls when the arguments fit no function: it raises an exception with one line.
  void addRefusals() {
    for (const auto& name_and_call : calls_) {
      const std::string call = name_and_call.second;
      def(name_and_call.first.c_str(), [call](const py::args& given, const py::kwargs& keywords) {
        if (given.empty() || !py::isinstance<Robot>(given[0])) {
          raise(PyExc_TypeError, "expected {} of a RigidBodySystem, got other arguments", call);
        }
        raise(PyExc_TypeError, "expected {}, got {} positional and {} keyword arguments", call, given.size() - 1,
              keywords.size());
      });
    }
  }

 private:
  template <typename Result, typename... Arguments, typename Operation>
  void add(const char* name, const char* parameters, Operation operation, const char* text, const Indexed& of) {
    const auto function = [=](const Self& robot, Any<Arguments>... values) {
      System& system = systemOf(robot);
      auto arguments = std::tuple{fromPython<Arguments>(system, of, values)...};
      return std::apply(
          [&](auto&... checked) {
            if constexpr (std::is_void_v<Result>) {
              (system.*operation)(checked...);
              robot->refreshMatrices();
            } else {
              return toPython<Result>(robot, (system.*operation)(checked...));
            }
          },
          arguments);
    };
    add(name, parameters, function, text);
  }

  std::map<std::string, std::string> calls_;  ///< how an operation is called, by its name
};

const char* const systemText =
    R"(One robot: a tree of rigid bodies with a free-floating root. Plugin.create() and clone() make it.

Set the state, compute, and read the results. A result changes only when the operation that computes it runs.

You can give a body or a joint angle by its index or by its name. An index out of range raises IndexError, an unknown
name KeyError, a wrong shape ValueError and a wrong type TypeError, and the object is unchanged. Arguments can be arrays
or lists of any real type, and NaN and infinity are valid. Arrays are float32, except the three tables of the tree,
which are int64.

"View" marks a read-only array that shows later results. Use .copy() to keep the values. Other arrays are copies.

Units are SI. Velocities, accelerations and wrenches are six numbers: linear, then angular. A pose is a 4 x 4 matrix
that maps coordinates in the body's frame to the reference frame.)";

void addOperations(Operations& robot) {
  using Index = std::size_t;

  robot.add(
      "clone", "", [](const Self& self) { return systemOf(self), clone(*self); },
      "A new object with the same inputs and results; views stay with the old one.");

  robot.op("getName", "", &System::getName, "Always the empty string.");
  robot.op("getNbJointAngles", "", &System::getNbJointAngles, "How many joint angles there are: 15.");
  robot.op("getNbBodies", "", &System::getNbBodies, "How many bodies there are: 16.");
  robot.op("getNbVolatileFrames", "", &System::getNbVolatileFrames, "How many volatile frames there are: 1.");
  robot.op("getRootName", "", &System::getRootName, "Name of body 0.");
  robot.op("getJointAngleName", "joint", &System::getJointAngleName, "Name of a joint angle.", joint);
  robot.op("getJointAngleId", "name", &System::getJointAngleId, "Index of the joint angle of this name.", joint);
  robot.op("getBodyName", "body", &System::getBodyName, "Name of a body.");
  robot.op("getBodyId", "name", &System::getBodyId, "Index of the body of this name.");

  robot.op("setBodyInertia", "body, mass, com, inertia", &System::setBodyInertia,
           "Replaces the mass properties of a body FOR ALL OBJECTS OF THE PROCESS: mass (kg), centre of mass (m, body\n"
           "frame), and the 3 x 3 rotational inertia about it (kg m^2, body axes), of which the upper triangle is not "
           "read.");
  robot.op("getMass", nullptr, py::overload_cast<>(&System::getMass, py::const_), "getMass(): total mass (kg).");
  robot.op("getPartialMass", "body", &System::getPartialMass, "Mass of all bodies but one (kg).");
  robot.op("getMass", nullptr, py::overload_cast<Index>(&System::getMass, py::const_),
           "getMass(body): mass of one body (kg).");

  robot.op("setRootPose", "pose", &System::setRootPose, "Pose of the root in the world.");
  robot.op("getRootPose", "", &System::getRootPose, "Pose of the root in the world, the same as getPose(0). View.");
  robot.op("setRootVelocity", "velocity", &System::setRootVelocity,
           "Velocity of the root's origin (m/s) and angular velocity (rad/s), in the root's axes.");
  robot.op("setRootAcceleration", "acceleration", &System::setRootAcceleration,
           "Derivative of the six numbers of the root's velocity (m/s^2, rad/s^2), in the root's axes.");
  robot.op("getRootVelocity", "", &System::getRootVelocity, "What setRootVelocity last set.");
  robot.op("getRootAcceleration", "", &System::getRootAcceleration, "What setRootAcceleration last set.");

  robot.op("setJointAnglesPos", "positions", &System::setJointAnglesPos, "All 15 joint angles (rad).");
  robot.op("setJointAnglesVel", "velocities", &System::setJointAnglesVel, "All 15 rates (rad/s).");
  robot.op("setJointAnglesAcc", "accelerations", &System::setJointAnglesAcc, "All 15 accelerations (rad/s^2).");
  robot.op("setJointAnglePos", "joint, position", &System::setJointAnglePos, "One joint angle (rad).", joint);
  robot.op("setJointAngleVel", "joint, velocity", &System::setJointAngleVel, "One rate (rad/s).", joint);
  robot.op("setJointAngleAcc", "joint, acceleration", &System::setJointAngleAcc, "One acceleration (rad/s^2).", joint);
  robot.op("getJointAnglePos", "joint", &System::getJointAnglePos, "One joint angle (rad).", joint);
  robot.op("getJointAngleVel", "joint", &System::getJointAngleVel, "One rate (rad/s).", joint);
  robot.op("getJointAngleAcc", "joint", &System::getJointAngleAcc, "One acceleration (rad/s^2).", joint);
  robot.op("getJointAnglesPos", "", &System::getJointAnglesPos, "All 15 joint angles (rad). View.");
  robot.op("getJointAnglesVel", "", &System::getJointAnglesVel, "All 15 rates (rad/s). View.");
  robot.op("getJointAnglesAcc", "", &System::getJointAnglesAcc, "All 15 accelerations (rad/s^2). View.");

  robot.op(
      "setExternalWrench", nullptr, py::overload_cast<Index, const std::vector<float>&>(&System::setExternalWrench),
      "setExternalWrench(body, wrench): force (N), then torque (N m) on a body, in its frame about its origin. Acts\n"
      "until set again.");
  robot.op(
      "setExternalWrench", nullptr,
      py::overload_cast<Index, const std::vector<float>&, Transform>(&System::setExternalWrench),
      "setExternalWrench(body, wrench, frame): the same given in a frame whose pose in the body's frame is `frame`,\n"
      "about that frame's origin.");

  robot.op("computeFwdKinematicsExceptRoot", "", &System::computeFwdKinematicsExceptRoot,
           "From the joint angles: poses and centre of mass in the root's frame, and the Jacobian.");
  robot.op("computeFwdKinematicsOnlyRoot", "", &System::computeFwdKinematicsOnlyRoot,
           "From the root's pose and the results of computeFwdKinematicsExceptRoot(): poses and centre of mass in\n"
           "the world.");
  robot.op("computeFwdKinematics", "", &System::computeFwdKinematics,
           "computeFwdKinematicsExceptRoot(), then computeFwdKinematicsOnlyRoot().");
  robot.op("computeGeneralizedMass", "", &System::computeGeneralizedMass,
           "The mass matrix at the configuration of the last forward kinematics or inverse dynamics.");
  robot.add(
      "computePartialComJacobian", "body",
      [](const Self& self, py::handle of) {
        Eigen::Matrix<float, 3, Eigen::Dynamic> J;
        System& system = systemOf(self);
        system.computePartialComJacobian(toIndex(system, body, of), J);
        const py::ssize_t size = sizeof(float);
        return py::array(py::dtype::of<float>(), {J.rows(), J.cols()}, {size, 3 * size}, J.data());
      },
      "3 x 21: mass times Jacobian of the centre of mass of all bodies but one, in world axes.");
  robot.op(
      "computePartialComPositionInRoot", "body", &System::computePartialComPositionInRoot,
      "Centre of mass of all bodies but one in the root's frame (m). Beware: for body 0 it is getComPosition(), in\n"
      "the world.");

  robot.op("getPoseInRoot", "body", &System::getPoseInRoot, "Pose of a body in the root's frame. View.");
  robot.op("getPose", "body", &System::getPose, "Pose of a body in the world. View.");
  robot.op("setPose", "body, pose", &System::setPose,
           "Overwrites a body's pose in the world until it is computed again.");
  robot.op("getVolatilePose", "frame", &System::getVolatilePose, "A pose that no computation reads or writes. View.",
           frame);
  robot.op("setVolatilePose", "frame, pose", &System::setVolatilePose, "Sets the pose that getVolatilePose() returns.",
           frame);
  robot.op("getComPosition", nullptr, py::overload_cast<Index>(&System::getComPosition, py::const_),
           "getComPosition(body): centre of mass of one body in the world (m).");
  robot.op("getComPositionInRoot", "", &System::getComPositionInRoot,
           "Centre of mass of the robot in the root's frame (m). View.");
  robot.op("getComPosition", nullptr, py::overload_cast<>(&System::getComPosition, py::const_),
           "getComPosition(): centre of mass of the robot in the world (m). View.");

  robot.op("getGeneralizedMass", "", &System::getGeneralizedMass,
           "21 x 21, in the order of the coordinates: the root's six in its axes, then the joint angles. View.");
  robot.op(
      "getJacobianInRoot", "", &System::getJacobianInRoot,
      "6 x 21, rows angular then linear: the velocity, at the root's origin in its frame, that a unit rate of each\n"
      "coordinate gives the body whose joint has it. View.");
  robot.op("getParentsVector", "", &System::getParentsVector, "Per body, its parent; -1 for the root.");
  robot.op("getDofNumbersVector", "", &System::getDofNumbersVector, "Per body, how many coordinates it has.");
  robot.op("getDofIndexesVector", "", &System::getDofIndexesVector, "Per body, the index of its first coordinate.");

  robot.op("computeInverseDynamics", "", &System::computeInverseDynamics,
           "The joint torques that give the set accelerations at the set positions, velocities and wrenches.");
  robot.op("getJointAngleTorque", "joint", &System::getJointAngleTorque, "Torque of one joint (N m).", joint);
  robot.op("getJointAnglesTorque", "", &System::getJointAnglesTorque, "Torques of all 15 joints (N m). View.");
}

}  // namespace

PYBIND11_MODULE(_lumo, module) {
  module.attr("__name__") = "lumo";  // the package, by which Python shows the classes
  py::dtype::of<float>();            // Makes pybind11 load NumPy now. Two threads that did it later would deadlock.
  py::options options;
  options.disable_function_signatures();

  py::class_<Plugin, std::shared_ptr<Plugin>>(module, "Plugin", py::is_final(),
                                              "A loaded plug-in. It stays loaded until its last object is deleted.")
      .def(py::init(&load), py::arg("file") = py::none(),
           "__init__($self, file=None)\n--\n\n"
           "Loads the file, by default the plug-in of the same build or installation. Raises RuntimeError.")
      .def(
          "create",
          [](const std::shared_ptr<Plugin>& plugin) {
            if (plugin == nullptr) throw py::type_error("expected a Plugin, got None");
            return create(*plugin);
          },
          "create($self, /)\n--\n\nA new RigidBodySystem.")
      .def(py::init([](const py::args&, const py::kwargs&) -> std::shared_ptr<Plugin> {
        throw py::type_error("expected Plugin() or Plugin(file), got other arguments");
      }))
      .def("create", [](const py::args&, const py::kwargs&) {
        throw py::type_error("expected create() of a Plugin, got other arguments");
      });

  module.attr("__version__") = LUMO_VERSION;

  Operations robot(module, "RigidBodySystem", py::is_final(), systemText);
  addOperations(robot);
  robot.addRefusals();
}
