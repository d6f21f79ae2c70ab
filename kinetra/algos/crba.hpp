#pragma once

#include <cstddef>

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>

// The generalized mass matrix by the composite-rigid-body algorithm, Featherstone 2008, section 6.2 and table 6.2.
//
// Reads S of every node and sXp of every node but the root, as the last joint pass left them, and the table of
// inertias. Writes Iic and F of every node and the blocks of H that couple a node with itself and with its ancestors.
// All other blocks are zero by nature: the caller sets H to zero once.
//   discover of node i: 1. Iic_i = I_i
//   finish of node i:   2. F_i = Iic_i S_i
//                       3. H_ii = S_i'F_i
//   from j = i to a, the parent of j, unless j is the root:
//                       4. Iic_a += aX*_j Iic_j jX_a
//                       5. F_d = aX*_j F_d, H_ad = S_a'F_d, H_da = H_ad'  for each coordinate d of j's subtree
// The table takes the force of one node all the way to the root before it takes the next one. Here the forces of a
// whole subtree take each step together, because a transform is then loaded once for all of them. Each force goes
// through the same operations either way. In the end every F is in the root's frame.

namespace kinetra {

namespace internal {

/// What the hooks write. `blocks` is the caller's H, of any size and outer stride and stored by columns; the code of
/// the pass exists once for all of them. F has the force of each coordinate in whole registers, which are faster to
/// read again than the floats of a node.
template <int nb_dof>
struct MassMatrix {
  explicit MassMatrix(const Eigen::Ref<Eigen::MatrixXf>& blocks_) : blocks(blocks_) {}

  Eigen::Ref<Eigen::MatrixXf> blocks;
  simd::Force F[nb_dof];
};

/// One past the last coordinate of the subtree of node j, whose coordinates follow one another.
template <typename Robot, int j>
constexpr int endOfSubtree() {
  std::size_t next = j + 1;
  while (next < Robot::parents.size() && Robot::parents[next] >= j) ++next;
  return next < Robot::parents.size() ? Robot::dof_indexes[next] : Robot::nb_dof;
}

/// Steps 4 and 5 from node j to its parent a, whose coordinates begin at `row`. The coordinates d of j's subtree are
/// those from `begin` up to `end`. Pairs of nodes of the same types share this function.
template <typename Joint, typename Rotation, typename ParentJoint, typename ParentRotation, int nb_dof>
[[gnu::noinline]] void carryToParent(const NodeState<Joint, Rotation>& j, NodeState<ParentJoint, ParentRotation>& a,
                                     MassMatrix<nb_dof>& H, int row, int begin, int end) {
  const auto jXa = load(j.sXp);
  const auto S_a = load(a.joint.S);
  store(load(a.body.Iic) + jXa.applyInv(load(j.body.Iic)), a.body.Iic);
  for (int d = begin; d < end; ++d) {
    H.F[d] = jXa.applyInv(H.F[d]);
    S_a.transposeTimes(H.F[d], &H.blocks(row, d));
    for (int c = row; c < row + ParentJoint::dof_number; ++c) H.blocks(d, c) = H.blocks(c, d);
  }
}

/// The pass with the hooks of Visitor, those of crba or of partial_crba. args: what the hooks take after H.
template <template <typename, int> class Visitor, typename Robot, typename... Args>
void runCrba(Robot& robot, const Eigen::Ref<Eigen::MatrixXf>& blocks, const Args&... args) {
  MassMatrix<Robot::nb_dof> H(blocks);
  depth_first_traversal<Visitor, Robot>::run(robot, H, args...);
  forEachNode(robot, [&H](auto& n) {
    for (int column = 0; column < n.dof_number; ++column) H.F[n.dof_index + column].store(&n.F(0, column));
  });
}

}  // namespace internal

/// runs_jcalc is always false: see "The contract" in CONTRIBUTING.md.
template <typename Robot, bool runs_jcalc>
struct crba;

template <typename Robot>
struct crba<Robot, false> {
  using MassMatrix = internal::MassMatrix<Robot::nb_dof>;  ///< the H of the hooks

  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    static void discover(Robot_& robot, MassMatrix&) { store(load(Robot_::inertias[i]), node<i>(robot).body.Iic); }

    static void finish(Robot_& robot, MassMatrix& H) {
      const simd::Inertia Iic = load(node<i>(robot).body.Iic);
      const auto S = load(node<i>(robot).joint.S);
      for (int column = 0; column < Node::dof_number; ++column) {
        const int d = Node::dof_index + column;
        H.F[d] = S.momentum(Iic, column);                         // a column of Iic_i S_i
        S.transposeTimes(H.F[d], &H.blocks(Node::dof_index, d));  // the same column of H_ii
      }
      if constexpr (Node::parent_id >= 0) {
        BwdtVisitor<Robot_, Node::parent_id, i>::discover(robot, H);
      }
    }

    /// Steps 4 and 5 from node j to its parent a.
    template <typename R, int a, int j>
    struct BwdtVisitor {
      static void discover(R& robot, MassMatrix& H) {
        internal::carryToParent(node<j>(robot), node<a>(robot), H, node_t<R, a>::dof_index, node_t<R, j>::dof_index,
                                internal::endOfSubtree<R, j>());
      }
    };
  };

  /// H: at least nb_dof x nb_dof floats, stored by columns; the pass writes both triangles. Its rows and columns are in
  /// the order of the coordinates; the root's are linear, then angular (kg, kg m, kg m^2).
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    internal::runCrba<DftVisitor>(robot, H.derived());
  }
};

}  // namespace kinetra
