#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <tools/inspect/Report.hpp>

namespace lumo::inspect {

/// One body as it is drawn: its origin is its joint.
struct Part {
  std::string name;
  std::size_t parent;  ///< itself for the root
  const char* colour;  ///< of its limb: the root's child that carries it
  bool last;           ///< has no children
  Eigen::Vector3d origin, com;
  double radius;         ///< of a ball of water of its mass (m)
  Eigen::Vector3d axis;  ///< of its joint
  std::string about;     ///< the same in words: the root's axis that is nearest
};

struct Figure {
  std::vector<Part> parts;
  Eigen::Vector3d com;
  Eigen::Matrix3d root;  ///< its axes as columns
};

/// Throws std::runtime_error when a place is not finite.
Figure toFigure(const Report& report);

}  // namespace lumo::inspect
