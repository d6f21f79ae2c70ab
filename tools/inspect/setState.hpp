#pragma once

#include <service/RigidBodySystem.hpp>
#include <tools/inspect/Request.hpp>

namespace lumo::inspect {

/// Sets the state of the request on a new object. Throws std::runtime_error if the robot has no joint or body of a
/// given name; the message contains the most similar name.
void setState(const Request& request, RigidBodySystem& robot);

}  // namespace lumo::inspect
