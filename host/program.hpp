#pragma once

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

// What the host programs share: their plug-in, their options, their output and their errors.

namespace lumo {

/// The plug-in of the same build or installation as this program.
inline std::filesystem::path ownPlugin() {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  return program.parent_path().parent_path() / "lib/lumo/norvaX3.so";
}

/// Writes to standard output, and sees to it that it got there; throws std::runtime_error.
inline void write(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  if (!written) throw std::runtime_error(fmt::format("cannot write to standard output: {}", std::strerror(errno)));
}

/// Reads the options; false when the program was only asked for help or its version, which is printed.
inline bool parse(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::CallForHelp&) {
    write(app.help());
  } catch (const CLI::CallForVersion& version) {
    write(std::string(version.what()) + "\n");
  }
  return false;
}

/// Runs a program; what goes wrong is one line on standard error and a non-zero exit code.
template <typename Run>
int runProgram(const char* name, Run run) {
  try {
    run();
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}: {}\n", name, error.what());
    return 1;
  }
}

}  // namespace lumo
