#pragma once

#include <string>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

struct Drawing {
  std::string title;
  Eigen::Vector3d root;  ///< the root's position in the world (m)
  bool axes = false;     ///< whether to show the axes of the joints instead of the masses
};

/// Draws a robot whose root is at the world's origin, as if it were at the position of the drawing; this way the
/// picture is as precise far away. The masses are shown from the front and from the right side, on the same scale, over
/// the ground, which is the world's z = 0; the axes obliquely. Throws std::runtime_error if the poses are not finite.
std::string toSvg(const Report& robot, const Drawing& drawing);

}  // namespace lumo::inspect
