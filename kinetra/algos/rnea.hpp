#pragma once

#include <utility>

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/minus_g.hpp>

// Inverse dynamics by the recursive Newton-Euler algorithm, Featherstone 2008, section 5.3 and table 5.1.
//
// Reads sXp, S, vj and cj of every node, as the last joint pass with velocities left them, the table of inertias and
// minus_g. Writes vi, ai and f of every node and all of torques. With p the parent of node i:
//   discover: 1. v_i = iX_p v_p + vj                          in the code sXp.apply(vi)
//             2. a_i = iX_p a_p + S_i ddq_i + cj + v_i x vj        the world: v = 0, a = minus_g
//             3. f_i = I_i a_i + v_i x* I_i v_i - fext_i           fext_i in the body's frame already
//   finish:   4. torques_i = S_i'f_i
//             5. f_p += pX*_i f_i                                  in the code sXp.applyInv(f)

namespace kinetra {

namespace internal {

// Nodes of the same types share these functions, because the code of a pass must fit the processor's instruction cache.

/// Steps 1 and 2: v_i and a_i. parent is null for the root, whose parent is the world.
template <typename Joint, typename Rotation>
[[gnu::noinline]] std::pair<simd::Motion, simd::Motion> moveWithParent(
    NodeState<Joint, Rotation>& n, const Body* parent, const Eigen::Matrix<float, Joint::dof_number, 1>& ddq) {
  const auto X = load(n.sXp);
  const auto S = load(n.joint.S);
  const simd::Motion vj = load(n.joint.vj);
  const simd::Motion cj = load(n.joint.cj);
  const simd::Motion a_parent = loadJustStored(parent ? parent->ai : minus_g);
  const simd::Motion vi = parent ? X.apply(loadJustStored(parent->vi)) + vj : vj;
  const simd::Motion ai = X.apply(a_parent) + S * ddq + cj + crm(vi, vj);
  store(vi, n.body.vi);
  store(ai, n.body.ai);
  return {vi, ai};
}

/// Step 3: f_i
[[gnu::noinline]] inline void setForce(const simd::Motion& vi, const simd::Motion& ai, const Inertia& inertia,
                                       const Force& fext, Force& f) {
  const simd::Inertia I = load(inertia);
  store(I * ai + crf(vi, I * vi) - load(fext), f);
}

/// Step 5: f_p += pX*_i f_i
template <typename Joint, typename Rotation>
[[gnu::noinline]] void addForceToParent(const NodeState<Joint, Rotation>& n, Force& f_parent) {
  store(loadJustStored(f_parent) + load(n.sXp).applyInv(loadJustStored(n.joint.f)), f_parent);
}

}  // namespace internal

/// runs_jcalc: whether this pass runs the joint pass itself. Only `false` is defined.
template <typename Robot, bool runs_jcalc>
struct rnea;

template <typename Robot>
struct rnea<Robot, false> {
  /// v_i and a_i of node i, whose parent is p; stored in the node and returned.
  template <int i, int p>
  struct update_kinematics {
    using Node = node_t<Robot, i>;

    static auto run(Robot& robot, const Eigen::Matrix<float, Node::dof_number, 1>& ddq_i) {
      const Body* parent = nullptr;
      if constexpr (p >= 0) {
        parent = &node<p>(robot).body;
      }
      return internal::moveWithParent(node<i>(robot), parent, ddq_i);
    }
  };

  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    template <typename Vector>
    static void discover(Robot_& robot, const Vector& ddq, const Force* fext, Vector&) {
      const auto ddq_i = ddq.template segment<Node::dof_number>(Node::dof_index);
      const auto [vi, ai] = update_kinematics<i, Node::parent_id>::run(robot, ddq_i);
      internal::setForce(vi, ai, Robot_::inertias[i], fext[i], node<i>(robot).joint.f);
    }

    template <typename Vector>
    static void finish(Robot_& robot, const Vector&, const Force*, Vector& torques) {
      auto& n = node<i>(robot);
      load(n.joint.S).transposeTimes(loadJustStored(n.joint.f), &torques[Node::dof_index]);
      if constexpr (Node::parent_id >= 0) {
        internal::addForceToParent(n, node<Node::parent_id>(robot).joint.f);
      }
    }
  };

  /// ddq: nb_dof generalized accelerations. fext: nb_bodies external forces, each in the frame of its body.
  /// torques: nb_dof generalized forces (N, N m). The root's six, of ddq and of torques, are linear, then angular, in
  /// its frame.
  static void run(Robot& robot, const Eigen::Matrix<float, Robot::nb_dof, 1>& ddq, const Force* fext,
                  Eigen::Matrix<float, Robot::nb_dof, 1>& torques) {
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, ddq, fext, torques);
  }
};

}  // namespace kinetra
