#include <python/arguments.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <stdexcept>

#include <Eigen/LU>

namespace lumo::python {

void raiseUnknown(const char* noun, py::handle given, const std::vector<std::string>& names) {
  py::dict known;
  for (const std::string& name : names) known[py::str(name).attr("lower")()] = name;
  const py::object start = given[py::slice(0, 100, 1)];
  const auto closest = py::module_::import("difflib").attr("get_close_matches");
  const py::list nearest = closest(start.attr("lower")(), known, 1);
  if (nearest.empty()) raise(PyExc_KeyError, "no {} named \"{}\"", noun, start);
  raise(PyExc_KeyError, "no {} named \"{}\"; the nearest is \"{}\"", noun, start, known[nearest[0]]);
}

std::vector<std::string> namesOf(const System& system, const Indexed& of) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < (system.*of.count)(); ++i) names.push_back((system.*of.name)(i));
  return names;
}

std::size_t toIndex(const System& system, const Indexed& of, py::handle value) {
  const std::size_t count = (system.*of.count)();
  if (PyUnicode_Check(value.ptr()) && of.name != nullptr) {
    for (std::size_t i = 0; i < count; ++i) {
      if (PyUnicode_CompareWithASCIIString(value.ptr(), (system.*of.name)(i).c_str()) == 0) return i;
    }
    raiseUnknown(of.noun, value, namesOf(system, of));
  }
  if (!PyLong_CheckExact(value.ptr()) && typeName(value).cast<std::string>().rfind("bool", 0) == 0) {  // or NumPy's
    raise(PyExc_TypeError, "expected the index of a {}, got a bool", of.noun);
  }
  const py::ssize_t index = PyNumber_AsSsize_t(value.ptr(), PyExc_IndexError);
  if (index == -1 && PyErr_Occurred()) throw py::error_already_set();
  if (index < 0 || static_cast<std::size_t>(index) >= count) {
    raise(PyExc_IndexError, "expected 0 to {} as the index of a {}, got {}", count - 1, of.noun, index);
  }
  return static_cast<std::size_t>(index);
}

namespace {

template <typename Number>
float rounded(Number x) {
  if (std::isfinite(x) && std::abs(x) > Number(std::numeric_limits<float>::max())) {
    throw std::invalid_argument("expected numbers of at most 3.4e38, got a larger one");
  }
  return static_cast<float>(x);
}

/// The value as an array of real numbers. An array of floats or doubles is not copied.
py::array toRealArray(py::handle value, const std::string& label) {
  py::array array(py::reinterpret_borrow<py::object>(value));
  const bool isPlain = Py_TYPE(value.ptr()) == py::detail::npy_api::get().PyArray_Type_;
  const bool isFloating = py::isinstance<py::array_t<float>>(array) || py::isinstance<py::array_t<double>>(array);
  if (isPlain && isFloating) return array;
  if (std::strchr("fiu", array.dtype().kind()) == nullptr || py::hasattr(array, "mask")) {
    raise(PyExc_TypeError, "{}expected numbers, got {} of {}", label, typeName(value), array.dtype());
  }
  if (isFloating) return array;  // a subclass, such as numpy.memmap
  return py::array_t<double, py::array::forcecast>(array);
}

}  // namespace

Numbers::Numbers(py::handle value, const Shape& shape, bool areMany, const std::string& label)
    : shape_(shape), array_(toRealArray(value, label)), areFloats_(array_.itemsize() == sizeof(float)) {
  const py::ssize_t needed[] = {shape.rows, shape.columns};
  const py::ssize_t* const sizes = std::end(needed) - shape.dimensions;
  const bool fits = array_.ndim() == areMany + shape.dimensions &&
                    std::equal(sizes, std::end(needed), array_.shape() + (areMany ? 1 : 0));
  if (!fits) {
    py::list expected;
    if (areMany) expected.append("N");
    for (const py::ssize_t* size = sizes; size != std::end(needed); ++size) expected.append(*size);
    const auto text = py::str(py::tuple(expected)).attr("replace")("'", "");
    raise(PyExc_ValueError, "{}expected shape {}, got {}", label, text, array_.attr("shape"));
  }
  valueStride_ = areMany ? array_.strides(0) : 0;
  rowStride_ = shape.dimensions == 2 ? array_.strides(array_.ndim() - 2) : 0;
  columnStride_ = shape.dimensions >= 1 ? array_.strides(array_.ndim() - 1) : 0;
}

template <typename Number>
void Numbers::readAs(const char* first, float* to) const {
  for (py::ssize_t r = 0; r < shape_.rows; ++r) {
    for (py::ssize_t c = 0; c < shape_.columns; ++c) {
      Number number;  // It may be anywhere in memory.
      std::memcpy(&number, first + r * rowStride_ + c * columnStride_, sizeof number);
      *to++ = rounded(number);
    }
  }
}

void Numbers::read(std::size_t i, std::vector<float>& floats) const {
  floats.resize(shape_.size());
  const char* const first = static_cast<const char*>(array_.data()) + static_cast<py::ssize_t>(i) * valueStride_;
  areFloats_ ? readAs<float>(first, floats.data()) : readAs<double>(first, floats.data());
}

float toFloat(py::handle value) {
  if (PyFloat_Check(value.ptr()) || PyLong_CheckExact(value.ptr())) {
    const double number = PyFloat_AsDouble(value.ptr());
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    return rounded(number);
  }
  std::vector<float> floats;
  Numbers(value, {0, 1, 1}).read(0, floats);
  return floats[0];
}

void checkPose(const float* pose, bool isRoot) {
  using Matrix = Eigen::Matrix<float, 4, 4, Eigen::RowMajor>;
  const auto matrix = Matrix::Map(pose);
  if (!((matrix.row(3) - Eigen::RowVector4f::Unit(3)).array().abs() < 1e-6F).all()) {
    throw std::invalid_argument("expected 0, 0, 0, 1 as the last row of a pose");
  }
  const Eigen::Matrix3f R = matrix.topLeftCorner<3, 3>();
  const Eigen::Array33f error = (R * R.transpose() - Eigen::Matrix3f::Identity()).array().abs();
  if (isRoot && ((error > 1e-3F).any() || R.determinant() < 0)) {  // NaN is no error
    throw std::invalid_argument("expected a rotation in the pose: its rows must be perpendicular unit vectors");
  }
}

}  // namespace lumo::python
