#pragma once

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include <dlfcn.h>
#include <link.h>

#include <service/RigidBodySystem.hpp>

namespace lumo {

/// A plug-in, loaded with the C library's dlopen.
///
///     lumo::Plugin::Object robot = lumo::Plugin("lib/lumo/norvaX3.so").create();
///     robot->computeFwdKinematics();
///
/// The file stays loaded as long as the Plugin or one of its Objects exists, so they may be destroyed in any order. A
/// clone does not keep the file loaded, because it is a std::unique_ptr with the standard deleter: it must be destroyed
/// while the Plugin or one of its Objects exists. The names of bodies and joints are references to strings inside the
/// plug-in and are valid as long as the file is loaded.
class Plugin {
 public:
  /// Deletes an object with the function `destroy` of its plug-in, and keeps the plug-in loaded until then.
  struct Destroy {
    std::shared_ptr<void> library;
    void (*destroy)(RigidBodySystem*) = nullptr;

    void operator()(RigidBodySystem* object) const { destroy(object); }
  };
  using Object = std::unique_ptr<RigidBodySystem, Destroy>;

  /// Loads a plug-in. Throws std::runtime_error, with a message of one line, if the file cannot be loaded, ends too
  /// early or is not a plug-in. The content of the file is not checked: loading runs code from it.
  explicit Plugin(const std::filesystem::path& file) : library_(load(file)) {
    create_ = reinterpret_cast<RigidBodySystem* (*)()>(find(file, "create"));
    destroy_ = reinterpret_cast<void (*)(RigidBodySystem*)>(find(file, "destroy"));
  }

  /// Returns a new object. Throws std::bad_alloc, and std::runtime_error if the plug-in returns no object.
  Object create() const {
    Object object(create_(), Destroy{library_, destroy_});
    if (object == nullptr) throw std::runtime_error("the plug-in has returned no object");
    return object;
  }

 private:
  static std::shared_ptr<void> load(const std::filesystem::path& file) {
    // dlopen would look for a name without a slash in the library folders of the system.
    const std::string path = file.has_parent_path() ? file.string() : "./" + file.string();
    // dlopen would end the process if the file were cut off. A linker writes the table of sections last.
    ElfW(Ehdr) header = {};
    std::ifstream(file).read(reinterpret_cast<char*>(&header), sizeof header);
    const bool isLibrary = std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
    std::error_code error;
    if (isLibrary && std::filesystem::file_size(file, error) < header.e_shoff + header.e_shnum * header.e_shentsize) {
      throw std::runtime_error("cannot load the plug-in: " + path + " is not complete");
    }
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(std::string("cannot load the plug-in: ") + dlerror());
    return {library, [](void* handle) { dlclose(handle); }};
  }

  void* find(const std::filesystem::path& file, const char* function) const {
    void* address = dlsym(library_.get(), function);
    if (address == nullptr)
      throw std::runtime_error(file.string() + " is not a plug-in: it has no function " + function);
    return address;
  }

  std::shared_ptr<void> library_;
  RigidBodySystem* (*create_)() = nullptr;
  void (*destroy_)(RigidBodySystem*) = nullptr;
};

}  // namespace lumo
