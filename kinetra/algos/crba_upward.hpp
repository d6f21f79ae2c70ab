#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/backward_traversal.hpp>

// The upward half of the composite-rigid-body algorithm, which every mass matrix shares.
//
// Reads sXp, S and the composite inertias that discover began. Writes Iic and F of every node and the blocks of H that
// couple a node with itself and with its ancestors; entries that couple two branches are not touched.
//   finish: 1. hand Iic to the parent   2. F = Iic S   3. H(i, i) = S'F   4. carry F to the root, filling H on the way
// Featherstone 2008, section 6.2 and table 6.2.

namespace kinetra::internal {

// The steps, each one function for all nodes of the same kinds.

template <typename Joint, typename Rotation>
void add_inertia_to_parent(const NodeState<Joint, Rotation>& n, Spatial::Inertia& Iic_parent) {
  Iic_parent = Iic_parent + n.sXp.applyInv(n.body.Iic);
}

/// Carries a force, a column of F, to an ancestor's frame; gives S'f, S the ancestor's motion subspace.
template <typename Rotation, typename ConstraintMotion>
void carry(float* column, const Spatial::TransformT<Rotation>& X, const ConstraintMotion& S, float* projected) {
  const Spatial::Force::Lanes f = X.applyInv(Spatial::Force::Lanes::load(column));
  f.store(column);
  S.transposeTimes(f, projected);
}

template <typename Robot, int i>
struct crba_upward {
  using Node = node_t<Robot, i>;

  /// One step of the walk to the root, from j to its parent a: F(i) moves from j's frame to a's and meets a's joint.
  template <typename, int a, int j>
  struct BwdtVisitor {
    template <typename Derived>
    static void discover(Robot& robot, Eigen::MatrixBase<Derived>& H) {
      using Ancestor = node_t<Robot, a>;
      for (int k = 0; k < Node::dof_number; ++k) {
        carry(&node<i>(robot).F(0, k), node<j>(robot).sXp, node<a>(robot).joint.S,
              &H.derived()(Ancestor::dof_index, Node::dof_index + k));
      }
      block<Node, Ancestor>(H) = block<Ancestor, Node>(H).transpose();
    }
  };

  template <typename Derived>
  static void finish(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    static_assert(!Derived::IsRowMajor && Derived::InnerStrideAtCompileTime == 1, "H must be stored by columns");
    auto& n = node<i>(robot);
    if constexpr (Node::parent_id >= 0) {
      add_inertia_to_parent(n, node<Node::parent_id>(robot).body.Iic);
    }
    n.F = n.body.Iic * n.joint.S;
    for (int k = 0; k < Node::dof_number; ++k) {
      n.joint.S.transposeTimes(Spatial::Force::Lanes::load(&n.F(0, k)),
                               &H.derived()(Node::dof_index, Node::dof_index + k));
    }
    backward_traversal<BwdtVisitor, Robot, i>::run(robot, H);
  }

 private:
  /// The block of H at the rows of one node and the columns of another.
  template <typename Rows, typename Columns, typename Derived>
  static auto block(Eigen::MatrixBase<Derived>& H) {
    return H.template block<Rows::dof_number, Columns::dof_number>(Rows::dof_index, Columns::dof_index);
  }
};

}  // namespace kinetra::internal
