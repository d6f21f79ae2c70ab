// lumo-digest: sets many random states of a plug-in's robot, computes all results and prints one hash for each kind of
// result. Two plug-ins that compute the same bits print the same lines. It also finds the first value in which two
// plug-ins differ.

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <host/Plugin.hpp>
#include <tools/digest.hpp>
#include <tools/program.hpp>

namespace {

/// Throws an exception that names the first state and the first value of which the bits differ.
void compare(lumo::RigidBodySystem& a, lumo::RigidBodySystem& b, std::uint64_t states, float scale) {
  lumo::forEachState(states, scale, [&](std::uint64_t state, const auto& compute) {
    std::vector<float> others;
    compute(b,
            [&](const auto&, const float* values, std::size_t n) { others.insert(others.end(), values, values + n); });
    auto other = others.begin();
    compute(a, [&](const std::string& name, const float* values, std::size_t n) {
      for (std::size_t k = 0; k < n; ++k) {
        const float x = values[k], y = *other++;
        if (lumo::bitsOf(x) == lumo::bitsOf(y)) continue;
        throw std::runtime_error(fmt::format(
            "state {}, {}, value {}: {:.9g} ({:a}), in the other plug-in {:.9g} ({:a})", state, name, k, x, x, y, y));
      }
    });
  });
}

void run(int argc, char** argv) {
  CLI::App app{
      "Prints a hash of each kind of result over many states, so that the bits of two plug-ins can be compared.",
      "lumo-digest"};
  std::filesystem::path file, other;
  std::uint64_t states = 2000;
  float scale = 1.0F;
  lumo::addPluginOption(app, file);
  app.add_option("--against", other, "Another plug-in: print no hashes, but the first value that differs from its own");
  app.add_option("--states", states, "Number of states")->capture_default_str();
  app.add_option("--scale", scale, "Factor for all inputs; the value 1 means angles up to 3 rad")
      ->capture_default_str();
  if (!lumo::parse(app, argc, argv)) return;

  const auto robot = lumo::Plugin(file).create();
  if (other.empty()) return lumo::write(lumo::digest(*robot, states, scale));
  compare(*robot, *lumo::Plugin(other).create(), states, scale);
  lumo::write(fmt::format("All bits are the same in {} states.\n", states));
}

}  // namespace

int main(int argc, char** argv) {
  return lumo::runProgram("lumo-digest", [&] { run(argc, argv); });
}
