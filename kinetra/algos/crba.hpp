#pragma once

#include <array>
#include <utility>

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>

// The generalized mass matrix by the composite-rigid-body algorithm, Featherstone 2008, section 6.2 and table 6.2.
//
// Reads sXp and S of every node, as the last joint pass left them, and the table of inertias. Writes Iic and F of every
// node and the blocks of H that couple a node with itself and with its ancestors. All other blocks are zero by nature;
// the caller sets them once. With p the parent of node i:
//   discover: 1. Iic_i = I_i
//   finish:   2. F_i = Iic_i S_i
//             3. H_ii = S_i'F_i
//             4. Iic_p += pX*_i Iic_i iX_p                                in the code sXp.applyInv(Iic)
//             5. F_d = pX*_i F_d, H_pd = S_p'F_d, H_dp = H_pd'            for d = i and for each descendant d of i
// The table takes one node's force all the way to the root before it takes the next one. Here the forces of a whole
// subtree take each step together. The results are the same to the bit, and each transform is loaded and transposed
// once. In the end every F is in the root's frame.

namespace kinetra {

namespace internal {

/// One past the last coordinate of node i and its descendants. Their coordinates follow one another.
template <typename Robot>
constexpr int endOfSubtree(int i) {
  for (int k = i + 1; k < Robot::nb_bodies; ++k) {
    if (Robot::parents[k] < i) return Robot::dof_indexes[k];
  }
  return Robot::nb_dof;
}

/// Steps 4 and 5 from node n to its parent p, whose coordinates begin at row. F has a force for each coordinate; those
/// of n and its descendants are the coordinates from begin up to end. All nodes of the same types share this function.
template <typename Joint, typename Rotation, typename ParentJoint, typename ParentRotation, typename Derived>
[[gnu::noinline]] void moveToParent(const NodeState<Joint, Rotation>& n, NodeState<ParentJoint, ParentRotation>& p,
                                    Eigen::MatrixBase<Derived>& H, simd::Force* F, int row, int begin, int end) {
  const auto X = load(n.sXp);
  const auto S = load(p.joint.S);
  store(load(p.body.Iic) + X.applyInv(load(n.body.Iic)), p.body.Iic);
  for (int d = begin; d < end; ++d) {
    F[d] = X.applyInv(F[d]);
    S.transposeTimes(F[d], &H(row, d));
    for (int r = row; r < row + ParentJoint::dof_number; ++r) H(d, r) = H(r, d);
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
    static void discover(Robot_& robot, Eigen::MatrixBase<Derived>&, simd::Force*) {
      store(load(Robot_::inertias[i]), node<i>(robot).body.Iic);
    }

    /// partial_crba also hands its excluded body to both hooks; finish has no use for it.
    template <typename Derived, typename... Unused>
    static void finish(Robot_& robot, Eigen::MatrixBase<Derived>& H, simd::Force* F, const Unused&...) {
      const simd::Inertia Iic = load(node<i>(robot).body.Iic);
      const auto S = load(node<i>(robot).joint.S);
      for (int k = 0; k < Node::dof_number; ++k) {
        const int d = Node::dof_index + k;
        F[d] = S.momentum(Iic, k);
        S.transposeTimes(F[d], &H(Node::dof_index, d));
      }
      if constexpr (Node::parent_id >= 0) {
        BwdtVisitor<Robot_, Node::parent_id, i>::discover(robot, H, F);
      }
    }

    /// The step from node j to its parent a.
    template <typename R, int a, int j>
    struct BwdtVisitor {
      template <typename Derived>
      static void discover(R& robot, Eigen::MatrixBase<Derived>& H, simd::Force* F) {
        internal::moveToParent(node<j>(robot), node<a>(robot), H, F, node_t<R, a>::dof_index, node_t<R, j>::dof_index,
                               internal::endOfSubtree<R>(j));
      }
    };
  };

  /// H: at least nb_dof x nb_dof, symmetric, rows and columns in the order of the coordinates, of which the root's are
  /// linear, then angular (kg, kg m, kg m^2).
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    run<DftVisitor>(robot, H);
  }

 protected:
  /// args: what the hooks take after H and F.
  template <template <typename, int> class Visitor, typename Derived, typename... Args>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H, const Args&... args) {
    static_assert(!Derived::IsRowMajor && Derived::InnerStrideAtCompileTime == 1, "H must be stored by columns");
    Eigen::Ref<Eigen::MatrixXf> anyH(H.derived());  // so that the code exists once for matrices of all types
    std::array<simd::Force, Robot::nb_dof> F;       // whole registers, which are faster to read again than six floats
    internal::depth_first_traversal<Visitor, Robot>::run(robot, anyH, F.data(), args...);
    storeForces(F.data(), robot, std::make_integer_sequence<int, Robot::nb_bodies>{});
  }

 private:
  template <int... i>
  static void storeForces(const simd::Force* F, Robot& robot, std::integer_sequence<int, i...>) {
    const auto storeNext = [&F](auto& F_i) {
      for (int k = 0; k < F_i.cols(); ++k) (F++)->store(&F_i(0, k));
    };
    (storeNext(node<i>(robot).F), ...);
  }
};

}  // namespace kinetra
