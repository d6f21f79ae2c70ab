#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include <CLI/CLI.hpp>

// What our programs share: their plug-in, their options, their output and their errors.

namespace lumo {

/// The option --plugin, which sets `file`: by default to the plug-in of the same build or installation.
void addPluginOption(CLI::App& app, std::filesystem::path& file);

/// Reads the options; false when the program was only asked for help or its version, which is printed.
bool parse(CLI::App& app, int argc, char** argv);

/// Writes to standard output, and sees to it that it got there; throws std::runtime_error.
void write(const std::string& text);

/// Writes a file, all of it or, when that fails, nothing: an earlier file of that name then stays as it was. Throws
/// std::runtime_error. What is no regular file, such as a pipe, is written to directly.
void writeFile(const std::filesystem::path& path, const std::string& text);

/// Runs a program; what goes wrong is one line on standard error and a non-zero exit code.
int runProgram(const char* name, const std::function<void()>& run);

}  // namespace lumo
