#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include <CLI/CLI.hpp>

// What the programs share: the choice of the plug-in, the options, the output and the errors.

namespace lumo {

/// Adds the option --plugin, which sets `file`. The default is the plug-in of the same build or installation.
void addPluginOption(CLI::App& app, std::filesystem::path& file);

/// Reads the options. Returns false if the program was only asked for help or its version, after printing it.
bool parse(CLI::App& app, int argc, char** argv);

/// Writes to standard output and flushes it. Throws std::runtime_error if that fails.
void write(const std::string& text);

/// Writes a file, either completely or not at all: if writing fails, an earlier file of that name stays as it was, and
/// std::runtime_error is thrown. A symbolic link stays, and its target is written. If the file exists and is not a
/// regular file, such as a pipe, it is written directly.
void writeFile(const std::filesystem::path& path, const std::string& text);

/// Runs a program and returns its exit code. An exception is printed to standard error as one line; the code is then 1.
int runProgram(const char* name, const std::function<void()>& run);

}  // namespace lumo
