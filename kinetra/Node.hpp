#pragma once

#include <utility>

#include <kinetra/spatial/Transform.hpp>

namespace kinetra {

/// Working state of a node's body; all vectors in the body's frame.
struct Body {
  Spatial::TransformT<Spatial::RotationMatrix> iX0;  ///< a slot for world to body; no pass uses it
  Spatial::Motion vi;                                ///< velocity (inverse dynamics)
  Spatial::Motion ai;                                ///< acceleration, gravity included (inverse dynamics)
  Spatial::Inertia Iic;                              ///< composite inertia of the subtree (mass matrix)
};

/// What a node holds. It depends only on the kinds of the joint and of sXp's rotation, so nodes of the same kinds share
/// the steps of a pass.
template <typename Joint, typename Rotation>
struct NodeState {
  Spatial::TransformT<Rotation> sXp;             ///< parent's frame (the world for the root) to this body's
  Eigen::Matrix<float, 6, Joint::dof_number> F;  ///< Iic S, a force per coordinate, carried to the root (mass matrix)
  Joint joint;
  Body body;
};

/// The kind of rotation of a product, as it is stored.
template <typename Rotation1, typename Rotation0>
using product_rotation = typename decltype(std::declval<Rotation1>() * std::declval<Rotation0>())::AtRest;

/// One node of the tree: a body and the joint that hangs it from its parent. What is structure is constant.
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
  using Placement = Spatial::TransformT<XtRotation>;
};

}  // namespace kinetra
