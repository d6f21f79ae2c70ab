#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

#include <service/RigidBodySystem.hpp>

namespace lumo {

/// A loaded plug-in, and what a host needs to use one: this header and `-ldl` (nothing, from glibc 2.34).
///
///     lumo::Plugin::Object robot = lumo::Plugin("lib/lumo/norvaX3.so").create();
///     robot->computeFwdKinematics();
///
/// The file stays loaded as long as the Plugin or one of its objects lives, so they may go in any order. Two things
/// are not covered: a clone is a plain std::unique_ptr, and the names are references into the plug-in. Both must be
/// gone before the last Object and the Plugin are.
class Plugin {
 public:
  /// Gives an object back to the plug-in that made it, and keeps that plug-in loaded until then.
  struct Destroy {
    std::shared_ptr<void> library;
    void (*destroy)(RigidBodySystem*) = nullptr;

    void operator()(RigidBodySystem* object) const { destroy(object); }
  };
  using Object = std::unique_ptr<RigidBodySystem, Destroy>;

  /// Loads a plug-in; throws std::runtime_error, a line of text, when the file cannot be loaded or is no plug-in.
  explicit Plugin(const std::filesystem::path& file) : library_(load(file)) {
    create_ = reinterpret_cast<RigidBodySystem* (*)()>(find(file, "create"));
    destroy_ = reinterpret_cast<void (*)(RigidBodySystem*)>(find(file, "destroy"));
  }

  /// A new object; throws std::bad_alloc.
  Object create() const { return Object(create_(), Destroy{library_, destroy_}); }

 private:
  static std::shared_ptr<void> load(const std::filesystem::path& file) {
    // A name without a slash would be looked for in the system's library folders instead.
    const std::string path = file.has_parent_path() ? file.string() : "./" + file.string();
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(std::string("cannot load the plug-in: ") + dlerror());
    return {library, [](void* handle) { dlclose(handle); }};
  }

  void* find(const std::filesystem::path& file, const char* function) const {
    void* address = dlsym(library_.get(), function);
    if (address == nullptr) throw std::runtime_error(file.string() + " is not a plug-in: it has no function " + function);
    return address;
  }

  std::shared_ptr<void> library_;
  RigidBodySystem* (*create_)() = nullptr;
  void (*destroy_)(RigidBodySystem*) = nullptr;
};

}  // namespace lumo
