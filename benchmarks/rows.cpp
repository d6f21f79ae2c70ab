#include <benchmarks/rows.hpp>

#include <cstdio>
#include <string_view>

/// This function must not be inlined and must not end with a jump, so that callgrind sees where it begins and ends.
extern "C" [[gnu::noinline]] void lumo_countedLoop(const std::function<void()>& loop) {
  loop();
  benchmark::ClobberMemory();
}

namespace lumo {

namespace {

using CountedRow = std::pair<std::string, std::function<void()>>;

std::vector<CountedRow>& countedRows() {
  static std::vector<CountedRow> rows;
  return rows;
}

}  // namespace

namespace internal {

void addCountedRow(std::string name, std::function<void()> run) {
  countedRows().emplace_back(std::move(name), std::move(run));
}

void countInstructions(const std::function<void()>& loop) { lumo_countedLoop(loop); }

}  // namespace internal

const std::vector<RandomState>& states() {
  static const std::vector<RandomState> all = [] {
    std::vector<RandomState> result;
    for (std::size_t i = 0; i < nb_states; ++i) result.emplace_back(i);
    return result;
  }();
  return all;
}

int runRows(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--count") {
    for (const auto& [name, run] : countedRows()) {
      run();
      std::puts(name.c_str());
    }
    return 0;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace lumo
