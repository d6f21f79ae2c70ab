#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <tools/RandomState.hpp>

// The rows of a benchmark program. Each row does its work in the same states, and is timed or has its instructions
// counted.

namespace lumo {

inline constexpr std::size_t nb_states = 64;
const std::vector<RandomState>& states();

namespace internal {

/// Adds the function that a row runs if instructions are counted.
void addCountedRow(std::string name, std::function<void()> run);
/// Runs the loop inside the function lumo_countedLoop. callgrind counts the instructions of that function.
void countInstructions(const std::function<void()>& loop);

}  // namespace internal

/// Adds a row. Each call of `make` prepares the work and returns it as a function of the number of a state.
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
    loop();  // so that what happens only once, such as binding library functions, is not counted
    internal::countInstructions(loop);
  });
}

/// Times the rows with the options of Google Benchmark. If --count is the only option, runs each row once in every
/// state, for callgrind, and prints its name. Returns the exit code of the program.
int runRows(int argc, char** argv);

}  // namespace lumo
