#pragma once

#include <string>
#include <vector>

#include <models/norvaX3/norvaX3.hpp>

namespace lumo {

/// A body of the robot as other libraries want it, in double precision, read from the model's own tables.
struct BodyData {
  std::string name;
  int parent;               ///< -1 for the root
  Eigen::Matrix3d R;        ///< orientation of the joint's frame in the parent's
  Eigen::Vector3d r;        ///< its origin there (m); the joint turns about its z axis
  double mass;              ///< kg
  Eigen::Vector3d com;      ///< centre of mass in the body's frame (m)
  Eigen::Matrix3d inertia;  ///< about the centre of mass, in the body's axes (kg m^2)
};

template <int i>
BodyData readBody() {
  using Robot = kinetra::norvaX3;
  const auto& Xt = kinetra::node_t<Robot, i>::Xt;
  const auto& body = Robot::inertias[i];
  const double m = static_cast<double>(body.m);
  const Eigen::Vector3d com = body.h.template cast<double>() / m;
  const auto I = body.I.template cast<double>().eval();
  Eigen::Matrix3d aboutOrigin;
  aboutOrigin << I[0], I[1], I[3], I[1], I[2], I[4], I[3], I[4], I[5];
  const Eigen::Matrix3d shift = m * (com.squaredNorm() * Eigen::Matrix3d::Identity() - com * com.transpose());
  return {Robot::body_names[i],
          Robot::parents[i],
          Xt.E.matrix().transpose().template cast<double>(),
          Xt.r.template cast<double>(),
          m,
          com,
          aboutOrigin - shift};
}

template <int... i>
std::vector<BodyData> readBodies(std::integer_sequence<int, i...>) {
  return {readBody<i>()...};
}

/// All bodies in the order of their ids, a parent before its children.
inline std::vector<BodyData> readBodies() {
  return readBodies(std::make_integer_sequence<int, kinetra::norvaX3::nb_bodies>());
}

}  // namespace lumo
