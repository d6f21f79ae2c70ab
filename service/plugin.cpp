#include <models/norvaX3/norvaX3.hpp>
#include <service/KinetraRigidBodySystem.hpp>

// The two functions that a host looks up by name in the plug-in; nothing else is exported.

extern "C" {

/// A new object; the caller hands it back to destroy. Never null; throws std::bad_alloc.
__attribute__((visibility("default"))) lumo::RigidBodySystem* create() {
  return new lumo::KinetraRigidBodySystem<kinetra::norvaX3>;
}

/// Takes back an object that create made; null is ignored.
__attribute__((visibility("default"))) void destroy(lumo::RigidBodySystem* system) { delete system; }
}
