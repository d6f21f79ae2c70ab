#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

struct Drawing {
  std::string title;
  bool axes = false;  ///< whether to show the axes of the joints instead of the masses
};

/// Draws the robot in its state, from the front and from its right side, on the same scale. The ground is the world's
/// z = 0. Throws std::runtime_error if the poses are not finite.
std::string toSvg(const Report& report, const Drawing& drawing);

}  // namespace lumo::inspect
