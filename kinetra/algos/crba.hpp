#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>

// The generalized mass matrix by the composite-rigid-body algorithm, Featherstone 2008, section 6.2 and table 6.2.
//
// Reads sXp and S of every node, as the last joint pass left them, and the table of inertias. Writes Iic and F of every
// node and the blocks of H that couple a node with itself and with its ancestors. All other blocks are zero by nature;
// the caller sets them once. With p the parent of node i:
//   discover: Iic_i = I_i
//   finish:   1. Iic_p += pX*_i Iic_i iX_p        in the code sXp.applyInv(Iic)
//             2. F = Iic_i S_i
//             3. H_ii = S_i'F
//             4. from each node j on the way to its parent a, until the root: F = aX*_j F, H_ai = S_a'F
//             5. H_ia = H_ai' for every a
// F is left in the root's frame.

namespace kinetra {

namespace internal {

/// Iic_p += pX*_i Iic_i iX_p
template <typename Joint, typename Rotation>
[[gnu::noinline]] void addInertiaToParent(const NodeState<Joint, Rotation>& n, Inertia& Iic_parent) {
  store(load(Iic_parent) + load(n.sXp).applyInv(load(n.body.Iic)), Iic_parent);
}

/// One step of the walk to the root, from j to its parent a: F = aX*_j F and H_ai = S_a'F, for one column f of F. It
/// does not depend on i, the node where the walk began: H_column is the column of H that belongs to f.
template <typename Robot, int a, int j>
struct BwdtVisitor {
  static void discover(Robot& robot, simd::Force& f, float* H_column) {
    f = load(node<j>(robot).sXp).applyInv(f);
    load(node<a>(robot).joint.S).transposeTimes(f, H_column + node_t<Robot, a>::dof_index);
  }
};

/// The walk from node j to the root with one column of F, which is stored in F_column at the end. The walks of all
/// nodes below j share this function. Couple and force are two arguments because a compiler passes each in a register,
/// but a pair of them in memory.
template <typename Robot, int j>
[[gnu::noinline]] void moveToRoot(Robot& robot, simd::Vector3 couple, simd::Vector3 force, float* H_column,
                                  float* F_column) {
  constexpr int a = node_t<Robot, j>::parent_id;
  simd::Force f = {couple, force};
  if constexpr (a >= 0) {
    BwdtVisitor<Robot, a, j>::discover(robot, f, H_column);
  }
  constexpr bool in_root_frame = a <= 0;
  if constexpr (in_root_frame) {
    f.store(F_column);
  } else {
    moveToRoot<Robot, a>(robot, f.couple, f.force, H_column, F_column);
  }
}

}  // namespace internal

/// runs_jcalc: whether the pass runs the joint pass itself. Only the pass that does not is needed and defined.
template <typename Robot, bool runs_jcalc>
struct crba;

template <typename Robot>
struct crba<Robot, false> {
  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    template <typename Derived>
    static void discover(Robot_& robot, Eigen::MatrixBase<Derived>&) {
      store(load(Robot_::inertias[i]), node<i>(robot).body.Iic);
    }

    /// partial_crba also hands its excluded body to both hooks; finish has no use for it.
    template <typename Derived, typename... Unused>
    static void finish(Robot_& robot, Eigen::MatrixBase<Derived>& H, const Unused&...) {
      static_assert(!Derived::IsRowMajor && Derived::InnerStrideAtCompileTime == 1, "H must be stored by columns");
      auto& n = node<i>(robot);
      if constexpr (Node::parent_id >= 0) {
        internal::addInertiaToParent(n, node<Node::parent_id>(robot).body.Iic);
      }
      const simd::Inertia Iic = load(n.body.Iic);
      const auto S = load(n.joint.S);
      for (int k = 0; k < Node::dof_number; ++k) {
        const simd::Force f = S.momentum(Iic, k);  // column k of F
        float* H_column = &H.derived()(0, Node::dof_index + k);
        S.transposeTimes(f, H_column + Node::dof_index);
        internal::moveToRoot<Robot_, i>(robot, f.couple, f.force, H_column, &n.F(0, k));
      }
      mirror<Node::parent_id>(H);
    }

   private:
    /// H_ia = H_ai' for a and all its ancestors.
    template <int a, typename Derived>
    static void mirror(Eigen::MatrixBase<Derived>& H) {
      if constexpr (a >= 0) {
        using Ancestor = node_t<Robot_, a>;
        constexpr int n_i = Node::dof_number, n_a = Ancestor::dof_number;
        H.template block<n_i, n_a>(Node::dof_index, Ancestor::dof_index) =
            H.template block<n_a, n_i>(Ancestor::dof_index, Node::dof_index).transpose();
        mirror<Ancestor::parent_id>(H);
      }
    }
  };

  /// H: at least nb_dof x nb_dof, symmetric, rows and columns in the order of the coordinates, of which the root's are
  /// linear, then angular (kg, kg m, kg m^2).
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, H);
  }
};

}  // namespace kinetra
