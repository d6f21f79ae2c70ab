#pragma once

#include <utility>

#include <kinetra/depth_first_traversal.hpp>
#include <kinetra/spatial/Transform.hpp>

// Sum of mass times centre of mass over all bodies but one, in the root's frame.
//
// Reads iX1 (the last fwd_kin_iX1) and the table of inertias, no node. Writes comSum.
//   start:    comSum = first moment of the root
//   discover: unless the body is the excluded one, comSum += m P, P its centre of mass in the root's frame
// The descendants of the excluded body are counted. The order is that of fwd_kin_iX1, so the sums agree to the bit.

namespace kinetra {

namespace internal {

/// Adds m P to comSum (kg m), P = E'c + r the body's centre of mass in the root's frame, (E, r) = iX1.
template <typename Rotation, typename Vector>
void add_first_moment(const Spatial::Inertia& inertia, const Spatial::TransformT<Rotation>& iX1, Vector& comSum) {
  comSum = iX1.applyInvToPoint(inertia.com()) * inertia.m + comSum;
}

/// run(robot, iX1, excludedBody, comSum) from a child of the root sums over that child's subtree.
template <typename Robot, int k>
struct PartialComVisitor {
  using Transform = Spatial::TransformT<Spatial::RotationMatrix>;

  template <typename Vector>
  static void discover(Robot&, const Transform* iX1, int excludedBody, Vector& comSum) {
    if (excludedBody != k) {
      add_first_moment(Robot::inertias[k], iX1[k], comSum);
    }
  }
  template <typename Vector>
  static void finish(Robot&, const Transform*, int, Vector&) {}
};

}  // namespace internal

template <typename Robot>
struct partial_com {
  /// iX1: 16 transforms, root to body. excludedBody: 1 to 15; any other value excludes nothing. comSum in kg m.
  template <typename Derived>
  static void run(Robot& robot, const Spatial::TransformT<Spatial::RotationMatrix>* iX1, int excludedBody,
                  Eigen::MatrixBase<Derived>& comSum) {
    static_assert(Derived::SizeAtCompileTime == 3 && Derived::InnerStrideAtCompileTime == 1, "three floats in a row");
    Spatial::Vec3 sum = Robot::inertias[0].h;
    visit(typename node_t<Robot, 0>::children{}, robot, iX1, excludedBody, sum);
    sum.store(comSum.derived().data());
  }

 private:
  template <int... Children, typename... Args>
  static void visit(std::integer_sequence<int, Children...>, Robot& robot, Args&... args) {
    (internal::depth_first_traversal_internal<internal::PartialComVisitor, Robot, Children>::run(robot, args...), ...);
  }
};

}  // namespace kinetra
