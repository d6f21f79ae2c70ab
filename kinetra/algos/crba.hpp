#pragma once

#include <kinetra/algos/crba_upward.hpp>
#include <kinetra/depth_first_traversal.hpp>

namespace kinetra {

/// The generalized mass matrix by the composite-rigid-body algorithm. The flag says whether the pass runs the joint
/// pass itself; there is only the pass that does not and takes sXp as the last joint pass left it.
template <typename Robot, bool runs_jcalc>
struct crba;

template <typename Robot>
struct crba<Robot, false> {
  /// Down the tree every body starts from its own inertia, read from the table on each call; up the tree the inertias
  /// are gathered and the matrix is filled.
  template <typename Robot_, int i>
  struct DftVisitor : internal::crba_upward<Robot_, i> {
    template <typename Derived>
    static void discover(Robot_& robot, Eigen::MatrixBase<Derived>&) {
      // Copied by way of registers: a plain copy goes in pieces for which the next load would have to wait.
      node<i>(robot).body.Iic = Spatial::Inertia::Lanes(Robot_::inertias[i]);
    }
  };

  /// H: at least 21 x 21, symmetric, rows and columns in the order of the coordinates (kg, kg m, kg m^2). Entries that
  /// couple two branches of the tree are zero by nature and are not written. Featherstone 2008, table 6.2.
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H) {
    internal::depth_first_traversal<DftVisitor, Robot>::run(robot, H);
  }
};

}  // namespace kinetra
