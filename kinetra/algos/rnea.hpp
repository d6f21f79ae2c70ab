#pragma once

#include <utility>

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/minus_g.hpp>

// Inverse dynamics by the recursive Newton-Euler algorithm.
//
// Reads sXp, S, vj and cj (a joint pass with velocities), the table of inertias and minus_g. Writes vi, ai and f of
// every node and all of torques.
//   discover: 1. vi and ai from the parent's   2. f = I ai + vi x* (I vi) - fext
//   finish:   1. torques = S'f   2. f of the parent += f
// Featherstone 2008, section 5.3 and table 5.1.

namespace kinetra {

namespace internal {

/// Velocity and acceleration of a body from those of its parent. The root has no parent body: it moves as its joint
/// does, in a world that accelerates against gravity. One function for all nodes of the same kinds.
template <typename Joint, typename Rotation>
[[gnu::noinline]] std::pair<simd::Motion, simd::Motion> updateKinematics(
    NodeState<Joint, Rotation>& n, const Body* parent, const Eigen::Matrix<float, Joint::dof_number, 1>& ddq) {
  const auto X = load(n.sXp);
  const auto S = load(n.joint.S);
  const simd::Motion vj = load(n.joint.vj);
  const simd::Motion cj = load(n.joint.cj);
  const simd::Motion a_parent = load(parent ? parent->ai : minus_g);
  const simd::Motion vi = parent ? X.apply(load(parent->vi)) + vj : vj;
  const simd::Motion ai = X.apply(a_parent) + S * ddq + cj + crm(vi, vj);
  store(vi, n.body.vi);
  store(ai, n.body.ai);
  return {vi, ai};
}

/// f of the parent += f. One function for all nodes of the same kinds.
template <typename Joint, typename Rotation>
[[gnu::noinline]] void addForceToParent(const NodeState<Joint, Rotation>& n, Force& f_parent) {
  store(load(f_parent) + load(n.sXp).applyInv(load(n.joint.f)), f_parent);
}

}  // namespace internal

/// The flag says whether the pass runs the joint pass itself; there is only the pass that does not.
template <typename Robot, bool runs_jcalc>
struct rnea;

template <typename Robot>
struct rnea<Robot, false> {
  /// Velocity and acceleration of node i, also returned, from those of its parent p.
  template <int i, int p>
  struct update_kinematics {
    using Node = node_t<Robot, i>;

    static auto run(Robot& robot, const Eigen::Matrix<float, Node::dof_number, 1>& ddq_i) {
      const Body* parent = nullptr;
      if constexpr (p >= 0) {
        parent = &node<p>(robot).body;
      }
      return internal::updateKinematics(node<i>(robot), parent, ddq_i);
    }
  };

  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    template <typename Vector>
    static void discover(Robot_& robot, const Vector& ddq, const Force* fext, Vector&) {
      const auto ddq_i = ddq.template segment<Node::dof_number>(Node::dof_index);
      const auto [vi, ai] = update_kinematics<i, Node::parent_id>::run(robot, ddq_i);
      const simd::Inertia I = load(Robot_::inertias[i]);
      store(I * ai + crf(vi, I * vi) - load(fext[i]), node<i>(robot).joint.f);
    }

    template <typename Vector>
    static void finish(Robot_& robot, const Vector&, const Force*, Vector& torques) {
      auto& n = node<i>(robot);
      load(n.joint.S).transposeTimes(load(n.joint.f), &torques[Node::dof_index]);
      if constexpr (Node::parent_id >= 0) {
        internal::addForceToParent(n, node<Node::parent_id>(robot).joint.f);
      }
    }
  };

  /// ddq: nb_dof generalized accelerations. fext: nb_bodies external forces, each on its body in its own frame.
  /// torques: nb_dof generalized forces (N, N m); those of the root act on it from the world, linear then angular, in
  /// its frame.
  static void run(Robot& robot, const Eigen::Matrix<float, Robot::nb_dof, 1>& ddq, const Force* fext,
                  Eigen::Matrix<float, Robot::nb_dof, 1>& torques) {
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, ddq, fext, torques);
  }
};

}  // namespace kinetra
