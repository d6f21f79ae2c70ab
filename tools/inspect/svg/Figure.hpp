#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

/// One body as it is drawn. Its origin lies on the axis of its joint.
struct Part {
  std::string name;
  std::size_t parent;  ///< the body itself for the root
  const char* colour;  ///< that of its limb; each child of the root begins a limb
  bool last;           ///< whether it has no children
  Eigen::Vector3d origin, com;
  double radius;         ///< the radius of a ball of water that has its mass (m)
  Eigen::Vector3d axis;  ///< the axis of its joint
  std::string about;     ///< the name of the root's axis that is nearest to it
};

struct Figure {
  std::vector<Part> parts;
  Eigen::Vector3d com;
  Eigen::Matrix3d root;  ///< the root's axes as columns
};

/// Throws std::runtime_error if a position is not finite.
Figure toFigure(const Report& report);

}  // namespace lumo::inspect
