#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>

// The generalized mass matrix by the composite-rigid-body algorithm.
//
// Reads sXp and S of every node and the table of inertias. Writes Iic and F of every node and the blocks of H that
// couple a node with itself and with its ancestors; entries that couple two branches are not touched.
//   discover: Iic = I
//   finish:   1. Iic of the parent += Iic   2. F = Iic S   3. H(i, i) = S'F
//             4. F moves to the root; in every ancestor a on the way, H(a, i) = S'F   5. H(i, a) = H(a, i)'
// Featherstone 2008, section 6.2 and table 6.2.

namespace kinetra {

namespace internal {

/// Iic of the parent += Iic. One function for all nodes of the same kinds.
template <typename Joint, typename Rotation>
[[gnu::noinline]] void addInertiaToParent(const NodeState<Joint, Rotation>& n, Inertia& Iic_parent) {
  store(load(Iic_parent) + load(n.sXp).applyInv(load(n.body.Iic)), Iic_parent);
}

/// One step of the walk to the root: f, one column of some node's F, moves from j's frame to that of its parent a and
/// meets a's joint. H_column is the column of H that belongs to f.
template <typename Robot, int a, int j>
struct BwdtVisitor {
  static void discover(Robot& robot, simd::Force& f, float* H_column) {
    f = load(node<j>(robot).sXp).applyInv(f);
    load(node<a>(robot).joint.S).transposeTimes(f, H_column + node_t<Robot, a>::dof_index);
  }
};

/// The walk of a force from node j to the root, where it is stored in F_column. Each step is one function, shared by
/// all walks that come past; couple and force are passed one by one because only so do they stay in registers.
template <typename Robot, int j>
[[gnu::noinline]] void moveToRoot(Robot& robot, simd::Vector3 couple, simd::Vector3 force, float* H_column,
                                  float* F_column) {
  constexpr int a = node_t<Robot, j>::parent_id;
  simd::Force f = {couple, force};
  if constexpr (a >= 0) {
    BwdtVisitor<Robot, a, j>::discover(robot, f, H_column);
  }
  if constexpr (a > 0) {
    moveToRoot<Robot, a>(robot, f.couple, f.force, H_column, F_column);
  } else {
    f.store(F_column);
  }
}

}  // namespace internal

/// The flag says whether the pass runs the joint pass itself; there is only the pass that does not.
template <typename Robot, bool runs_jcalc>
struct crba;

template <typename Robot>
struct crba<Robot, false> {
  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    template <typename AnyRobot, int a, int j>
    using BwdtVisitor = internal::BwdtVisitor<AnyRobot, a, j>;

    template <typename Derived>
    static void discover(Robot_& robot, Eigen::MatrixBase<Derived>&) {
      store(load(Robot_::inertias[i]), node<i>(robot).body.Iic);
    }

    /// What only discover needs is taken and not read.
    template <typename Derived, typename... Unused>
    static void finish(Robot_& robot, Eigen::MatrixBase<Derived>& H, const Unused&...) {
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
    /// H(i, a) = H(a, i)', and the same for the ancestors of a.
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

  /// H: at least nb_dof x nb_dof, symmetric, rows and columns in the order of the coordinates (kg, kg m, kg m^2).
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    static_assert(!Derived::IsRowMajor && Derived::InnerStrideAtCompileTime == 1, "H must be stored by columns");
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, H);
  }
};

}  // namespace kinetra
