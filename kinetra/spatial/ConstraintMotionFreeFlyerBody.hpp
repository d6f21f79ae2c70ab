#pragma once

#include <kinetra/spatial/Inertia.hpp>

namespace kinetra::Spatial {

namespace simd {

/// S never changes, so nothing of it is loaded: each operation knows its ones and zeros. Products with the zeros are
/// formed all the same, because they decide the sign of a zero and what comes of an infinity.
struct ConstraintMotionFreeFlyerBody {
  static constexpr int size = 36;
  static constexpr float columns[6][6] = {{0, 0, 0, 1, 0, 0}, {0, 0, 0, 0, 1, 0}, {0, 0, 0, 0, 0, 1},
                                          {1, 0, 0, 0, 0, 0}, {0, 1, 0, 0, 0, 0}, {0, 0, 1, 0, 0, 0}};

  static ConstraintMotionFreeFlyerBody load(const float*) { return {}; }

  /// The joint's motion for a unit rate of coordinate k.
  static Motion column(int k) { return Motion::load(columns[k]); }

  /// S a: the joint's motion for six rates or accelerations a, linear first. They are read one by one, as they often
  /// come from a copy that the compiler made in pieces of its own.
  Motion operator*(const Eigen::Matrix<float, 6, 1>& a) const {
    const auto [angular, linear] = swapHalves({a[0], a[1], a[2]}, {a[3], a[4], a[5]});
    return {angular, linear};
  }

  /// Column k of I S: the momentum of a body of inertia I for a unit rate of coordinate k.
  static Force momentum(const Inertia& inertia, int k) { return inertia * column(k); }

  /// S'f, the six components of f along the joint's coordinates, into six floats. S is its own transpose.
  static void transposeTimes(Force f, float* projected) {
    const auto [linear, angular] = swapHalves(f.couple, f.force);
    store6(linear, angular, projected);
  }

 private:
  struct Halves {
    Vector3 first;
    Vector3 last;
  };

  /// S (a, b) = (b, a), each entry with the products by the five zeros of its row, to the bits of the full product.
  static Halves swapHalves(Vector3 a, Vector3 b) {
    const Vector3 a0 = a * 0.0F;
    const Vector3 b0 = b * 0.0F;
    const Vector3 other_a0 = a0.yzx() + a0.zxy();
    const Vector3 other_b0 = b0.yzx() + b0.zxy();
    return {b + ((a0 + other_a0) + other_b0), a + ((b0 + other_b0) + other_a0)};
  }
};

}  // namespace simd

/// Motion subspace of a free-flying body: all six motions, in the body's own axes. Columns 0-2 are the unit linear
/// motions along x, y, z, columns 3-5 the unit angular ones about them: S = [[0, 1], [1, 0]], stored column by column.
class ConstraintMotionFreeFlyerBody {
 public:
  using InRegisters = simd::ConstraintMotionFreeFlyerBody;
  static constexpr int dof_number = 6;

  ConstraintMotionFreeFlyerBody() : S_(&simd::ConstraintMotionFreeFlyerBody::columns[0][0]) {}

  /// The stored columns, for products such as F'S.
  const Eigen::Matrix<float, 6, 6>& matrix() const { return S_; }

  /// S a and S'f
  template <typename Derived>
  Eigen::Matrix<float, 6, 1> operator*(const Eigen::MatrixBase<Derived>& a) const {
    return Motion(load(*this) * a);
  }
  Eigen::Matrix<float, 6, 1> transposeTimes(const Force& f) const {
    Eigen::Matrix<float, 6, 1> projected;
    load(*this).transposeTimes(load(f), projected.data());
    return projected;
  }

 private:
  Eigen::Matrix<float, 6, 6> S_;
};

/// I S, six forces as columns.
inline Eigen::Matrix<float, 6, 6> operator*(const Inertia& inertia, const ConstraintMotionFreeFlyerBody& S) {
  Eigen::Matrix<float, 6, 6> F;
  for (int k = 0; k < 6; ++k) {
    load(S).momentum(load(inertia), k).store(&F(0, k));
  }
  return F;
}

}  // namespace kinetra::Spatial
