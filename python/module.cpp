// The Python module lumo. It is a host: it loads the plug-in and does not link the model. It has one table of the
// operations, and converts their arguments and results by their types in the interface.

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include <host/Plugin.hpp>
#include <python/arguments.hpp>
#include <python/evaluate.hpp>

namespace lumo::python {

namespace {

using OX::Math::Transform;

// --- Objects ---------------------------------------------------------------------------------------------------

/// What Python calls a Plugin: a plug-in and its file.
struct File {
  std::filesystem::path path;
  bool isOwn;  ///< the plug-in of the same build or installation as this module
  Plugin plugin;
};

/// What Python calls a RigidBodySystem: an object of a plug-in. Views keep it alive, and it keeps the plug-in loaded.
struct Robot {
  std::string name;
  std::shared_ptr<void> library;
  std::unique_ptr<System, std::function<void(System*)>> system;
  /// For each pose in the system that Python has asked for, the matrix that it sees.
  std::map<const Transform*, PoseMatrix> matrices = {};
  py::handle self = {};  ///< The Python object, which owns this one.

  py::handle object() { return self ? self : self = py::cast(this); }

  void refreshMatrices() {
    for (auto& [pose, matrix] : matrices) matrix = toMatrix(*pose);
  }
};

Robot create(const File& file) {
  const auto lock = lockMasses();  // because the plug-in computes the total mass
  Plugin::Object object = file.plugin.create();
  std::shared_ptr<void> library = object.get_deleter().library;
  return {file.path.stem(), std::move(library), std::move(object)};
}

Robot clone(const Robot& robot) { return {robot.name, robot.library, robot.system->clone()}; }

std::string describe(const Robot& robot) {
  const System& system = *robot.system;
  const PoseMatrix root = toMatrix(system.getRootPose());
  std::ostringstream text;
  text << "<lumo.RigidBodySystem " << robot.name << ": root at (" << root(0, 3) << ", " << root(1, 3) << ", "
       << root(2, 3) << ") m";
  for (std::size_t k = 0; k < system.getNbJointAngles(); ++k) {
    const float angle = system.getJointAnglePos(k);
    if (angle != 0) text << ", " << system.getJointAngleName(k) << ' ' << angle << " rad";
  }
  text << '>';
  return text.str();
}

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

File load(const py::object& file) {
  if (file.is_none()) return {ownPlugin(), true, Plugin(ownPlugin())};
  PyObject* bytes = nullptr;
  if (PyUnicode_FSConverter(file.ptr(), &bytes) == 0) throw py::error_already_set();
  const std::filesystem::path path = std::string(py::reinterpret_steal<py::bytes>(bytes));
  return {std::filesystem::absolute(path), false, Plugin(path)};
}

// --- To Python: what an operation returns by reference is a view -----------------------------------------------

/// A result of an operation, by its type in the interface.
template <typename Result>
py::object toPython(Robot& robot, const std::decay_t<Result>& result) {
  using T = std::decay_t<Result>;
  if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
    return py::cast(result);
  } else {
    constexpr bool isView = std::is_reference_v<Result> || std::is_same_v<T, FloatView>;
    const auto block = [&] {
      if constexpr (std::is_same_v<T, Transform>) {
        return blockOf(robot.matrices.try_emplace(&result, toMatrix(result)).first->second);
      } else {
        return blockOf(result);
      }
    }();
    py::array array = block.array({}, isView ? robot.object() : py::handle());
    if (isView) py::detail::array_proxy(array.ptr())->flags &= ~py::detail::npy_api::NPY_ARRAY_WRITEABLE_;
    return std::move(array);
  }
}

// --- Operations ------------------------------------------------------------------------------------------------

/// An argument that is a name, never an index. The operation gets its index.
struct Name {};

/// An argument as it is kept during a call: an index, a name, a number, or the floats of an array.
template <typename T>
auto fromPython(const System& system, const Indexed& of, py::handle value) {
  if constexpr (std::is_same_v<T, std::size_t>) {
    return toIndex(system, of, value);
  } else if constexpr (std::is_same_v<T, Name>) {
    if (!PyUnicode_Check(value.ptr())) raise(PyExc_TypeError, "expected a name, got {}", typeName(value));
    return toIndex(system, of, value);
  } else if constexpr (std::is_same_v<T, float>) {
    return toFloat(value);
  } else {
    std::vector<float> floats;
    Numbers(value, shapeOf<T>(system)).read(0, floats);
    return floats;
  }
}

/// The argument itself.
template <typename T, typename Kept>
decltype(auto) toArgument(const Kept& kept) {
  if constexpr (std::is_same_v<Kept, std::vector<float>>) {
    return fromFloats<T>(kept);
  } else {
    return kept;
  }
}

template <typename>
using Any = py::handle;

/// The class in Python, and how operations are added to it.
class Operations : public py::class_<Robot> {
 public:
  using class_::class_;

