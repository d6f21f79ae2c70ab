#pragma once

#include <kinetra/algos/crba_upward.hpp>
#include <kinetra/depth_first_traversal.hpp>

namespace kinetra {

/// The generalized mass matrix of the robot without one body: crba with that body's inertia taken as zero, so that its
/// descendants still count.
template <typename Robot>
struct partial_crba {
  template <typename Robot_, int i>
  struct DftVisitor : internal::crba_upward<Robot_, i> {
    template <typename Derived>
    static void discover(Robot_& robot, Eigen::MatrixBase<Derived>&, int excludedBody) {
      node<i>(robot).body.Iic =
          excludedBody == i ? Spatial::Inertia::zero() : Spatial::Inertia::Lanes(Robot_::inertias[i]);
    }
    template <typename Derived>
    static void finish(Robot_& robot, Eigen::MatrixBase<Derived>& H, int) {
      internal::crba_upward<Robot_, i>::finish(robot, H);
    }
  };

  /// H: 21 x 21, as crba fills it. An excludedBody that is no body excludes nothing.
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H, const int& excludedBody) {
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, H, excludedBody);
  }
};

}  // namespace kinetra
