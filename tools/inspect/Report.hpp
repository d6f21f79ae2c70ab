#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <Eigen/Core>

#include <service/RigidBodySystem.hpp>

namespace lumo::inspect {

/// All data of a robot that are shown, copied from the plug-in, so that printing needs no plug-in.
struct Report {
  struct Body {
    std::string name;
    int parent;                       ///< -1 for the root
    float mass;                       ///< kg
    Eigen::Matrix<float, 3, 4> pose;  ///< in the world: the rotation, then the position (m)
    std::array<float, 3> angles;      ///< the rotation as roll, pitch, yaw (rad)
    std::array<float, 3> com;         ///< in the world (m)
  };
  struct Joint {
    std::string name;
    std::size_t body;                        ///< the body that the joint connects to its parent
    float position, velocity, acceleration;  ///< rad, rad/s, rad/s^2
    float torque;                            ///< N m
    Eigen::Vector3f axis;                    ///< unit vector in the root's frame
  };

  std::vector<Body> bodies;
  std::vector<Joint> joints;
  float mass;
  std::array<float, 3> com;        ///< in the world (m)
  std::array<float, 3> comInRoot;  ///< in the root's frame (m)
  Eigen::MatrixXf generalizedMass;
};

/// Computes everything for the state that is set, and reads the results.
Report computeReport(RigidBodySystem& robot);

}  // namespace lumo::inspect
