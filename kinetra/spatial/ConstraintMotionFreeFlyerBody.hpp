#pragma once

#include <kinetra/spatial/Inertia.hpp>

namespace kinetra::Spatial {

/// Motion subspace of a free-flying body: all six motions, in the body's own axes. Columns 0-2 are the unit linear
/// motions along x, y, z, columns 3-5 the unit angular ones about them: S = [[0, 1], [1, 0]], stored column by column.
class ConstraintMotionFreeFlyerBody {
 public:
  static constexpr int dof_number = 6;

  ConstraintMotionFreeFlyerBody() {
    S_.setZero();
    S_.topRightCorner<3, 3>().setIdentity();
    S_.bottomLeftCorner<3, 3>().setIdentity();
  }

  const Eigen::Matrix<float, 6, 6>& matrix() const { return S_; }

  /// The joint's motion for a unit rate of coordinate k.
  Motion::Lanes column(int k) const { return {Vec3::load(&S_(0, k)), Vec3::load(&S_(3, k))}; }

  /// S a: the joint's motion for six rates or accelerations a, linear first, S as stored.
  Motion::Lanes operator*(const Eigen::Matrix<float, 6, 1>& a) const {
    return times(Vec3::load(a.data()), Vec3::load(a.data() + 3));
  }

  /// S'f, the six components of f along the joint's coordinates, into six floats. S is its own transpose.
  void transposeTimes(Force::Lanes f, float* projected) const {
    const Motion::Lanes p = times(f.couple(), f.force());
    p.angular().store(projected);
    p.linear().store(projected + 3);
  }

 private:
  Motion::Lanes times(Vec3 a0, Vec3 a3) const {
    return {block(0, 0).apply(a0) + block(0, 3).apply(a3), block(3, 0).apply(a0) + block(3, 3).apply(a3)};
  }

  /// The 3 x 3 block of S at a row and a column.
  Matrix3 block(int row, int column) const {
    const float* first = &S_(row, column);
    const bool at_the_end = row == 3 && column == 3;  // where four floats would reach past S
    return {Vec3(load4(first)), Vec3(load4(first + 6)), at_the_end ? Vec3::load(first + 12) : Vec3(load4(first + 12))};
  }

  Eigen::Matrix<float, 6, 6> S_;
};

/// I S, six forces as columns.
inline Eigen::Matrix<float, 6, 6> operator*(const Inertia& inertia, const ConstraintMotionFreeFlyerBody& S) {
  Eigen::Matrix<float, 6, 6> F;
  for (int k = 0; k < 6; ++k) {
    (inertia * S.column(k)).store(&F(0, k));
  }
  return F;
}

}  // namespace kinetra::Spatial
