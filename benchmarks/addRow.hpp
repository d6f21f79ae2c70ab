#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <tools/RandomState.hpp>

namespace lumo {

/// The states in which every row of the benchmark programs works.
inline const std::vector<RandomState>& states() {
  static const std::vector<RandomState> all = [] {
    std::vector<RandomState> result;
    for (std::size_t i = 0; i < 64; ++i) result.emplace_back(i);
    return result;
  }();
  return all;
}

/// Adds a row. Each call of `make` prepares the work and returns it as a function of the number of a state.
template <typename Make>
void addRow(const std::string& name, Make make) {
  benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State& timer) {
    auto work = make();
    std::size_t i = 0;
    for (auto _ : timer) work(i++ % states().size());
  });
}

/// Times the rows with the options of Google Benchmark. Returns the exit code of the program.
inline int runRows(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace lumo
