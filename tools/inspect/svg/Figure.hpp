#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <tools/inspect/Report.hpp>
#include <tools/limbs.hpp>

namespace lumo::inspect {

/// One body as it is drawn. Its origin lies on the axis of its joint.
struct Part {
  std::string name;
  bool corner;         ///< whether its origin is a corner of the torso
  const char* colour;  ///< that of its limb
  Eigen::Vector3d origin, com;
  double radius;         ///< the radius of a ball of water that has its mass (m)
  Eigen::Vector3d axis;  ///< the axis of its joint
  std::string about;     ///< the name of the root's axis that is nearest to it
};

struct Figure {
  std::vector<Part> parts;
  std::vector<Link> links;
  Eigen::Vector3d com;
  Eigen::Matrix3d root;  ///< the root's axes as columns
};

/// Throws std::runtime_error if a position is not finite.
Figure toFigure(const Report& report);

}  // namespace lumo::inspect
