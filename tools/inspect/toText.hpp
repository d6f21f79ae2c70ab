#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

/// Tables to read, at most 100 columns wide.
std::string toText(const Report& report);

/// One line per body: its parent, its mass, and its joint with its indexes.
std::string toList(const Report& report);

}  // namespace lumo::inspect
