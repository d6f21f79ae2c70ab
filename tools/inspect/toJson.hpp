#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

/// The report as JSON. Every number has the fewest digits that identify its float; a number that is not finite is null.
std::string toJson(const Report& report);

}  // namespace lumo::inspect
