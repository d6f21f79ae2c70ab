#pragma once

#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

/// A general rotation E, p_new = E p_old: nine floats, column by column. Its rows are the new axes in the old frame.
/// Nothing keeps it orthonormal but the way rotations are multiplied. At work it is a Matrix3.
class RotationMatrix {
 public:
  using Vector = Eigen::Vector3f;  ///< of a translation that stands beside it

  /// All zero, which is not the identity.
  RotationMatrix() : E_{} {}
  explicit RotationMatrix(const Eigen::Matrix3f& E) { Eigen::Matrix3f::Map(E_) = E; }
  RotationMatrix(const Matrix3& E) { *this = E; }
  RotationMatrix(Vec3 column0, Vec3 column1, Vec3 column2) : RotationMatrix(Matrix3{column0, column1, column2}) {}

  /// Writes four floats at a time as long as the next column overwrites the fourth.
  RotationMatrix& operator=(const Matrix3& E) {
    store4(E.column0.lanes(), E_);
    store4(E.column1.lanes(), E_ + 3);
    E.column2.store(E_ + 6);
    return *this;
  }
  /// Reads four floats at a time, the last column from one float earlier.
  operator Matrix3() const { return {Vec3(load4(E_)), Vec3(load4(E_ + 3)), Vec3(shuffle<1, 2, 3, 0>(load4(E_ + 5)))}; }
  /// The same for a value written only just now: reads what was stored piece by piece, so that no load has to wait for
  /// two stores.
  Matrix3 fresh() const { return {Vec3::load(E_), Vec3::load(E_ + 3), Vec3::load(E_ + 6)}; }

  Eigen::Matrix3f matrix() const { return Eigen::Matrix3f::Map(E_); }
  float operator()(int row, int column) const { return E_[row + 3 * column]; }

  RotationMatrix transpose() const { return columns().transpose(); }

  /// E p and E'p
  Vec3 apply(Vec3 p) const { return columns().apply(p); }
  Vec3 applyInv(Vec3 p) const { return columns().applyInv(p); }

  /// E'I E for a symmetric I
  SymmetricMatrix applyInv(const SymmetricMatrix& I) const { return columns().applyInv(I); }

 private:
  Matrix3 columns() const { return *this; }

  float E_[9];
};

}  // namespace kinetra::Spatial
