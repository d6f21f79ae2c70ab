#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>

// The generalized mass matrix by the composite-rigid-body algorithm, Featherstone 2008, section 6.2 and table 6.2.
//
// Reads S of every node and sXp of every node but the root, as the last joint pass left them, and the table of
// inertias. Writes Iic and F of every node and the blocks of H that couple a node with itself and with its ancestors.
// All other blocks are zero by nature: the caller sets H to zero once. With p the parent of node i:
//   discover: 1. Iic_i = I_i
//   finish:   2. F_i = Iic_i S_i
//             3. H_ii = S_i'F_i
//             4. Iic_p += pX*_i Iic_i iX_p                      in the code sXp.applyInv(Iic)
//             5. F_d = pX*_i F_d, H_pd = S_p'F_d, H_dp = H_pd'  for d = i and for each descendant d of i
// The table takes the force of one node all the way to the root before it takes the next one. Here the forces of a
// whole subtree take each step together, because a transform is then loaded once for all of them. Each force goes
// through the same operations either way. In the end every F is in the root's frame.

namespace kinetra {

namespace internal {

/// H of any size and outer stride, stored by columns: the code of the pass exists once for all of them.
using MassMatrix = Eigen::Ref<Eigen::MatrixXf>;

/// One past the last coordinate of node i and its descendants, whose coordinates follow one another.
template <typename Robot, int i>
constexpr int endOfSubtree() {
  std::size_t next = i + 1;
  while (next < Robot::parents.size() && Robot::parents[next] >= i) ++next;
  return next < Robot::parents.size() ? Robot::dof_indexes[next] : Robot::nb_dof;
}

/// Steps 4 and 5 from node n to its parent p, whose coordinates begin at `row`. F has a force for each coordinate;
/// those of n and its descendants are from `begin` up to `end`. Pairs of node and parent of the same types share this
/// function.
template <typename Joint, typename Rotation, typename ParentJoint, typename ParentRotation>
[[gnu::noinline]] void carryToParent(const NodeState<Joint, Rotation>& n, NodeState<ParentJoint, ParentRotation>& p,
                                     MassMatrix& H, simd::Force* F, int row, int begin, int end) {
  const auto X = load(n.sXp);
  const auto S_p = load(p.joint.S);
  store(load(p.body.Iic) + X.applyInv(load(n.body.Iic)), p.body.Iic);
  for (int k = begin; k < end; ++k) {
    F[k] = X.applyInv(F[k]);
    S_p.transposeTimes(F[k], &H(row, k));
    for (int c = row; c < row + ParentJoint::dof_number; ++c) H(k, c) = H(c, k);
  }
}

/// Stores the force of each coordinate in its node.
template <typename Robot, int... i>
void storeForces(const simd::Force* F, Robot& robot, std::integer_sequence<int, i...>) {
  const auto storeForcesOf = [F](auto& n) {
    for (int column = 0; column < n.dof_number; ++column) F[n.dof_index + column].store(&n.F(0, column));
  };
  (storeForcesOf(node<i>(robot)), ...);
}

/// The pass with the hooks of Visitor, those of crba or of partial_crba. args: what the hooks take after H and F.
template <template <typename, int> class Visitor, typename Robot, typename... Args>
void runCrba(Robot& robot, MassMatrix H, const Args&... args) {
  std::array<simd::Force, Robot::nb_dof> F;  // whole registers, which are faster to read again than six floats
  depth_first_traversal<Visitor, Robot>::run(robot, H, F.data(), args...);
  storeForces(F.data(), robot, std::make_integer_sequence<int, Robot::nb_bodies>{});
}

}  // namespace internal

/// runs_jcalc: whether this pass runs the joint pass itself. Only `false` is defined.
template <typename Robot, bool runs_jcalc>
struct crba;

template <typename Robot>
struct crba<Robot, false> {
  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    static void discover(Robot_& robot, internal::MassMatrix&, simd::Force*) {
      store(load(Robot_::inertias[i]), node<i>(robot).body.Iic);
    }

    /// Unused: partial_crba shares this hook, and hands it its excluded body.
    template <typename... Unused>
    static void finish(Robot_& robot, internal::MassMatrix& H, simd::Force* F, const Unused&...) {
      const simd::Inertia Iic = load(node<i>(robot).body.Iic);
      const auto S = load(node<i>(robot).joint.S);
      for (int column = 0; column < Node::dof_number; ++column) {
        const int k = Node::dof_index + column;
        F[k] = S.momentum(Iic, column);                  // a column of Iic_i S_i
        S.transposeTimes(F[k], &H(Node::dof_index, k));  // the same column of H_ii
      }
      if constexpr (Node::parent_id >= 0) {
        BwdtVisitor<Robot_, Node::parent_id, i>::discover(robot, H, F);
      }
    }

    /// Steps 4 and 5 from node j to its parent a.
    template <typename R, int a, int j>
    struct BwdtVisitor {
      static void discover(R& robot, internal::MassMatrix& H, simd::Force* F) {
        constexpr int end = internal::endOfSubtree<R, j>();
        internal::carryToParent(node<j>(robot), node<a>(robot), H, F, node_t<R, a>::dof_index, node_t<R, j>::dof_index,
                                end);
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
