#pragma once

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <service/RigidBodySystem.hpp>

// Arguments from Python: everything is checked before the plug-in is called.

namespace lumo::python {

namespace py = pybind11;
using System = RigidBodySystem;

template <typename... Values>
[[noreturn]] void raise(PyObject* type, const char* format, const Values&... values) {
  PyErr_SetObject(type, py::str(format).format(values...).ptr());
  throw py::error_already_set();
}
/// Raises KeyError. The message contains the most similar of the names, if one is similar.
[[noreturn]] void raiseUnknown(const char* noun, py::handle given, const std::vector<std::string>& names);

inline py::object typeName(py::handle value) { return py::type::handle_of(value).attr("__name__"); }

/// What the index of an operation counts.
struct Indexed {
  const char* noun;
  std::size_t (System::*count)() const;
  const std::string& (System::*name)(std::size_t) const = nullptr;
};
inline const Indexed body = {"body", &System::getNbBodies, &System::getBodyName};
inline const Indexed joint = {"joint angle", &System::getNbJointAngles, &System::getJointAngleName};
inline const Indexed frame = {"volatile frame", &System::getNbVolatileFrames};

std::vector<std::string> namesOf(const System& system, const Indexed& of);
/// The index from an index or a name.
std::size_t toIndex(const System& system, const Indexed& of, py::handle value);

/// The shape of a value in Python: a number, an array of `columns` numbers, or a matrix.
struct Shape {
  int dimensions;
  py::ssize_t rows, columns;

  std::size_t size() const { return static_cast<std::size_t>(rows * columns); }
};

/// The real numbers of one value of a shape, or of many such values, in a number, a list or an array of any layout.
class Numbers {
 public:
  /// If there are many values, the first index of the array counts them. Messages start with the label.
  Numbers(py::handle value, const Shape& shape, bool areMany = false, const std::string& label = "");

  std::size_t count() const { return static_cast<std::size_t>(array_.shape(0)); }
  /// Sets `floats` to value i, by rows. Does not need Python's lock. Throws std::invalid_argument.
  void read(std::size_t i, std::vector<float>& floats) const;

 private:
  template <typename Number>
  void readAs(const char* first, float* to) const;

  Shape shape_;
  py::array array_;
  bool areFloats_;
  py::ssize_t valueStride_, rowStride_, columnStride_;
};

float toFloat(py::handle value);

/// The argument of setRootPose, whose rotation is checked.
struct RootPose : OX::Math::Transform {};

/// Checks the last row of a pose and, if it is the root's, its rotation.
void checkPose(const float* pose, bool isRoot);

template <typename T>
inline constexpr bool isJointAngles = std::is_same_v<T, Eigen::Ref<const Eigen::ArrayXf>>;
template <typename T>
inline constexpr bool isPose = std::is_base_of_v<OX::Math::Transform, T>;

/// The shape of an argument in Python, by its type in the interface.
template <typename T>
Shape shapeOf(const System& system) {
  if constexpr (isPose<T>)
    return {2, 4, 4};
  else if constexpr (std::is_same_v<T, Eigen::Matrix3f>)
    return {2, 3, 3};
  else if constexpr (std::is_same_v<T, OX::Math::Position3D>)
    return {1, 1, 3};
  else if constexpr (std::is_same_v<T, float>)
    return {0, 1, 1};
  else if constexpr (isJointAngles<T>)
    return {1, 1, static_cast<py::ssize_t>(system.getNbJointAngles())};
  else
    return {1, 1, 6};  // a velocity, an acceleration or a wrench
}

/// An argument from its floats. Throws std::invalid_argument.
template <typename T>
decltype(auto) fromFloats(const std::vector<float>& floats) {
  if constexpr (std::is_same_v<T, std::vector<float>>) {
    return (floats);
  } else if constexpr (isJointAngles<T>) {
    return Eigen::Map<const Eigen::ArrayXf>(floats.data(), static_cast<Eigen::Index>(floats.size()));
  } else if constexpr (std::is_same_v<T, Eigen::Matrix3f>) {
    return Eigen::Matrix3f(Eigen::Matrix3f::Map(floats.data()).transpose());
  } else if constexpr (std::is_same_v<T, OX::Math::Velocity6D>) {
    return T(floats[0], floats[1], floats[2], floats[3], floats[4], floats[5]);
  } else {
    if constexpr (isPose<T>) checkPose(floats.data(), std::is_same_v<T, RootPose>);
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(static_cast<void*>(&value), floats.data(), sizeof value);
    return value;
  }
}

}  // namespace lumo::python
