#pragma once

#include <utility>

#include <kinetra/algos/partial_com.hpp>
#include <kinetra/node_list.hpp>

// Everything relative to the root: transforms, Jacobian, centre of mass.
//
// Reads sXp of nodes 1-15 (a joint pass for the current angles), iX1[0] (the identity) and the table of inertias.
// Writes iX1[1..15], columns 6-20 of J and comSum; nothing of it depends on the root's pose.
//   discover: 1. iX1 = sXp pX1   2. the joint's column of J   3. the body's share of comSum

namespace kinetra {

namespace internal {

/// The steps for one body: X is its iX1, column its joint's in J.
template <typename Rotation, typename Vector>
void relate_to_root(const Spatial::TransformT<Rotation>& sXp, const Spatial::TransformT<Spatial::RotationMatrix>& pX1,
                    const Spatial::Inertia& inertia, Spatial::TransformT<Spatial::RotationMatrix>& iX1, float* column,
                    Vector& comSum) {
  const Spatial::TransformT<Spatial::Matrix3> X = sXp * pX1.fresh();
  iX1 = X;

  // The unit turn about the body's z axis, carried to the root's frame: the axis, and E'(a x z) with a = E r, which
  // is r x axis. This order of evaluation is part of the result.
  const auto [x, y, z] = X.E.transpose();
  const Spatial::Vec3 a = X.E.apply(X.r);
  Spatial::Motion::Lanes(z, x * a.splat<1>() - y * a.splat<0>()).store(column);

  add_first_moment(inertia, X, comSum);
}

template <typename Robot, int i>
struct FwdKiniX1Visitor {
  template <typename DerivedJ, typename Vector>
  static void discover(Robot& robot, Spatial::TransformT<Spatial::RotationMatrix>* iX1, Eigen::MatrixBase<DerivedJ>& J,
                       Vector& comSum) {
    static_assert(!DerivedJ::IsRowMajor && DerivedJ::InnerStrideAtCompileTime == 1, "J must be stored by columns");
    using Node = node_t<Robot, i>;
    relate_to_root(node<i>(robot).sXp, iX1[Node::parent_id], Robot::inertias[i], iX1[i],
                   &J.derived()(0, Node::dof_index), comSum);
  }
};

}  // namespace internal

template <typename Robot>
struct fwd_kin_iX1 {
  /// iX1: 16 transforms, root to body, the first one the identity. J: 6 x 21, rows angular then linear, in the root's
  /// frame; columns 0-5 are not touched. comSum: mass times centre of mass of all bodies, in the root's frame (kg m).
  template <typename DerivedJ, typename DerivedCom>
  static void run(Robot& robot, Spatial::TransformT<Spatial::RotationMatrix>* iX1, Eigen::MatrixBase<DerivedJ>& J,
                  Eigen::MatrixBase<DerivedCom>& comSum) {
    static_assert(DerivedCom::SizeAtCompileTime == 3 && DerivedCom::InnerStrideAtCompileTime == 1,
                  "three floats in a row");
    Spatial::Vec3 sum = Robot::inertias[0].h;
    discover(std::make_integer_sequence<int, Robot::nb_bodies - 1>{}, robot, iX1, J, sum);
    sum.store(comSum.derived().data());
  }

 private:
  template <int... i, typename... Args>
  static void discover(std::integer_sequence<int, i...>, Robot& robot, Args&... args) {
    (internal::FwdKiniX1Visitor<Robot, i + 1>::discover(robot, args...), ...);
  }
};

}  // namespace kinetra
