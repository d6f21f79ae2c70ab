#pragma once

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include <sys/wait.h>

namespace lumo::test {

/// Runs a command. Returns its standard output and whether it succeeds. Throws if the command crashes.
inline std::pair<std::string, bool> output(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
  const int status = pclose(pipe);
  const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status) - 128;  // the shell adds 128
  if (signal > 0) throw std::runtime_error("\"" + command + "\" crashed: " + strsignal(signal));
  return {text, status == 0};
}

}  // namespace lumo::test
