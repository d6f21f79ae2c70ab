#include <tools/program.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <system_error>

#include <unistd.h>

#include <fmt/format.h>

namespace lumo {

void addPluginOption(CLI::App& app, std::filesystem::path& file) {
  const auto bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const auto installed = (bin / LUMO_LIB_FROM_BIN / "lumo/norvaX3.so").lexically_normal();
  std::error_code ignored;
  file = std::filesystem::exists(installed, ignored) ? installed : bin.parent_path() / "lib/lumo/norvaX3.so";
  app.add_option("--plugin", file, "The plug-in file; by default the one built or installed with this program")
      ->type_name("FILE");
}

bool parse(CLI::App& app, int argc, char** argv) {
  app.set_version_flag("--version", app.get_name() + " " + LUMO_VERSION, "Print the version and exit");
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

void write(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  if (!written) throw std::runtime_error(fmt::format("cannot write to standard output: {}", std::strerror(errno)));
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::error_code ignored;
  bool replace = !std::filesystem::exists(path, ignored) || std::filesystem::is_regular_file(path, ignored);
  // Symbolic links stay, and the file behind them is written. weakly_canonical does not follow a link to a file that
  // does not exist yet.
  auto target = path;
  for (int links = 0; links < 40 && replace && std::filesystem::is_symlink(target, ignored); ++links) {
    target = target.parent_path() / std::filesystem::read_symlink(target);
  }
  replace = replace && !std::filesystem::is_symlink(target, ignored);
  const std::string file = replace ? fmt::format("{}.{}.part", target.string(), getpid()) : path.string();
  const auto check = [&](bool good) {
    if (good) return;
    const std::string reason = std::strerror(errno);
    if (replace) std::remove(file.c_str());
    throw std::runtime_error(fmt::format("cannot write {}: {}", path.string(), reason));
  };
  std::FILE* stream = std::fopen(file.c_str(), "w");
  check(stream != nullptr);
  const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  check((std::fclose(stream) == 0) && written);
  if (replace) check(std::rename(file.c_str(), target.c_str()) == 0);
}

int runProgram(const char* name, const std::function<void()>& run) {
  try {
    run();
    return 0;
  } catch (const std::exception& error) {
    std::string line = error.what();  // can contain control characters, because it can quote the user's input
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' '; }, ' ');
    fmt::print(stderr, "{}: {}\n", name, line);
    return 1;
  }
}

}  // namespace lumo
