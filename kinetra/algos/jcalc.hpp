#pragma once

#include <type_traits>

#include <kinetra/Node.hpp>
#include <kinetra/algos/Positions.hpp>
#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/node_list.hpp>

// The joint passes. Each node is computed separately, so the results do not depend on the order of the nodes.
//
// Reads q (and dq) of the node, q as a plain vector or as Positions, and its placement Xt. Writes joint.Xj and sXp;
// JcalcVisitor also joint.vj.
//   discover: 1. the joint's own step   2. sXp = Xj Xt
// Featherstone 2008, section 4.4.

namespace kinetra::internal {

/// The entries of a joint-space vector that belong to a node: a number for one coordinate, a column for more.
template <typename Node, typename Vector>
auto coordinates(const Vector& v) {
  if constexpr (Node::dof_number == 1) {
    return v[Node::dof_index];
  } else {
    return v.template segment<Node::dof_number>(Node::dof_index).eval();
  }
}

/// What the joint of a node computes its Xj from.
template <typename Node, typename Vector>
auto position(const Vector& q) {
  return Node::joint_type::position(coordinates<Node>(q));
}
template <typename Node, typename Robot>
auto position(const Positions<Robot>& q) {
  return q.template of<Node>();
}

/// Xj Xt
template <typename XtRotation>
[[gnu::always_inline]] inline auto place(const simd::TransformT<simd::RotationMatrix>& Xj,
                                         const TransformT<XtRotation>& Xt) {
  return Xj * load(Xt);
}
/// A revolute joint does not translate, so that r is Xt's: to the bit, because no placement has a -0.
template <typename XtRotation>
[[gnu::always_inline]] inline auto place(const simd::TransformT<simd::RotationMatrixAboutZ>& Xj,
                                         const TransformT<XtRotation>& Xt) {
  const auto E = Xj.E * load(Xt.E);
  return simd::TransformT<std::decay_t<decltype(E)>>{E, Xt.r};
}

/// Positions and velocities: run(robot, q, dq), dq nb_dof x 1 (m, rad; m/s, rad/s).
template <typename Robot, int i>
struct JcalcVisitor {
  template <typename Position, typename Vector>
  static void discover(Robot& robot, const Position& q, const Vector& dq) {
    using Node = node_t<Robot, i>;
    auto& n = node<i>(robot);
    const auto Xj = n.joint.jcalc(position<Node>(q), coordinates<Node>(dq));
    store(place(Xj, Node::Xt), n.sXp);
  }
  template <typename Position, typename Vector>
  static void finish(Robot&, const Position&, const Vector&) {}
};

/// Positions alone: run(robot, q). The same Xj and sXp to the bit; joint.vj is left as it was.
template <typename Robot, int i>
struct JcalcPosVisitor {
  template <typename Vector>
  static void discover(Robot& robot, const Vector& q) {
    using Node = node_t<Robot, i>;
    auto& n = node<i>(robot);
    const auto Xj = n.joint.jcalc_pos(position<Node>(q));
    store(place(Xj, Node::Xt), n.sXp);
  }
  template <typename Vector>
  static void finish(Robot&, const Vector&) {}
};

}  // namespace kinetra::internal
