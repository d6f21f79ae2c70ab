#pragma once

#include <kinetra/Node.hpp>
#include <kinetra/depth_first_traversal.hpp>

// Sum of mass times centre of mass over all bodies but one, in the root's frame.
//
// Reads iX1 (the last fwd_kin_iX1) and the table of inertias, no node. Writes comSum.
//   start:    comSum = first moment of the root
//   discover: unless the body is the excluded one, comSum += m P, P its centre of mass in the root's frame
// The descendants of the excluded body are counted. The order is that of fwd_kin_iX1, so the sums agree to the bit.

namespace kinetra {

namespace internal {

/// run(robot, iX1, excludedBody, comSum) from a child of the root sums over that child's subtree.
template <typename Robot, int k>
struct PartialComVisitor {
  template <typename Vector>
  static void discover(Robot&, const TransformT<RotationMatrix>* iX1, int excludedBody, Vector& comSum) {
    if (excludedBody == k) return;
    comSum = firstMoment(load(Robot::inertias[k]), load(iX1[k])) + simd::Vector3(comSum);
  }
  template <typename Vector>
  static void finish(Robot&, const TransformT<RotationMatrix>*, int, Vector&) {}
};

}  // namespace internal

template <typename Robot>
struct partial_com {
  /// iX1: nb_bodies transforms, root to body. excludedBody: any body but the root; any other value excludes nothing.
  /// comSum in kg m.
  template <typename Derived>
  static void run(Robot& robot, const TransformT<RotationMatrix>* iX1, int excludedBody,
                  Eigen::MatrixBase<Derived>& comSum) {
    simd::Vector3 sum = Robot::inertias[0].h;
    internal::depth_first_traversal_internal<internal::PartialComVisitor, Robot, 0>::runChildren(robot, iX1,
                                                                                                 excludedBody, sum);
    comSum = Eigen::Vector3f(sum);
  }
};

}  // namespace kinetra
