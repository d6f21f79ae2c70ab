#pragma once

#include <service/RigidBodySystem.hpp>
#include <tools/inspect/Request.hpp>

namespace lumo::inspect {

/// Sets what the request asks for on a new object. Throws std::runtime_error for a joint or body that the robot does
/// not have, and names the nearest that it has.
void setState(const Request& request, RigidBodySystem& robot);

}  // namespace lumo::inspect
