#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <utility>

#include <python/arguments.hpp>

namespace lumo::python {

/// A pose as Python sees it.
using PoseMatrix = Eigen::Matrix<float, 4, 4, Eigen::RowMajor>;

inline PoseMatrix toMatrix(const OX::Math::Transform& pose) {
  PoseMatrix matrix = PoseMatrix::Identity();
  std::memcpy(matrix.data(), &pose, sizeof pose);
  return matrix;
}

/// The numbers of a result in memory, without gaps.
template <typename Number_>
struct Block {
  using Number = Number_;
  const void* first;
  Shape shape;
  bool isByRows = true;

  /// An array for one block, or for `count` blocks.
  py::array array(std::optional<std::size_t> count = {}, py::handle owner = {}) const {
    constexpr py::ssize_t size = sizeof(Number);
    std::vector<py::ssize_t> sizes = {shape.rows, shape.columns};
    std::vector<py::ssize_t> strides = {size, size};
    strides[isByRows ? 0 : 1] *= isByRows ? shape.columns : shape.rows;
    sizes.erase(sizes.begin(), sizes.end() - shape.dimensions);
    strides.erase(strides.begin(), strides.end() - shape.dimensions);
    if (!count) return {py::dtype::of<Number>(), std::move(sizes), std::move(strides), first, owner};
    sizes.insert(sizes.begin(), static_cast<py::ssize_t>(*count));
    strides.insert(strides.begin(), static_cast<py::ssize_t>(bytes()));
    return {py::dtype::of<Number>(), std::move(sizes), std::move(strides)};
  }
  std::size_t bytes() const { return shape.size() * sizeof(Number); }
};

/// The numbers of a result, by its type in the interface.
template <typename T>
auto blockOf(const T& result) {
  if constexpr (std::is_arithmetic_v<T>) {
    return Block<std::conditional_t<std::is_same_v<T, float>, float, std::int64_t>>{&result, {0, 1, 1}};
  } else if constexpr (std::is_same_v<T, FloatView> || std::is_same_v<T, std::vector<std::int64_t>>) {
    using Number = std::decay_t<decltype(*result.begin())>;
    return Block<Number>{&*result.begin(), {1, 1, static_cast<py::ssize_t>(result.size())}};
  } else if constexpr (std::is_base_of_v<Eigen::MatrixBase<T>, T>) {
    return Block<float>{result.data(), {2, result.rows(), result.cols()}, T::IsRowMajor};
  } else {  // a position or a velocity
    return Block<float>{&result, {1, 1, sizeof(T) / sizeof(float)}};
  }
}

/// The computations that a result needs, as docs/freshness.md says. `angles` is any one that takes over the joint
/// angles.
enum Computations : unsigned {
  none = 0,
  exceptRoot = 1,
  onlyRoot = 2,
  inverseDynamics = 4,
  angles = 8,
  massMatrix = 16,
  world = exceptRoot | onlyRoot,
  anglesAndMassMatrix = angles | massMatrix,
};

/// Evaluates many states in one call: sets inputs, runs the computations that the outputs need, and stores the outputs,
/// for each state. Holds a table of the inputs and one of the outputs.
class Evaluate {
 public:
  /// Adds an operation with one argument as an input. If it has an index too, `of` says what the index counts.
  template <bool hasIndex, typename Argument, typename Operation>
  void addInput(const std::string& name, Operation operation, const Indexed& of) {
    const auto set = [operation](System& system, std::size_t index, const std::vector<float>& floats) {
      call<hasIndex>(operation, system, index, fromFloats<Argument>(floats));
    };
    inputs_.insert({{name, hasIndex}, {of, &shapeOf<Argument>, set}});
  }

  /// Adds an operation with a result as an output.
  template <bool hasIndex, typename Result, typename Operation>
  void addOutput(const std::string& name, Operation operation, const Indexed& of, Computations computations) {
    const auto withBlock = [operation](System& system, std::size_t index, auto use) {
      const Result& result = call<hasIndex>(operation, system, index);
      if constexpr (std::is_same_v<Result, OX::Math::Transform>) {
        return use(blockOf(toMatrix(result)));
      } else {
        return use(blockOf(result));
      }
    };
    const auto allocate = [withBlock](System& system, std::size_t index, std::size_t count) {
      return withBlock(system, index, [count](const auto& block) { return block.array(count); });
    };
    const auto get = [withBlock](System& system, std::size_t index, void* to) {
      withBlock(system, index, [to](const auto& block) { std::memcpy(to, block.first, block.bytes()); });
    };
    outputs_.insert({{name, hasIndex}, {of, computations, allocate, get}});
  }

  py::dict operator()(const System& robot, const py::object& given, const py::iterable& outputs,
                      std::optional<py::ssize_t> threads) const;

 private:
  using Key = std::pair<std::string, bool>;  // the name, and if there is an argument that selects
  struct Input {
    const Indexed& of;
    Shape (*shape)(const System&);
    std::function<void(System&, std::size_t index, const std::vector<float>&)> set;
  };
  struct Output {
    const Indexed& of;
    Computations computations;
    std::function<py::array(System&, std::size_t index, std::size_t count)> allocate;
    std::function<void(System&, std::size_t index, void* to)> get;
  };

  template <bool hasIndex, typename Operation, typename... Values>
  static decltype(auto) call(Operation operation, System& system, std::size_t index, Values&&... values) {
    if constexpr (hasIndex) {
      return std::invoke(operation, system, index, values...);
    } else {
      return std::invoke(operation, system, values...);
    }
  }

  std::map<Key, Input> inputs_;
  std::map<Key, Output> outputs_;
};

/// Waits until no evaluation runs, and locks the masses, which all objects share. Returns with Python's lock.
[[nodiscard]] std::unique_lock<std::shared_mutex> lockMasses();

/// Lets evaluations end when Python ends: Python would end the process if they took its lock later.
void stopEvaluationsAtExit();

}  // namespace lumo::python
