#pragma once

#include <vector>

#include <kinetra/node_list.hpp>
#include <service/conversions.hpp>

// World poses of all bodies.
//
// Reads sXp of node 0 (world to root) and iX1 (root to body). Writes the first nb_bodies entries of poses, the pose of
// each body in the world. The joint angles are those of the last fwd_kin_iX1.

namespace lumo {

template <typename Robot>
struct fwd_kin_H01_from_iX1 {
  static void run(Robot& robot, const SpatialTransform* iX1, std::vector<OX::Math::Transform>& poses) {
    const auto X10 = loadJustStored(kinetra::node<0>(robot).sXp);  // from the world to the root
    OX::Math::Transform* pose = poses.data();
    invToOXMath(X10, pose[0]);
    for (int i = 1; i < Robot::nb_bodies; ++i) {
      invToOXMath(load(iX1[i]) * X10, pose[i]);
    }
  }
};

}  // namespace lumo
