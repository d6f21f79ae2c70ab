#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <kinetra/spatial/Inertia.hpp>

namespace reference {

/// The data of a body in double precision, in terms of geometry instead of spatial algebra. The joint turns about the z
/// axis of its frame.
struct BodyData {
  std::string name;
  int parent;               ///< -1 for the root
  Eigen::Matrix3d R;        ///< orientation of the joint's frame in the parent's frame
  Eigen::Vector3d r;        ///< origin of the joint's frame in the parent's frame (m)
  double mass;              ///< kg
  Eigen::Vector3d com;      ///< centre of mass in the body's frame (m); zero for a body without mass
  Eigen::Matrix3d inertia;  ///< about the centre of mass, in the body's axes (kg m^2)
};

/// Reads all bodies from the tables of the model, in the order of their ids, so that a parent comes before its
/// children.
std::vector<BodyData> readBodies();

/// Returns the rotation that is nearest to a matrix that is almost a rotation.
Eigen::Matrix3d nearestRotation(const Eigen::Matrix3d& R);

/// Returns the rotational inertia about the frame's origin as a full matrix (kg m^2).
Eigen::Matrix3d rotationalInertia(const kinetra::Spatial::Inertia& inertia);

}  // namespace reference
