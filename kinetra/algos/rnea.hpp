#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/minus_g.hpp>

// Inverse dynamics by the recursive Newton-Euler algorithm, Featherstone 2008, section 5.3 and table 5.1.
//
// Reads sXp, S, vj and cj of every node, as the last joint pass with velocities left them, the table of inertias and
// minus_g. Writes vi, ai and f of every node and all of torques. With p the parent of node i:
//   discover: 1. vi = iXp vp + vj
//             2. ai = iXp ap + S ddq_i + cj + vi x vj        the world: vp = 0, ap = minus_g
//             3. f = I ai + vi x* I vi - fext                fext in the body's frame already
//   finish:   4. torques_i = S'f
//             5. fp += pX*_i f

namespace kinetra {

namespace internal {

/// The body of node p of a robot; null for the world.
template <int p, typename Robot>
const Body* bodyOf(const Robot& robot) {
  if constexpr (p >= 0) {
    return &node<p>(robot).body;
  } else {
    return nullptr;
  }
}

// Nodes of the same types share these two functions, because the code of a pass must fit the processor's instruction
// cache.

/// Lines 1 to 3; without fext, lines 1 and 2 alone.
template <typename Joint, typename Rotation>
[[gnu::noinline]] void towardsLeaves(NodeState<Joint, Rotation>& n, const Body* parent,
                                     const Eigen::Matrix<float, Joint::dof_number, 1>& ddq, const Inertia& inertia,
                                     const Force* fext) {
  const auto iXp = load(n.sXp);
  const auto S = load(n.joint.S);
  const simd::Motion vj = load(n.joint.vj);
  const simd::Motion cj = load(n.joint.cj);
  const simd::Motion ap = loadJustStored(parent ? parent->ai : minus_g);
  const simd::Motion vi = parent ? iXp.apply(loadJustStored(parent->vi)) + vj : vj;
  const simd::Motion ai = iXp.apply(ap) + S * ddq + cj + crm(vi, vj);
  store(vi, n.body.vi);
  store(ai, n.body.ai);
  if (fext == nullptr) return;
  const simd::Inertia I = load(inertia);
  store(I * ai + crf(vi, I * vi) - load(*fext), n.joint.f);
}

/// Lines 4 and 5.
template <typename Joint, typename Rotation>
[[gnu::noinline]] void towardsRoot(const NodeState<Joint, Rotation>& n, Force* fp, float* torques) {
  const simd::Force f = loadJustStored(n.joint.f);
  load(n.joint.S).transposeTimes(f, torques);
  if (fp != nullptr) store(loadJustStored(*fp) + load(n.sXp).applyInv(f), *fp);
}

}  // namespace internal

/// runs_jcalc is always false: see "The contract" in CONTRIBUTING.md.
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
      Force* fp = nullptr;
      if constexpr (Node::parent_id >= 0) fp = &node<Node::parent_id>(robot).joint.f;
      internal::towardsRoot(node<i>(robot), fp, &torques[Node::dof_index]);
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
