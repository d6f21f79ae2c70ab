#pragma once

#include <kinetra/algos/crba.hpp>

namespace kinetra {

/// The generalized mass matrix of the robot without one body: crba with that body's inertia taken as zero, so that its
/// descendants still count.
template <typename Robot>
struct partial_crba {
  using MassMatrix = internal::MassMatrix<Robot::nb_dof>;

  template <typename Robot_, int i>
  struct DftVisitor : crba<Robot, false>::template DftVisitor<Robot_, i> {
    static void discover(Robot_& robot, MassMatrix&, int excludedBody) {
      store(excludedBody == i ? simd::Inertia::zero() : load(Robot_::inertias[i]), node<i>(robot).body.Iic);
    }
    static void finish(Robot_& robot, MassMatrix& H, int) {
      crba<Robot, false>::template DftVisitor<Robot_, i>::finish(robot, H);
    }
  };

  /// H: as crba fills it. An excludedBody that is not a body excludes nothing.
  template <typename Derived>
  static void run(Robot& robot, Eigen::MatrixBase<Derived>& H, const int& excludedBody) {
    internal::runCrba<DftVisitor>(robot, H.derived(), excludedBody);
  }
};

}  // namespace kinetra
