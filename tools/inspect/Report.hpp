#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <Eigen/Core>

#include <service/RigidBodySystem.hpp>

namespace lumo::inspect {

/// Everything that is shown of a robot, taken out of the plug-in: what prints it needs no plug-in any more.
struct Report {
  struct Body {
    std::string name;
    int parent;                       ///< -1 for the root
    float mass;                       ///< kg
    Eigen::Matrix<float, 3, 4> pose;  ///< in the world: the rotation, then the position (m)
    std::array<float, 3> angles;      ///< the same rotation as roll, pitch, yaw (rad)
    std::array<float, 3> com;         ///< in the world (m)
  };
  struct Joint {
    std::string name;
    std::size_t body;                        ///< that it moves
    float position, velocity, acceleration;  ///< rad, and per s and s^2
    float torque;                            ///< N m
    Eigen::Vector3f axis;                    ///< of unit length, in the root's frame
  };

  std::vector<Body> bodies;
  std::vector<Joint> joints;
  float mass;
  std::array<float, 3> com;        ///< in the world (m)
  std::array<float, 3> comInRoot;  ///< (m)
  Eigen::MatrixXf generalizedMass;
};

/// Runs every computation on a robot whose state is set, and reads the results.
Report computeReport(RigidBodySystem& robot);

}  // namespace lumo::inspect
