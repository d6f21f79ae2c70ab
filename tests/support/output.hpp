#pragma once

#include <cstdio>
#include <string>
#include <utility>

namespace lumo::test {

/// Runs a command. Returns its standard output and whether it succeeds.
inline std::pair<std::string, bool> output(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
  return {text, pclose(pipe) == 0};
}

}  // namespace lumo::test
