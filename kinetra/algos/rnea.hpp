#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/minus_g.hpp>
#include <kinetra/spatial/Transform.hpp>

// Inverse dynamics by the recursive Newton-Euler algorithm.
//
// Reads sXp, S, vj and cj (a joint pass with velocities), the table of inertias and minus_g. Writes body.vi, body.ai
// and joint.f of every node and all of torques.
//   discover: 1. velocity and acceleration of the body from its parent's   2. f = I a + v x* (I v) - fext
//   finish:   1. torques = S'f   2. hand f to the parent
// Featherstone 2008, section 5.3 and table 5.1.

namespace kinetra {

namespace internal {

// The steps, each one function for all nodes of the same kinds.

/// Velocity and acceleration of a body, at work.
struct BodyMotion {
  Spatial::Motion::Lanes v;
  Spatial::Motion::Lanes a;
};

/// Sets a body's velocity to v and its acceleration to what follows with its parent's.
template <typename Joint, typename Rotation>
BodyMotion set_motion(NodeState<Joint, Rotation>& n, Spatial::Motion::Lanes v, const Spatial::Motion& a_parent,
                      const Eigen::Matrix<float, Joint::dof_number, 1>& ddq) {
  const Spatial::Motion::Lanes a = n.sXp.apply(a_parent) + n.joint.S * ddq + n.joint.cj + crm(v, n.joint.vj);
  n.body.vi = v;
  n.body.ai = a;
  return {v, a};
}

/// The root moves as its joint does; its parent, the world, accelerates against gravity.
template <typename Joint, typename Rotation>
BodyMotion update_root(NodeState<Joint, Rotation>& n, const Eigen::Matrix<float, Joint::dof_number, 1>& ddq) {
  return set_motion(n, n.joint.vj, minus_g, ddq);
}

template <typename Joint, typename Rotation>
BodyMotion update(NodeState<Joint, Rotation>& n, const Body& parent,
                  const Eigen::Matrix<float, Joint::dof_number, 1>& ddq) {
  return set_motion(n, n.sXp.apply(parent.vi) + n.joint.vj, parent.ai, ddq);
}

/// The force that a body needs to move as it does.
inline void require(Spatial::Force& f, const Spatial::Inertia& inertia, const BodyMotion& body,
                    const Spatial::Force& fext) {
  const Spatial::Inertia::Lanes I = inertia;
  f = I * body.a + crf(body.v, I * body.v) - fext;
}

template <typename Joint, typename Rotation>
void add_force_to_parent(const NodeState<Joint, Rotation>& n, Spatial::Force& f_parent) {
  f_parent = f_parent + n.sXp.applyInv(n.joint.f);
}

}  // namespace internal

/// The flag says whether the pass runs the joint pass itself; there is only the pass that does not.
template <typename Robot, bool runs_jcalc>
struct rnea;

template <typename Robot>
struct rnea<Robot, false> {
  /// Velocity and acceleration of node i, in its frame, from those of its parent p; gravity enters at the root.
  template <int i, int p>
  struct update_kinematics {
    using Node = node_t<Robot, i>;

    static internal::BodyMotion run(Robot& robot, const Eigen::Matrix<float, Node::dof_number, 1>& ddq_i) {
      if constexpr (p < 0) {
        return internal::update_root(node<i>(robot), ddq_i);
      } else {
        return internal::update(node<i>(robot), node<p>(robot).body, ddq_i);
      }
    }
  };

  template <typename Robot_, int i>
  struct DftVisitor {
    using Node = node_t<Robot_, i>;

    template <typename Vector>
    static void discover(Robot_& robot, const Vector& ddq, const Spatial::Force* fext, Vector&) {
      const auto body =
          update_kinematics<i, Node::parent_id>::run(robot, ddq.template segment<Node::dof_number>(Node::dof_index));
      internal::require(node<i>(robot).joint.f, Robot_::inertias[i], body, fext[i]);
    }

    template <typename Vector>
    static void finish(Robot_& robot, const Vector&, const Spatial::Force*, Vector& torques) {
      auto& n = node<i>(robot);
      n.joint.S.transposeTimes(n.joint.f, &torques[Node::dof_index]);
      if constexpr (Node::parent_id >= 0) {
        internal::add_force_to_parent(n, node<Node::parent_id>(robot).joint.f);
      }
    }
  };

  /// ddq: 21 generalized accelerations. fext: 16 external forces, each on its body in its own frame. torques: 21
  /// generalized forces (N, N m); the first six act on the root from the world, linear then angular, in its frame.
  static void run(Robot& robot, const Eigen::Matrix<float, Robot::nb_dof, 1>& ddq, const Spatial::Force* fext,
                  Eigen::Matrix<float, Robot::nb_dof, 1>& torques) {
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, ddq, fext, torques);
  }
};

}  // namespace kinetra
