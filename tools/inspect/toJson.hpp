#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

/// The report for programs: every number with the fewest digits that give its float back, one that is not finite as
/// null.
std::string toJson(const Report& report);

}  // namespace lumo::inspect
