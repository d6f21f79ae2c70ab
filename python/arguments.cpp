#include <python/arguments.hpp>

#include <algorithm>
#include <cmath>
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

std::size_t nameToIndex(const System& system, const Indexed& of, py::handle name) {
  if (!PyUnicode_Check(name.ptr())) {
    raise(PyExc_TypeError, "expected the name of a {}, got {}", of.noun, typeName(name));
  }
  py::ssize_t size = 0;
  const char* const text = PyUnicode_AsUTF8AndSize(name.ptr(), &size);
  try {
    if (text != nullptr) return (system.*of.id)(std::string(text, static_cast<std::size_t>(size)));
  } catch (const std::out_of_range&) {
  }
  PyErr_Clear();
  raiseUnknown(of.noun, name, namesOf(system, of));
}

std::size_t toIndex(const System& system, const Indexed& of, py::handle value) {
  if (PyUnicode_Check(value.ptr()) && of.name != nullptr) return nameToIndex(system, of, value);
  const auto isBool = [&] {
    return PyBool_Check(value.ptr()) || py::type::handle_of(value).is(py::dtype::of<bool>().attr("type"));
  };
  if (!PyLong_CheckExact(value.ptr()) && (PyIndex_Check(value.ptr()) == 0 || isBool())) {
    raise(PyExc_TypeError,
          of.name != nullptr ? "expected the index or name of a {}, got {}" : "expected the index of a {}, got {}",
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

std::vector<py::ssize_t> Shape::sizes(std::vector<py::ssize_t> first) const {
  if (dimensions == 2) first.push_back(rows);
  if (dimensions >= 1) first.push_back(columns);
  return first;
}

namespace {

/// The value as an array of real numbers. An array that is already one is not copied.
py::array toRealArray(py::handle value, const std::string& label) {
  const bool isArray = Py_TYPE(value.ptr()) == py::detail::npy_api::get().PyArray_Type_;
  if (!isArray && py::isinstance<py::array>(value) &&
      py::module_::import("numpy.ma").attr("is_masked")(value).cast<bool>()) {
    raise(PyExc_TypeError, "{}expected numbers, got {} with masked values", label, typeName(value));
  }
  const auto object = py::reinterpret_borrow<py::object>(value);
  py::array array = isArray ? py::reinterpret_borrow<py::array>(object) : py::array(object);
  const char kind = array.dtype().kind();
  bool areReal = kind == 'f' || kind == 'i' || kind == 'u';
  if (kind == 'O') {  // for example integers of more than 64 bits
    const py::object real = py::module_::import("numbers").attr("Real");
    const py::list elements = array.attr("ravel")().attr("tolist")();
    areReal = std::all_of(elements.begin(), elements.end(),
                          [&](py::handle x) { return py::isinstance(x, real) && !PyBool_Check(x.ptr()); });
  }
  if (!areReal) raise(PyExc_TypeError, "{}expected numbers, got {} of {}", label, typeName(value), array.dtype());
  return array;
}

template <typename Number>
float rounded(Number x) {
  if (sizeof x > sizeof(float) && std::abs(x) > Number(std::numeric_limits<float>::max()) && std::isfinite(x)) {
    throw std::invalid_argument("expected numbers of at most 3.4e38, got a larger one");
  }
  return static_cast<float>(x);
}

template <typename Number>
bool holds(const py::array& array) {
  const py::dtype type = array.dtype();
  return type.kind() == 'f' && type.itemsize() == sizeof(Number) && type.byteorder() == '=' &&
         (array.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) != 0;
}

}  // namespace

template <typename Number>
void Numbers::readAs(const Numbers& numbers, std::size_t i, std::vector<float>& floats) {
  floats.resize(static_cast<std::size_t>(numbers.shape_.size()));
  float* to = floats.data();
  const char* row = numbers.data_ + static_cast<py::ssize_t>(i) * numbers.valueStride_;
  for (py::ssize_t r = 0; r < numbers.shape_.rows; ++r, row += numbers.rowStride_) {
    for (py::ssize_t c = 0; c < numbers.shape_.columns; ++c) {
      *to++ = rounded(*reinterpret_cast<const Number*>(row + c * numbers.columnStride_));
    }
  }
}

Numbers::Numbers(py::handle value, const Shape& shape, bool areMany, const std::string& label)
    : shape_(shape), areMany_(areMany), array_(toRealArray(value, label)) {
  const int first = areMany ? 1 : 0;  // dimension of the shape
  const int dimensions = shape.dimensions;
  bool fits = array_.ndim() == first + dimensions;
  fits = fits && (dimensions < 1 || array_.shape(first + dimensions - 1) == shape.columns);
  fits = fits && (dimensions < 2 || array_.shape(first) == shape.rows);
  if (!fits) {
    const auto described = [](const py::tuple& sizes) -> py::object {
      if (sizes.empty()) return py::str("one number");
      return py::str("an array of shape {}").format(sizes).attr("replace")("'", "");
    };
    py::list needed = py::cast(shape.sizes());
    if (areMany) needed.insert(0, "N");
    raise(PyExc_ValueError, "{}expected {}, got {}", label, described(py::tuple(needed)),
          described(array_.attr("shape")));
  }
  if (holds<float>(array_)) {
    read_ = &Numbers::readAs<float>;
  } else if (holds<double>(array_)) {
    read_ = &Numbers::readAs<double>;
  } else {
    array_ = py::array_t<long double, py::array::c_style | py::array::forcecast>::ensure(array_);
    // The conversion fails only for a real number that is too large.
    if (!array_) throw std::invalid_argument(label + "expected numbers of at most 3.4e38, got a larger one");
    read_ = &Numbers::readAs<long double>;
  }
  data_ = static_cast<const char*>(array_.data());
  valueStride_ = areMany ? array_.strides(0) : 0;
  rowStride_ = dimensions == 2 ? array_.strides(first) : 0;
  columnStride_ = dimensions >= 1 ? array_.strides(first + dimensions - 1) : 0;
}

float toFloat(py::handle value) {
  const PyObject* const float32 = py::detail::array_descriptor_proxy(py::dtype::of<float>().ptr())->typeobj;
  const bool isUsual =
      PyFloat_Check(value.ptr()) || PyLong_CheckExact(value.ptr()) || py::type::handle_of(value).ptr() == float32;
  const double number = isUsual ? PyFloat_AsDouble(value.ptr()) : 0;
  if (isUsual && PyErr_Occurred() == nullptr) return rounded(number);
  PyErr_Clear();
  std::vector<float> floats(1);
  Numbers(value, {0, 1, 1}).read(0, floats);
  return floats[0];
}

void checkLastRow(const float* pose) {
  for (int column = 0; column < 4; ++column) {
    if (!(std::abs(pose[12 + column] - (column == 3 ? 1.0F : 0.0F)) < 1e-6F)) {
      throw std::invalid_argument("expected 0, 0, 0, 1 as the last row of a pose");
    }
  }
}

void checkRotation(const float* pose) {
  using Rows = Eigen::Matrix<float, 3, 4, Eigen::RowMajor>;
  const Eigen::Matrix3f R = Rows::Map(pose).leftCols<3>();
  const Eigen::Array33f error = (R * R.transpose() - Eigen::Matrix3f::Identity()).array().abs();
  if ((error > 1e-3F).any() || R.determinant() < 0) {  // NaN is no error
    throw std::invalid_argument("expected a rotation in the pose: its rows must be perpendicular unit vectors");
  }
}

}  // namespace lumo::python
