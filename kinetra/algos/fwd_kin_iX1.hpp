#pragma once

#include <type_traits>

#include <kinetra/Node.hpp>
#include <kinetra/node_list.hpp>

// Everything relative to the root: transforms, Jacobian, centre of mass.
//
// Reads sXp of every node but the root's (a joint pass for the current angles), iX1[0] (the identity) and the table of
// inertias. Writes the other entries of iX1, the columns of J after the root's and comSum. None of these
// results depends on the root's pose.
//   discover: 1. sX1 = sXp pX1   2. the joint's column of J   3. the body's share of comSum

namespace kinetra {

namespace internal {

/// The unit turn about a body's z axis, carried to the root's frame by X, the body's iX1: the axis, and E'(a x z) with
/// a = E r, which is r x axis. The order of evaluation decides the bits of the result.
inline simd::Motion turnAboutZ(const simd::TransformT<simd::RotationMatrix>& X) {
  const auto [x, y, z] = X.E.transpose();
  const simd::Vector3 a = X.E.apply(X.r);
  return {z, x * a.splat<1>() - y * a.splat<0>()};
}

/// The steps for one body; one function for all nodes whose sXp is of one kind.
template <typename Rotation, typename Vector>
void relateToRoot(const TransformT<Rotation>& sXp, const TransformT<RotationMatrix>& pX1, const Inertia& inertia,
                  TransformT<RotationMatrix>& iX1, float* column, Vector& comSum) {
  const auto sX1 = load(sXp) * loadJustStored(pX1);
  store(sX1, iX1);
  turnAboutZ(sX1).store(column);
  comSum = firstMoment(load(inertia), sX1) + simd::Vector3(comSum);
}

template <typename Robot, int i>
struct FwdKiniX1Visitor {
  template <typename DerivedJ, typename Vector>
  static void discover(Robot& robot, TransformT<RotationMatrix>* iX1, Eigen::MatrixBase<DerivedJ>& J, Vector& comSum) {
    static_assert(!DerivedJ::IsRowMajor && DerivedJ::InnerStrideAtCompileTime == 1, "J must be stored by columns");
    using Node = node_t<Robot, i>;
    relateToRoot(node<i>(robot).sXp, iX1[Node::parent_id], Robot::inertias[i], iX1[i], &J.derived()(0, Node::dof_index),
                 comSum);
  }
};

}  // namespace internal

template <typename Robot>
struct fwd_kin_iX1 {
  /// iX1: nb_bodies transforms, root to body, the first one the identity. J: 6 x nb_dof, rows angular then linear, in
  /// the root's frame; the root's columns are not touched. comSum: mass times centre of mass of all bodies, in the
  /// root's frame (kg m).
  template <typename DerivedJ, typename DerivedCom>
  static void run(Robot& robot, TransformT<RotationMatrix>* iX1, Eigen::MatrixBase<DerivedJ>& J,
                  Eigen::MatrixBase<DerivedCom>& comSum) {
    simd::Vector3 sum = Robot::inertias[0].h;
    forEachNode(robot, [&](const auto& n) {
      constexpr int i = std::decay_t<decltype(n)>::id;
      if constexpr (i > 0) internal::FwdKiniX1Visitor<Robot, i>::discover(robot, iX1, J, sum);
    });
    comSum = Eigen::Vector3f(sum);
  }
};

}  // namespace kinetra
