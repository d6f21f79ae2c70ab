#pragma once

#include <kinetra/spatial/Vec3.hpp>

namespace kinetra::Spatial {

class RotationMatrix;
class SymmetricMatrix;

/// A 3 x 3 matrix at work: its columns in three registers. Where it is a rotation, it is a RotationMatrix at work.
struct Matrix3 {
  using Vector = Vec3;            ///< of a translation that stands beside it
  using AtRest = RotationMatrix;  ///< the kind that stores it

  Vec3 column0;
  Vec3 column1;
  Vec3 column2;

  Eigen::Matrix3f matrix() const {
    Eigen::Matrix3f M;
    M << Eigen::Vector3f(column0), Eigen::Vector3f(column1), Eigen::Vector3f(column2);
    return M;
  }
  float operator()(int row, int column) const { return matrix()(row, column); }

  Matrix3 transpose() const {
    const Float4 a = column0.lanes();
    const Float4 b = column1.lanes();
    const Float4 c = column2.lanes();
    const Float4 xy = shuffle<0, 4, 1, 5>(a, b);  // a_x b_x a_y b_y
    const Float4 z = shuffle<2, 6, 3, 7>(a, b);   // a_z b_z
    return {Vec3(shuffle<0, 1, 4, 7>(xy, c)), Vec3(shuffle<2, 3, 5, 7>(xy, c)), Vec3(shuffle<0, 1, 6, 7>(z, c))};
  }

  /// M p and M'p, each element summed from left to right.
  Vec3 apply(Vec3 p) const { return column0 * p.splat<0>() + column1 * p.splat<1>() + column2 * p.splat<2>(); }
  Vec3 applyInv(Vec3 p) const { return transpose().apply(p); }
  /// M'I M for a symmetric I, of a rotation M.
  SymmetricMatrix applyInv(const SymmetricMatrix& I) const;
};

}  // namespace kinetra::Spatial
