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

// One function for all nodes of the same kinds.
template <typename Joint, typename Rotation>
void add_inertia_to_parent(const NodeState<Joint, Rotation>& n, Spatial::Inertia& Iic_parent) {
  Iic_parent = Iic_parent + n.sXp.applyInv(n.body.Iic);
}

/// Where the results of one coordinate go: its row and column of H, and its column of F.
struct Destination {
  template <typename Derived>
  Destination(Eigen::MatrixBase<Derived>& H, int dof, float* F_)
      : row(&H.derived()(dof, 0), H.cols(), Eigen::InnerStride<>(H.derived().outerStride())),
        column(&H.derived()(0, dof), H.rows()),
        F(F_) {
    static_assert(!Derived::IsRowMajor && Derived::InnerStrideAtCompileTime == 1, "H must be stored by columns");
  }

  Eigen::Map<Eigen::VectorXf, Eigen::Unaligned, Eigen::InnerStride<>> row;
  Eigen::Map<Eigen::VectorXf> column;
  float* F;
};

/// One step of the walk to the root, from j to its parent a: a force, one column of F, moves from j's frame to a's and
/// meets a's joint. Where the walk began makes no difference. Couple and force come one by one because compilers pass
/// each in a register, but a pair of them in memory.
template <typename Robot, int a, int j>
struct BwdtVisitor {
  [[gnu::always_inline]] static void discover(Robot& robot, Spatial::Vec3& couple, Spatial::Vec3& force,
                                              Destination* to) {
    using Ancestor = node_t<Robot, a>;
    constexpr int dof = Ancestor::dof_index;
    constexpr int n = Ancestor::dof_number;
    const Spatial::Force::Lanes f = node<j>(robot).sXp.applyInv(Spatial::Force::Lanes(couple, force));
    node<a>(robot).joint.S.transposeTimes(f, &to->column[dof]);
    to->row.template segment<n>(dof) = to->column.template segment<n>(dof);
    if constexpr (Ancestor::parent_id < 0) {
      f.store(to->F);
    }
    couple = f.couple();
    force = f.force();
  }
};

template <typename Robot, int i>
struct crba_upward {
  using Node = node_t<Robot, i>;

  template <typename Derived>
  static void finish(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    auto& n = node<i>(robot);
    const Spatial::Inertia::Lanes Iic = n.body.Iic;
    if constexpr (Node::parent_id >= 0) {
      add_inertia_to_parent(n, node<Node::parent_id>(robot).body.Iic);
    }
    for (int k = 0; k < Node::dof_number; ++k) {
      const Spatial::Force::Lanes f = n.joint.S.momentum(Iic, k);  // column k of F
      Destination to(H, Node::dof_index + k, &n.F(0, k));
      n.joint.S.transposeTimes(f, &to.column[Node::dof_index]);
      if constexpr (Node::parent_id >= 0) {
        backward_traversal<BwdtVisitor, Robot, i>::run(robot, f.couple(), f.force(), &to);
      } else {
        f.store(to.F);
      }
    }
  }
};

}  // namespace kinetra::internal
