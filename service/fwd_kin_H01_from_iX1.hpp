#pragma once

#include <vector>

#include <kinetra/node_list.hpp>
#include <service/conversions.hpp>

// World poses of all bodies.
//
// Reads sXp of node 0 (world to root) and iX1 (root to body). Writes poses[0..15], the pose of each body in the world,
// and no further entry. Without a joint pass and fwd_kin_iX1 in between, old joint angles meet the new root.

namespace lumo {

template <typename Robot>
struct fwd_kin_H01_from_iX1 {
  static void run(Robot& robot, const SpatialTransform* iX1, std::vector<OX::Math::Transform>& poses) {
    const kinetra::Spatial::TransformT<kinetra::Spatial::Matrix3> root = kinetra::node<0>(robot).sXp.fresh();
    OX::Math::Transform* H01 = poses.data();
    invToOXMath(root, H01[0]);
    for (int i = 1; i < Robot::nb_bodies; ++i) {
      invProdToOXMath(iX1[i], root, H01[i]);
    }
  }
};

}  // namespace lumo
