#pragma once

#include <utility>
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
    const auto root = kinetra::node<0>(robot).sXp.fresh();
    invToOXMath(root, poses[0]);
    fill(std::make_integer_sequence<int, Robot::nb_bodies - 1>{}, iX1, root, poses.data());
  }

 private:
  template <int... i>
  static void fill(std::integer_sequence<int, i...>, const SpatialTransform* iX1,
                   const kinetra::Spatial::TransformT<kinetra::Spatial::Matrix3>& root, OX::Math::Transform* poses) {
    (invProdToOXMath(iX1[i + 1], root, poses[i + 1]), ...);
  }
};

}  // namespace lumo
