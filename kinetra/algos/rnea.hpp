#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/minus_g.hpp>

// Inverse dynamics by the recursive Newton-Euler algorithm, Featherstone 2008, section 5.3 and table 5.1.
//
// Reads sXp, S, vj and cj of every node, as the last joint pass with velocities left them, the table of inertias and
// minus_g. Writes vi, ai and f of every node and all of torques. With p the parent of node i:
//   discover: 1. v_i = iX_p v_p + vj
//             2. a_i = iX_p a_p + S_i ddq_i + cj + v_i x vj        the world: v = 0, a = minus_g
//             3. f_i = I_i a_i + v_i x* I_i v_i - fext_i           fext_i in the body's frame already
//   finish:   4. torques_i = S_i'f_i
//             5. f_p += pX*_i f_i

namespace kinetra {

namespace internal {

// Nodes of the same types share these two functions, because the code of a pass must fit the processor's instruction
// cache. The parent of the root is null.

/// The body of node p of a robot; null for the world.
template <int p, typename Robot>
const Body* bodyOf(const Robot& robot) {
  if constexpr (p >= 0) {
    return &node<p>(robot).body;
  } else {
    return nullptr;
  }
}

/// Lines 1 to 3; lines 1 and 2 if fext is null.
template <typename Joint, typename Rotation>
[[gnu::noinline]] void towardsLeaves(NodeState<Joint, Rotation>& n, const Body* parent,
                                     const Eigen::Matrix<float, Joint::dof_number, 1>& ddq, const Inertia& inertia,
                                     const Force* fext) {
  const auto iXp = load(n.sXp);
  const auto S = load(n.joint.S);
  const simd::Motion vj = load(n.joint.vj);
  const simd::Motion cj = load(n.joint.cj);
  const simd::Motion a_p = loadJustStored(parent ? parent->ai : minus_g);
  const simd::Motion vi = parent ? iXp.apply(loadJustStored(parent->vi)) + vj : vj;
  const simd::Motion ai = iXp.apply(a_p) + S * ddq + cj + crm(vi, vj);
  store(vi, n.body.vi);
  store(ai, n.body.ai);
  if (fext == nullptr) return;
  const simd::Inertia I = load(inertia);
  store(I * ai + crf(vi, I * vi) - load(*fext), n.joint.f);
}

/// Lines 4 and 5.
template <typename Joint, typename Rotation>
[[gnu::noinline]] void towardsRoot(const NodeState<Joint, Rotation>& n, Force* f_p, float* torques) {
  const simd::Force f = loadJustStored(n.joint.f);
  load(n.joint.S).transposeTimes(f, torques);
  if (f_p != nullptr) store(loadJustStored(*f_p) + load(n.sXp).applyInv(f), *f_p);
}

}  // namespace internal

/// runs_jcalc: whether this pass runs the joint pass itself.
template <typename Robot, bool runs_jcalc>
struct rnea;

template <typename Robot>
struct rnea<Robot, false> {
  /// Lines 1 and 2 alone for node i, whose parent is p.
  template <int i, int p>
  struct update_kinematics {
    static void run(Robot& robot, const Eigen::Matrix<float, node_t<Robot, i>::dof_number, 1>& ddq_i) {
      internal::towardsLeaves(node<i>(robot), internal::bodyOf<p>(robot), ddq_i, Robot::inertias[i], nullptr);
    }
  };

  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    template <typename Vector>
    static void discover(Robot_& robot, const Vector& ddq, const Force* fext, Vector&) {
      const auto ddq_i = ddq.template segment<Node::dof_number>(Node::dof_index);
      internal::towardsLeaves(node<i>(robot), internal::bodyOf<Node::parent_id>(robot), ddq_i, Robot_::inertias[i],
                              &fext[i]);
    }

    template <typename Vector>
    static void finish(Robot_& robot, const Vector&, const Force*, Vector& torques) {
      Force* f_p = nullptr;
      if constexpr (Node::parent_id >= 0) f_p = &node<Node::parent_id>(robot).joint.f;
      internal::towardsRoot(node<i>(robot), f_p, &torques[Node::dof_index]);
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
