#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <kinetra/spatial/Inertia.hpp>

namespace oracle {

/// A body of the robot in double precision and in the terms of plain geometry.
struct BodyData {
  std::string name;
  int parent;               ///< -1 for the root
  Eigen::Matrix3d R;        ///< orientation of the joint's frame in the parent's
  Eigen::Vector3d r;        ///< its origin there (m); the joint turns about its z axis
  double mass;              ///< kg
  Eigen::Vector3d com;      ///< centre of mass in the body's frame (m); zero for a body without mass
  Eigen::Matrix3d inertia;  ///< about the centre of mass, in the body's axes (kg m^2)
};

/// All bodies in the order of their ids, a parent before its children, from the model's tables as they are now.
std::vector<BodyData> readBodies();

/// The whole matrix of a rotational inertia, about the frame's origin (kg m^2).
Eigen::Matrix3d rotationalInertia(const kinetra::Spatial::Inertia& inertia);

}  // namespace oracle