  /// Adds an operation of the interface. `parameters` are the names that help() shows. If there are overloads, each
  /// text starts with its call, and the first has the parameters of all. `of` says what an index or a name refers to.
  template <typename Result, typename... Arguments>
  void op(const char* name, const char* parameters, Result (System::*operation)(Arguments...) const, const char* text,
          const Indexed& of = body, Computations computations = none) {
    add<Result, std::decay_t<Arguments>...>(name, parameters, operation, text, of, computations);
  }
  template <typename Result, typename... Arguments>
  void op(const char* name, const char* parameters, Result (System::*operation)(Arguments...), const char* text,
          const Indexed& of = body, Computations computations = none) {
    add<Result, std::decay_t<Arguments>...>(name, parameters, operation, text, of, computations);
  }

  /// Adds any function of a system as an operation.
  template <typename Result, typename... Arguments, typename Operation>
  void add(const char* name, const char* parameters, Operation operation, const char* text, const Indexed& of = body,
           Computations computations = none) {
    addFunction(name, parameters, text, [=](Robot& robot, Any<Arguments>... values) {
      System& system = *robot.system;
      const std::tuple kept{fromPython<Arguments>(system, of, values)...};
      const auto call = [&](const auto&... each) -> Result {
        return std::invoke(operation, system, toArgument<Arguments>(each)...);
      };
      if constexpr (std::is_void_v<Result>) {
        std::apply(call, kept);
        constexpr bool movesPoses = sizeof...(Arguments) == 0 || (isPose<Arguments> || ...);
        if constexpr (movesPoses) robot.refreshMatrices();
      } else {
        return toPython<Result>(robot, std::apply(call, kept));
      }
    });
    using First = std::tuple_element_t<0, std::tuple<Arguments..., void>>;
    constexpr bool hasIndex = std::is_same_v<First, std::size_t>;
    constexpr std::size_t values = sizeof...(Arguments) - hasIndex;
    if constexpr (std::is_void_v<Result> && values == 1) {
      evaluate->addInput<hasIndex, std::tuple_element_t<hasIndex, std::tuple<Arguments...>>>(name, operation, of);
    } else if constexpr (!std::is_void_v<Result> && values == 0 && !std::is_same_v<std::decay_t<Result>, std::string>) {
      evaluate->addOutput<hasIndex, std::decay_t<Result>>(name, operation, of, computations);
    }
  }

  /// Adds a function. Python takes the signature from the first line of the documentation. An overload comes first,
  /// without parameters, so that the documentation of the one with parameters starts with them.
  template <typename Function, typename... Extra>
  void addFunction(const std::string& name, const char* parameters, const char* text, const Function& function,
                   const Extra&... extra) {
    std::string signature;
    if (parameters != nullptr) {
      const bool isEvaluate = sizeof...(extra) > 0;
      signature = name + "(self" + (*parameters == 0 ? "" : ", ") + parameters + (isEvaluate ? ")" : ", /)");
    }
    if (added_.insert(name).second) {
      def(
          name.c_str(),
          [name](const py::args&, const py::kwargs&) {
            raise(PyExc_TypeError, "expected other arguments: help(lumo.RigidBodySystem.{}) shows them", name);
          },
          "");
    }
    def(name.c_str(), function, ((signature.empty() ? "" : signature + "\n--\n\n") + text).c_str(), py::prepend(),
        extra...);
  }

  std::shared_ptr<Evaluate> evaluate = std::make_shared<Evaluate>();

