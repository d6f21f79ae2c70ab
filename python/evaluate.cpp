#include <python/evaluate.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <shared_mutex>
#include <stdexcept>
#include <tuple>

namespace lumo::python {

namespace {

std::shared_mutex masses;
std::atomic<bool> isPythonEnding = false;
constexpr std::size_t batch = 64;  // states that a thread takes at once

/// What to do for one state. The vector is for the numbers of an input.
using Step = std::function<void(System&, std::size_t state, std::vector<float>& floats)>;

void addComputations(unsigned needed, std::vector<Step>& steps) {
  if ((needed & angles) != 0 && (needed & inverseDynamics) == 0) needed |= exceptRoot;
  const std::pair<unsigned, void (System::*)()> computations[] = {
      {exceptRoot, &System::computeFwdKinematicsExceptRoot},
      {onlyRoot, &System::computeFwdKinematicsOnlyRoot},
      {inverseDynamics, &System::computeInverseDynamics},
      {massMatrix, &System::computeGeneralizedMass},
  };
  for (const auto& [bit, compute] : computations) {
    if ((needed & bit) == 0) continue;
    steps.emplace_back([compute = compute](System& system, std::size_t, auto&) { std::invoke(compute, system); });
  }
}

/// An entry of a table, its name, and the index if its operation takes one.
template <typename Entry>
using Selected = std::tuple<const Entry&, std::string, std::optional<std::size_t>>;

/// Looks up a key: a name, or a tuple of a name and an argument.
template <typename Entry>
Selected<Entry> select(const std::map<std::pair<std::string, bool>, Entry>& table, const char* noun,
                       const System& system, const py::handle key) {
  const py::tuple parts = py::isinstance<py::tuple>(key) ? py::reinterpret_borrow<py::tuple>(key) : py::make_tuple(key);
  if (parts.empty() || parts.size() > 2 || !py::isinstance<py::str>(parts[0])) {
    raise(PyExc_TypeError, "expected a name or a tuple (name, body or joint) as an {}, got {!r}", noun, key);
  }
  const py::str given = parts[0];
  const bool hasIndex = parts.size() == 2;
  std::vector<std::string> names;
  for (const auto& [known, entry] : table) {
    const auto& [name, takesIndex] = known;
    names.push_back(name);
    if (!given.equal(py::str(name)) || (takesIndex != hasIndex && table.count({name, hasIndex}) == 1)) continue;
    if (takesIndex != hasIndex) {
      raise(PyExc_TypeError, "{} takes {} argument, got {!r}", name, takesIndex ? "an" : "no", key);
    }
    if (!hasIndex) return {entry, name, std::nullopt};
    return {entry, name, toIndex(system, entry.of, py::object(parts[1]))};
  }
  raiseUnknown(noun, given, names);
}

/// Runs the steps in every state, with one thread for each clone. Does not need Python's lock.
void run(const std::vector<Step>& steps, std::size_t count, const std::vector<std::unique_ptr<System>>& clones) {
  std::atomic<std::size_t> next = 0;
  const auto work = [&](System& system) {
    std::vector<float> floats;
    for (std::size_t first; (first = next.fetch_add(batch)) < count;) {
      for (std::size_t state = first; state < std::min(first + batch, count); ++state) {
        for (const Step& step : steps) step(system, state, floats);
      }
    }
  };
  const auto stopAll = [&](auto action) {  // if the action throws
    try {
      action();
    } catch (...) {
      next = count;
      throw;
    }
  };
  std::vector<std::future<void>> workers;  // whose destructors wait
  stopAll([&] {
    for (const auto& clone : clones) {
      workers.push_back(std::async(std::launch::async, [&] { stopAll([&] { work(*clone); }); }));
    }
    for (auto& worker : workers) {
      while (worker.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
        if (isPythonEnding) throw std::runtime_error("evaluate was stopped, because Python ends");
        const py::gil_scoped_acquire locked;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
      }
      worker.get();
    }
  });
}

}  // namespace

py::dict Evaluate::operator()(const System& robot, const py::object& given, const py::iterable& outputs,
                              std::optional<py::ssize_t> threads) const {
  // A copy, because reading an input can run code of the caller that changes the dict.
  const py::dict inputs(py::module_::import("builtins").attr("dict")(given));
  if (!threads) threads = static_cast<py::ssize_t>(py::len(py::module_::import("os").attr("sched_getaffinity")(0)));
  if (*threads < 1) raise(PyExc_ValueError, "expected at least 1 as the number of threads");
  if (py::isinstance<py::str>(outputs)) raise(PyExc_TypeError, "expected a list of outputs, got a name");
  if (inputs.empty()) raise(PyExc_ValueError, "expected at least one input");

  std::vector<Step> steps, last, reads;
  std::size_t count = 0;
  std::string counted;
  for (const auto& [key, values] : inputs) {
    const auto [setter, name, index] = select(inputs_, "input", robot, key);
    const std::string label = py::repr(key);
    const Numbers numbers(values, setter.shape(robot), true, label + ": ");
    if (!counted.empty() && numbers.count() != count) {
      raise(PyExc_ValueError, "{} has {} states, but {} has {}", counted, count, label, numbers.count());
    }
    counted = label;
    count = numbers.count();
    // A computation would overwrite what setPose sets.
    (name == "setPose" ? last : steps)
        .emplace_back(
            [=, set = setter.set, index = index.value_or(0)](System& system, std::size_t state, auto& floats) {
              try {
                numbers.read(state, floats);
                set(system, index, floats);
              } catch (const std::invalid_argument& error) {
                throw std::invalid_argument(label + ", state " + std::to_string(state) + ": " + error.what());
              }
            });
  }

  std::vector<std::unique_ptr<System>> clones;
  clones.push_back(robot.clone());
  py::dict results;
  unsigned needed = 0;
  for (const py::handle key : outputs) {
    const auto [getter, name, index] = select(outputs_, "output", robot, key);
    const bool isRoot = index == 0U;
    if (isRoot && name == "computePartialComPositionInRoot") {
      needed |= world;                                     // It is the centre of mass of the robot in the world.
    } else if (!isRoot || getter.computations != world) {  // The root's pose is an input.
      needed |= getter.computations;
    }
    py::array result = getter.allocate(*clones[0], index.value_or(0), count);
    // The step keeps the array, because a key that is given twice replaces it in the dict.
    reads.emplace_back([kept = result, first = static_cast<char*>(result.mutable_data()), size = result.strides(0),
                        get = getter.get, index = index.value_or(0)](System& system, std::size_t state, auto&) {
      get(system, index, first + static_cast<py::ssize_t>(state) * size);
    });
    results[key] = result;
  }
  addComputations(needed, steps);
  steps.insert(steps.end(), last.begin(), last.end());
  steps.insert(steps.end(), reads.begin(), reads.end());

  const std::size_t most = std::min(static_cast<std::size_t>(*threads), (count + batch - 1) / batch);
  while (clones.size() < most) clones.push_back(robot.clone());
  {
    std::shared_lock lock(masses, std::defer_lock);  // released after Python's lock is taken: Python cannot end before
    const py::gil_scoped_release unlocked;
    lock.lock();
    run(steps, count, clones);
  }
  return results;
}

std::unique_lock<std::shared_mutex> lockMasses() {
  std::unique_lock lock(masses, std::try_to_lock);
  if (!lock) {
    const py::gil_scoped_release unlocked;  // for the evaluations, which take it from time to time
    lock.lock();
  }
  return lock;
}

void stopEvaluationsAtExit() {
  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    isPythonEnding = true;
    const auto lock = lockMasses();
  }));
}

}  // namespace lumo::python
