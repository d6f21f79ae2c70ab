#pragma once

#include <utility>

#include <kinetra/spatial/Transform.hpp>

namespace kinetra {

namespace simd = Spatial::simd;
using Spatial::Force;
using Spatial::Inertia;
using Spatial::load;
using Spatial::loadJustStored;
using Spatial::Motion;
using Spatial::RotationMatrix;
using Spatial::RotationMatrixAboutZ;
using Spatial::RotationMatrixIdentity;
using Spatial::SinCos;
using Spatial::store;
using Spatial::TransformT;

// The letters in the name of a transform: s is the frame of the node's own body, p that of its parent (the world for
// the root), i that of body i, 0 the world and 1 the root. So sXp takes the parent's coordinates to the body's, and iX1
// the root's to body i's. The motions, forces and inertias of a body are in its own frame.

/// Working state of a node's body.
struct Body {
  TransformT<RotationMatrix> iX0;  ///< see "The contract" in CONTRIBUTING.md
  Motion vi;                       ///< velocity (inverse dynamics)
  Motion ai;                       ///< acceleration, gravity included (inverse dynamics)
  Inertia Iic;                     ///< composite inertia of the subtree (mass matrix)
};

/// What a node holds. It depends only on the types of the joint and of sXp's rotation, so all nodes with
/// the same two types share one function for a step of a pass that takes a NodeState.
template <typename Joint, typename Rotation>
struct NodeState {
  TransformT<Rotation> sXp;
  Eigen::Matrix<float, 6, Joint::dof_number> F;  ///< Iic S, a force per coordinate, carried to the root (mass matrix)
  Joint joint;
  Body body;
};

/// The kind of rotation of a product.
template <typename Rotation1, typename Rotation0>
using product_rotation = decltype(std::declval<Rotation1>() * std::declval<Rotation0>());

/// One node of the tree: a body and the joint that connects it to its parent. Its place in the tree is constant.
template <int Id, int ParentId, int DofIndex, typename Joint, typename XtRotation, int... Children>
struct Node : NodeState<Joint, product_rotation<typename Joint::Rotation, XtRotation>> {
  static constexpr int id = Id;
  static constexpr int parent_id = ParentId;  ///< -1 for the root
  static constexpr int dof_index = DofIndex;  ///< of its first coordinate
  static constexpr int dof_number = Joint::dof_number;
  using joint_type = Joint;
  using Xt_rotation = XtRotation;
  using sXp_rotation = product_rotation<typename Joint::Rotation, XtRotation>;
  using children = std::integer_sequence<int, Children...>;  ///< in increasing order
  using Placement = TransformT<XtRotation>;
};

}  // namespace kinetra
