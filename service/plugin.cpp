#include <models/norvaX3/norvaX3.hpp>
#include <service/KinetraRigidBodySystem.hpp>

// The two functions that a host looks up by name in the plug-in; nothing else is exported.

extern "C" {

/// Returns a new object, which `destroy` must delete. Throws std::bad_alloc.
__attribute__((visibility("default"))) lumo::RigidBodySystem* create() {
  return new lumo::KinetraRigidBodySystem<kinetra::norvaX3>;
}

/// Deletes an object that `create` returned. Does nothing for null.
__attribute__((visibility("default"))) void destroy(lumo::RigidBodySystem* system) { delete system; }
}
