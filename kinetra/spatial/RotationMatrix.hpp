#pragma once

#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

namespace simd {

/// A general rotation, its columns in three registers.
struct RotationMatrix {
  static constexpr int size = 9;

  Vector3 column0;
  Vector3 column1;
  Vector3 column2;

  static RotationMatrix load(const float* p) {
    return {Vector3(load4(p)), Vector3(load4(p + 3)), Vector3::loadLast(p + 6)};
  }
  static RotationMatrix loadJustStored(const float* p) {
    return {Vector3::load(p), Vector3::load(p + 3), Vector3::load(p + 6)};
  }
  /// Writes four floats at a time as long as the next column overwrites the fourth.
  void store(float* p) const {
    store4(column0.lanes(), p);
    store4(column1.lanes(), p + 3);
    column2.store(p + 6);
  }

  RotationMatrix transpose() const {
    const Float4 a = column0.lanes(), b = column1.lanes(), c = column2.lanes();
    const Float4 xy = shuffle<0, 4, 1, 5>(a, b);  // ax bx ay by
    const Float4 z = shuffle<2, 6, 3, 7>(a, b);   // az bz .  .
    return {Vector3(shuffle<0, 1, 4, 7>(xy, c)),  // ax bx cx
            Vector3(shuffle<2, 3, 5, 7>(xy, c)),  // ay by cy
            Vector3(shuffle<0, 1, 6, 7>(z, c))};  // az bz cz
  }

  /// E p and E'p
  Vector3 apply(Vector3 p) const { return combine(column0, column1, column2, p); }
  Vector3 applyInv(Vector3 p) const { return transpose().apply(p); }

  /// E'I E, formed as I_zz 1 + E'(I - I_zz 1)E. The shifted matrix is L + w x, where L has the columns (I_xx - I_zz,
  /// I_xy, 2 I_xz), (I_xy, I_yy - I_zz, 2 I_yz), 0 and w = (-I_yz, I_xz, 0), so that E'L E takes two columns and
  /// E'(w x)E = (E'w) x is one vector. Featherstone 2008, appendix A.5. Needs E orthonormal.
  SymmetricMatrix applyInv(SymmetricMatrix I) const {
    const auto [e0, e1, e2] = transpose();
    const Vector3 rest = I.rest();  // yz xz xy
    const Vector3 doubled = rest + rest;
    const Vector3 zz = I.diagonal().splat<2>();
    const Vector3 shifted = I.diagonal() - zz;
    const Vector3 Y0 = e0 * shifted.splat<0>() + e1 * rest.splat<2>() + e2 * doubled.splat<1>();
    const Vector3 Y1 = e0 * rest.splat<2>() + e1 * shifted.splat<1>() + e2 * doubled.splat<0>();
    const Vector3 Etw = e1 * rest.splat<1>() - e0 * rest.splat<0>();
    return {Y0 * e0 + Y1 * e1 + zz, Y0.yzx() * e0.zxy() + Y1.yzx() * e1.zxy() - Etw};
  }
};

}  // namespace simd

/// A general rotation E, p_new = E p_old: nine floats, column by column. Its rows are the new axes in the old frame.
/// Nothing keeps it orthonormal but the way rotations are multiplied.
class RotationMatrix {
 public:
  using InRegisters = simd::RotationMatrix;

  /// All zero, which is not the identity.
  RotationMatrix() : E_{} {}
  // cppcheck-suppress uninitMemberVar ; store writes all nine
  explicit RotationMatrix(const simd::RotationMatrix& E) { store(E, *this); }
  explicit RotationMatrix(const Eigen::Matrix3f& E) { Eigen::Matrix3f::Map(E_) = E; }

  Eigen::Matrix3f matrix() const { return Eigen::Matrix3f::Map(E_); }
  float operator()(int row, int column) const { return E_[row + 3 * column]; }

  RotationMatrix transpose() const { return RotationMatrix(load(*this).transpose()); }

  /// E p and E'p
  Eigen::Vector3f apply(const Eigen::Vector3f& p) const { return load(*this).apply(p); }
  Eigen::Vector3f applyInv(const Eigen::Vector3f& p) const { return load(*this).applyInv(p); }

 private:
  float E_[9];
};

}  // namespace kinetra::Spatial
