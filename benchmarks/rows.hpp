#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <tools/State.hpp>

// The rows of a benchmark program: each is timed, or its instructions are counted, over the same states.

namespace lumo {

inline constexpr std::size_t nb_states = 64;
const std::vector<State>& states();

namespace internal {

/// What a row runs where instructions are counted.
void addCountedRow(std::string name, std::function<void()> run);
/// Runs the loop inside lumo_countedLoop, the function by which callgrind knows what to count.
void countInstructions(const std::function<void()>& loop);

}  // namespace internal

/// Adds a row. `make` prepares the work afresh and returns it: a function that takes the number of a state.
template <typename Make>
void addRow(const std::string& name, Make make) {
  benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State& timer) {
    auto work = make();
    std::size_t i = 0;
    for (auto _ : timer) work(i++ % nb_states);
  });
  internal::addCountedRow(name, [make] {
    auto work = make();
    const auto loop = [&work] {
      for (std::size_t i = 0; i < nb_states; ++i) work(i);
    };
    loop();  // what happens once, such as finding library functions, is not counted
    internal::countInstructions(loop);
  });
}

/// Times the rows as Google Benchmark's options say. With the one option --count instead, runs each row once for every
/// state, for callgrind, and prints its name. Returns the program's exit code.
int runRows(int argc, char** argv);

}  // namespace lumo
