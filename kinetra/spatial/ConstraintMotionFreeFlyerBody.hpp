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

  /// Column k of I S: the momentum of a body of inertia I for a unit rate of coordinate k.
  Force::Lanes momentum(const Inertia::Lanes& inertia, int k) const { return inertia * column(k); }

  /// S a: the joint's motion for six rates or accelerations a, linear first. They are read one by one, as they often
  /// come from a copy that the compiler made in pieces of its own.
  Motion::Lanes operator*(const Eigen::Matrix<float, 6, 1>& a) const {
    const auto [angular, linear] = times({a[0], a[1], a[2]}, {a[3], a[4], a[5]});
    return {angular, linear};
  }

  /// S'f, the six components of f along the joint's coordinates, into six floats. S is its own transpose.
  void transposeTimes(Force::Lanes f, float* projected) const {
    const auto [linear, angular] = times(f.couple(), f.force());
    store6(linear, angular, projected);
  }

 private:
  struct Halves {
    Vec3 first;
    Vec3 last;
  };

  /// S (a, b) = (b, a), by the pattern of S. Each entry takes the products with the five zeros of its row along, which
  /// decide the sign of a zero and what comes of an infinity, so that all bits are those of the full product.
  static Halves times(Vec3 a, Vec3 b) {
    const Vec3 a0 = a * 0.0F;
    const Vec3 b0 = b * 0.0F;
    const Vec3 other_a0 = a0.yzx() + a0.zxy();
    const Vec3 other_b0 = b0.yzx() + b0.zxy();
    return {b + ((a0 + other_a0) + other_b0), a + ((b0 + other_b0) + other_a0)};
  }

  Eigen::Matrix<float, 6, 6> S_;
};

/// I S, six forces as columns.
inline Eigen::Matrix<float, 6, 6> operator*(const Inertia& inertia, const ConstraintMotionFreeFlyerBody& S) {
  Eigen::Matrix<float, 6, 6> F;
  for (int k = 0; k < 6; ++k) {
    S.momentum(inertia, k).store(&F(0, k));
  }
  return F;
}

}  // namespace kinetra::Spatial
