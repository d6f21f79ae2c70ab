#pragma once

#include <utility>

#include <kinetra/spatial/Transform.hpp>

namespace kinetra {

namespace simd = Spatial::simd;
using Spatial::Force;
using Spatial::Inertia;
using Spatial::load;
using Spatial::Motion;
using Spatial::RotationMatrix;
using Spatial::RotationMatrixAboutZ;
using Spatial::RotationMatrixIdentity;
using Spatial::store;
using Spatial::TransformT;

// The frames that the letters of a transform name: s is the node's own body, p its parent's (the world for the root), i
// is body i; 0 is the world and 1 the root. So sXp takes the parent's coordinates to the body's, iX1 the root's to body
// i's. Lower-case v, a, f, I of a body are in the body's own frame.

/// Working state of a node's body.
struct Body {
  TransformT<RotationMatrix> iX0;  ///< keeps the record's layout; no pass reads or writes it
  Motion vi;                       ///< velocity (inverse dynamics)
  Motion ai;                       ///< acceleration, gravity included (inverse dynamics)
  Inertia Iic;                     ///< composite inertia of the subtree (mass matrix)
};

/// What a node holds. It depends only on the kinds of the joint and of sXp's rotation, so nodes of the same kinds can
/// share the steps of a pass.
template <typename Joint, typename Rotation>
struct NodeState {
  TransformT<Rotation> sXp;
  Eigen::Matrix<float, 6, Joint::dof_number> F;  ///< Iic S, a force per coordinate, carried to the root (mass matrix)
  Joint joint;
  Body body;
};

/// One node of the tree: a body and the joint that hangs it from its parent. What is structure is constant.
template <int Id, int ParentId, int DofIndex, typename Joint, typename XtRotation, int... Children>
struct Node : NodeState<Joint, decltype(std::declval<typename Joint::Rotation>() * std::declval<XtRotation>())> {
  static constexpr int id = Id;
  static constexpr int parent_id = ParentId;  ///< -1 for the root
  static constexpr int dof_index = DofIndex;  ///< of its first coordinate
  static constexpr int dof_number = Joint::dof_number;
  using joint_type = Joint;
  using Xt_rotation = XtRotation;
  using sXp_rotation = decltype(std::declval<typename Joint::Rotation>() * std::declval<XtRotation>());
  using children = std::integer_sequence<int, Children...>;  ///< in increasing order
  using Placement = TransformT<XtRotation>;
};

}  // namespace kinetra