 private:
  std::set<std::string> added_;
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

const char* const evaluateText =
    R"(Evaluates N states: sets the inputs, runs the computations that the outputs need, and returns a dict of the outputs.

`inputs` maps setters to arrays whose first index is the state, `outputs` is a list of getters. Both are names, or tuples
of a name and the body or joint: {"setJointAnglesPos": q, ("setExternalWrench", "Torso"): w}. The object is not changed.
`threads` is how many threads to use, by default one for each core.)";

void addOperations(Operations& robot) {
  using Index = std::size_t;

  robot.addFunction("clone", "", "A new object with the same inputs and results; views stay with the old one.", &clone);
  robot.addFunction("__copy__", "", "clone()", &clone);
  robot.addFunction("__deepcopy__", "memo", "clone()", [](const Robot& self, py::handle) { return clone(self); });
  robot.addFunction("__reduce__", "", "Raises TypeError.", [](const Robot&) -> py::object {
    throw py::type_error("a RigidBodySystem cannot be pickled: pickle its Plugin and its inputs");
  });
  robot.addFunction("__repr__", "", "The plug-in, the position of the root and the joint angles.", &describe);
  const auto names = [](const Indexed& of) {
    return [&of](const Robot& self) { return py::tuple(py::cast(namesOf(*self.system, of))); };
  };
  robot.def_property_readonly("body_names", names(body), "The names of all bodies.");
  robot.def_property_readonly("joint_names", names(joint), "The names of all joint angles.");

  const auto index = [](const System&, Index id) { return id; };
  robot.op("getName", "", &System::getName, "Always the empty string.");
  robot.op("getNbJointAngles", "", &System::getNbJointAngles, "How many joint angles there are: 15.");
  robot.op("getNbBodies", "", &System::getNbBodies, "How many bodies there are: 16.");
  robot.op("getNbVolatileFrames", "", &System::getNbVolatileFrames, "How many volatile frames there are: 1.");
  robot.op("getRootName", "", &System::getRootName, "Name of body 0.");
  robot.op("getJointAngleName", "joint", &System::getJointAngleName, "Name of a joint angle.", joint);
  robot.add<Index, Name>("getJointAngleId", "name", index, "Index of the joint angle of this name.", joint);
  robot.op("getBodyName", "body", &System::getBodyName, "Name of a body.");
  robot.add<Index, Name>("getBodyId", "name", index, "Index of the body of this name.", body);

  robot.add<void, Index, float, OX::Math::Position3D, Eigen::Matrix3f>(
      "setBodyInertia", "body, mass, com, inertia",
      [](System& system, const auto&... arguments) {
        const auto lock = lockMasses();
        system.setBodyInertia(arguments...);
      },
      "Replaces the mass properties of a body FOR ALL OBJECTS OF THE PROCESS: mass (kg), centre of mass (m, body\n"
      "frame), and the 3 x 3 rotational inertia about it (kg m^2, body axes), of which the upper triangle is not "
      "read.");
  robot.op("getMass", nullptr, py::overload_cast<>(&System::getMass, py::const_), "getMass(): total mass (kg).");
  robot.op("getPartialMass", "body", &System::getPartialMass, "Mass of all bodies but one (kg).");
  robot.op("getMass", "body=...", py::overload_cast<Index>(&System::getMass, py::const_),
           "getMass(body): mass of one body (kg).");

  robot.add<void, RootPose>("setRootPose", "pose", &System::setRootPose, "Pose of the root in the world.");
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
      "setExternalWrench", "body, wrench, frame=...",
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
  robot.add<Eigen::Matrix<float, 3, Eigen::Dynamic>, Index>(
      "computePartialComJacobian", "body",
      [](System& system, Index of) {
        Eigen::Matrix<float, 3, Eigen::Dynamic> J;
        system.computePartialComJacobian(of, J);
        return J;
      },
      "3 x 21: mass times Jacobian of the centre of mass of all bodies but one, in world axes.", body, angles);
  robot.op(
      "computePartialComPositionInRoot", "body", &System::computePartialComPositionInRoot,
      "Centre of mass of all bodies but one in the root's frame (m). Beware: for body 0 it is getComPosition(), in\n"
      "the world.",
      body, exceptRoot);

  robot.op("getPoseInRoot", "body", &System::getPoseInRoot, "Pose of a body in the root's frame. View.", body,
           exceptRoot);
  robot.op("getPose", "body", &System::getPose, "Pose of a body in the world. View.", body, world);
  robot.op("setPose", "body, pose", &System::setPose,
           "Overwrites a body's pose in the world until it is computed again.");
  robot.op("getVolatilePose", "frame", &System::getVolatilePose, "A pose that no computation reads or writes. View.",
           frame);
  robot.op("setVolatilePose", "frame, pose", &System::setVolatilePose, "Sets the pose that getVolatilePose() returns.",
           frame);
  robot.op("getComPosition", nullptr, py::overload_cast<Index>(&System::getComPosition, py::const_),
           "getComPosition(body): centre of mass of one body in the world (m).", body, world);
  robot.op("getComPositionInRoot", "", &System::getComPositionInRoot,
           "Centre of mass of the robot in the root's frame (m). View.", body, exceptRoot);
  robot.op("getComPosition", "body=...", py::overload_cast<>(&System::getComPosition, py::const_),
           "getComPosition(): centre of mass of the robot in the world (m). View.", body, world);

  robot.op("getGeneralizedMass", "", &System::getGeneralizedMass,
           "21 x 21, in the order of the coordinates: the root's six in its axes, then the joint angles. View.", body,
           anglesAndMassMatrix);
  robot.op(
      "getJacobianInRoot", "", &System::getJacobianInRoot,
      "6 x 21, rows angular then linear: the velocity, at the root's origin in its frame, that a unit rate of each\n"
      "coordinate gives the body whose joint has it. View.",
      body, exceptRoot);
  robot.op("getParentsVector", "", &System::getParentsVector, "Per body, its parent; -1 for the root.");
  robot.op("getDofNumbersVector", "", &System::getDofNumbersVector, "Per body, how many coordinates it has.");
  robot.op("getDofIndexesVector", "", &System::getDofIndexesVector, "Per body, the index of its first coordinate.");

  robot.op("computeInverseDynamics", "", &System::computeInverseDynamics,
           "The joint torques that give the set accelerations at the set positions, velocities and wrenches.");
  robot.op("getJointAngleTorque", "joint", &System::getJointAngleTorque, "Torque of one joint (N m).", joint,
           inverseDynamics);
  robot.op("getJointAnglesTorque", "", &System::getJointAnglesTorque, "Torques of all 15 joints (N m). View.", body,
           inverseDynamics);

  robot.addFunction(
      "evaluate", "inputs, outputs, threads=None", evaluateText,
      [evaluate = robot.evaluate](const Robot& self, const py::object& inputs, const py::iterable& outputs,
                                  std::optional<py::ssize_t> threads) {
        return (*evaluate)(*self.system, inputs, outputs, threads);
      },
      py::arg("inputs"), py::arg("outputs"), py::arg("threads") = py::none());
}

}  // namespace

}  // namespace lumo::python

