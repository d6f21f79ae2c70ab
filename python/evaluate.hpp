#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <utility>

#include <python/results.hpp>

namespace lumo::python {

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
    setters_.insert({{name, hasIndex}, {of, &shapeOf<Argument>, set}});
  }

  /// Adds an operation with a result as an output.
  template <bool hasIndex, typename Result, typename Operation>
  void addOutput(const std::string& name, Operation operation, const Indexed& of, Computations computations) {
    using Kept = std::conditional_t<std::is_same_v<Result, OX::Math::Transform>, PoseMatrix, Result>;
    using Number = typename decltype(blockOf(std::declval<const Kept&>()))::Number;
    const auto get = [operation](System& system, std::size_t index, void* to) {
      const Kept& result = Kept(call<hasIndex>(operation, system, index));
      const Block<Number> block = blockOf(result);
      if (to != nullptr) block.copyTo(static_cast<Number*>(to));
      return block.shape;
    };
    getters_.insert({{name, hasIndex}, {of, computations, py::dtype::of<Number>(), get}});
  }

  py::dict operator()(const System& robot, const py::dict& inputs, const py::object& outputs,
                      const py::object& threads) const;

 private:
  using Key = std::pair<std::string, bool>;  // the name, and if there is an argument that selects
  struct Setter {
    const Indexed& of;
    Shape (*shape)(const System&);
    std::function<void(System&, std::size_t index, const std::vector<float>&)> set;
  };
  struct Getter {
    const Indexed& of;
    Computations computations;
    py::dtype type;
    /// Returns the shape of the result and copies the result, unless `to` is nullptr.
    std::function<Shape(System&, std::size_t index, void* to)> get;
  };

  template <bool hasIndex, typename Operation, typename... Values>
  static decltype(auto) call(Operation operation, System& system, std::size_t index, Values&&... values) {
    if constexpr (hasIndex) {
      return std::invoke(operation, system, index, values...);
    } else {
      return std::invoke(operation, system, values...);
    }
  }

  std::map<Key, Setter> setters_;
  std::map<Key, Getter> getters_;
};

/// Waits until no evaluation runs, and locks the masses, which all objects share. Returns with Python's lock.
[[nodiscard]] std::unique_lock<std::shared_mutex> lockMasses();

/// Lets evaluations end when Python ends: Python would end the process if they took its lock later.
void stopEvaluationsAtExit();

}  // namespace lumo::python
