#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

struct Drawing {
  std::string title;
  bool axes = false;  ///< show what each joint turns about, instead of the masses
};

/// The robot as it stands, from where it faces and from its right side, on one scale and one ground, the world's
/// z = 0. Nothing is drawn of a state that is not finite; throws std::runtime_error.
std::string toSvg(const Report& report, const Drawing& drawing);

}  // namespace lumo::inspect