PYBIND11_MODULE(lumo, module) {
  using namespace lumo::python;
  py::dtype::of<float>();  // Makes pybind11 load NumPy now. Two threads that did it later would deadlock.
  py::options options;
  options.disable_function_signatures();

  py::class_<File> plugin(module, "Plugin", py::is_final(),
                          "A loaded plug-in. It stays loaded until its last object is deleted.");
  plugin
      .def(py::init(&load), py::arg("file") = py::none(),
           "__init__(self, file=None)\n--\n\n"
           "Loads the file, by default the plug-in of the same build or installation. Raises RuntimeError.")
      .def("create", &create, "create(self, /)\n--\n\nA new RigidBodySystem.")
      .def(
          "__reduce__",
          [](const File& file) {
            const py::object path = py::module_::import("os").attr("fsdecode")(py::bytes(file.path.string()));
            return py::make_tuple(py::type::of<File>(), file.isOwn ? py::tuple() : py::make_tuple(path));
          },
          "__reduce__(self, /)\n--\n\nA Plugin is pickled as its file, the default plug-in as the default.");
  module.attr("__version__") = LUMO_VERSION;

  Operations robot(module, "RigidBodySystem", py::is_final(), systemText);
  addOperations(robot);

  // pybind11 would end the process if somebody made an object of the base class of its classes.
  reinterpret_cast<PyTypeObject*>(py::object(plugin.attr("__base__")).ptr())->tp_new = [](PyTypeObject* type, PyObject*,
                                                                                          PyObject*) -> PyObject* {
    PyErr_Format(PyExc_TypeError, "cannot create '%s' objects", type->tp_name);
    return nullptr;
  };
  stopEvaluationsAtExit();
}

/// What Python calls to import the module. In a sub-interpreter, pybind11 would wait for ever.
PYBIND11_PLUGIN_IMPL(_lumo) {
  if (PyInterpreterState_Get() == PyInterpreterState_Main()) return PyInit_lumo();
  PyErr_SetString(PyExc_ImportError, "lumo can only be imported in the main interpreter");
  return nullptr;
}
