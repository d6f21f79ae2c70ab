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

/// Looks up a key, a name or a tuple of a name and an argument. Returns also the name, and the index if there is one.
template <typename Entry>
std::tuple<const Entry&, std::string, bool, std::size_t> select(
    const std::map<std::pair<std::string, bool>, Entry>& table, const char* noun, const System& system,
    py::handle key) {
  const py::tuple parts = py::isinstance<py::tuple>(key) ? py::reinterpret_borrow<py::tuple>(key) : py::make_tuple(key);
  if (parts.empty() || parts.size() > 2 || !PyUnicode_Check(py::object(parts[0]).ptr())) {
    raise(PyExc_TypeError, "expected a name or a tuple (name, body or joint) as an {}, got {!r}", noun, key);
  }
  const py::str given = parts[0];
  const bool hasIndex = parts.size() == 2;
  for (const auto& [known, entry] : table) {
    if (known.second != hasIndex || !given.equal(py::str(known.first))) continue;
    return {entry, known.first, hasIndex, hasIndex ? toIndex(system, entry.of, py::object(parts[1])) : 0};
  }
  std::vector<std::string> names;
  for (const auto& known_and_entry : table) {
    names.push_back(known_and_entry.first.first);
    if (given.equal(py::str(names.back()))) {
      raise(PyExc_TypeError, hasIndex ? "{1} takes no {0} argument, got {2!r}" : "{1} takes an argument, give a tuple",
            noun, given, key);
    }
  }
  if (given.equal(py::str("setBodyInertia"))) {
    raise(PyExc_ValueError, "setBodyInertia changes all objects of the process and cannot be an {}", noun);
  }
  raiseUnknown(noun, given, names);
}

std::size_t toThreads(const py::object& threads) {
  const py::ssize_t count =
      threads.is_none() ? static_cast<py::ssize_t>(py::len(py::module_::import("os").attr("sched_getaffinity")(0)))
                        : PyNumber_AsSsize_t(threads.ptr(), PyExc_ValueError);
  if (count == -1 && PyErr_Occurred()) throw py::error_already_set();
  if (count < 1) raise(PyExc_ValueError, "expected at least 1 as the number of threads, got {}", threads);
  return static_cast<std::size_t>(count);
}

/// Runs the steps in every state, with one thread for each clone. Does not need Python's lock.
void run(const std::vector<Step>& steps, std::size_t count, const std::vector<std::unique_ptr<System>>& clones) {
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> isStopped = false;
  const auto work = [&](System& system) {
    std::vector<float> floats;
    try {
      while (!isStopped) {
        const std::size_t first = next.fetch_add(batch);
        if (first >= count) return;
        for (std::size_t state = first; state < std::min(first + batch, count); ++state) {
          for (const Step& step : steps) step(system, state, floats);
        }
      }
    } catch (...) {
      isStopped = true;
      throw;
    }
  };
  std::vector<std::future<void>> workers;  // whose destructors wait
  workers.reserve(clones.size());
  const std::shared_ptr<void> atEnd(nullptr, [&](void*) { isStopped = true; });
  for (const auto& clone : clones) workers.push_back(std::async(std::launch::async, work, std::ref(*clone)));
  for (auto& worker : workers) {
    while (worker.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
      if (isPythonEnding) throw std::runtime_error("evaluate was stopped, because Python ends");
      const py::gil_scoped_acquire locked;
      if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    }
    worker.get();
  }
}

}  // namespace

py::dict Evaluate::operator()(const System& robot, const py::dict& inputs, const py::object& outputs,
                              const py::object& threads) const {
  std::vector<Step> steps, last;
  std::size_t count = 0;
  py::object counted;
  for (const auto& [key, values] : inputs) {
    const auto [setter, name, hasIndex, index] = select(setters_, "input", robot, key);
    const std::string label = py::repr(key);
    const Numbers numbers(values, setter.shape(robot), true, label + ": ");
    if (counted && numbers.count() != count) {
      raise(PyExc_ValueError, "{!r} has {} states, but {} has {}", counted, count, label, numbers.count());
    }
    counted = py::reinterpret_borrow<py::object>(key);
    count = numbers.count();
    // A computation would overwrite what setPose sets.
    (name == "setPose" ? last : steps)
        .emplace_back([=, set = setter.set, index = index](System& system, std::size_t state, auto& floats) {
          try {
            numbers.read(state, floats);
            set(system, index, floats);
          } catch (const std::invalid_argument& error) {
            throw std::invalid_argument(label + ", state " + std::to_string(state) + ": " + error.what());
          }
        });
  }
  if (!counted) raise(PyExc_ValueError, "expected at least one input");

  std::vector<std::unique_ptr<System>> clones;
  clones.push_back(robot.clone());
  py::dict results;
  std::vector<Step> reads;
  unsigned needed = 0;
  if (py::isinstance<py::str>(outputs)) raise(PyExc_TypeError, "expected a list of outputs, got a name");
  for (const py::handle key : outputs) {
    const auto [getter, name, hasIndex, index] = select(getters_, "output", robot, key);
    const bool isRoot = hasIndex && index == 0;
    if (isRoot && name == "computePartialComPositionInRoot") {
      needed |= world;                                     // It is the centre of mass of the robot in the world.
    } else if (!isRoot || getter.computations != world) {  // The root's pose is an input.
      needed |= getter.computations;
    }
    const Shape shape = getter.get(*clones[0], index, nullptr);
    py::array result(getter.type, shape.sizes({static_cast<py::ssize_t>(count)}));
    const auto bytes = static_cast<std::size_t>(shape.size() * getter.type.itemsize());
    // The step keeps the array, because a key that is given twice replaces it in the dict.
    reads.emplace_back(
        [kept = result, first = static_cast<char*>(result.mutable_data()), bytes, get = getter.get, index = index](
            System& system, std::size_t state, auto&) { get(system, index, first + state * bytes); });
    results[key] = result;
  }
  addComputations(needed, steps);
  steps.insert(steps.end(), last.begin(), last.end());
  steps.insert(steps.end(), reads.begin(), reads.end());

  const std::size_t most = std::min(toThreads(threads), (count + batch - 1) / batch);
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
