#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

/// The report as tables that are at most 100 characters wide.
std::string toText(const Report& report);

/// One line for each body: its parent, its mass, its joint and the indexes.
std::string toList(const Report& report);

}  // namespace lumo::inspect
