#pragma once

#include <kinetra/spatial/Matrix3.hpp>

namespace kinetra::Spatial {

/// A symmetric 3 x 3 matrix, such as a rotational inertia, at work: two registers. At rest it is six floats, the lower
/// triangle row by row: xx, xy, yy, xz, yz, zz.
class SymmetricMatrix {
 public:
  /// From the diagonal (xx, yy, zz) and the rest (yz, zx, xy), each named by the axis that it leaves out.
  SymmetricMatrix(Vec3 diagonal, Vec3 off)
      : first_(shuffle<0, 4, 1, 5>(diagonal.lanes(), shuffle<2, 1, 0, 3>(off.lanes()))),
        last_(shuffle<0, 4, 1, 5>(off.lanes(), shuffle<2, 2, 2, 2>(diagonal.lanes()))) {}

  static SymmetricMatrix load(const float* lower) { return {load4(lower), load2(lower + 4)}; }
  void store(float* lower) const {
    store4(first_, lower);
    store2(last_, lower + 4);
  }

  Vec3 diagonal() const { return Vec3(shuffle<0, 2, 5, 5>(first_, last_)); }
  Vec3 off() const { return Vec3(shuffle<0, 2, 3, 3>(shuffle<0, 1, 7, 5>(last_, first_))); }
  Matrix3 matrix() const {
    return {Vec3(shuffle<0, 1, 3, 3>(first_)), Vec3(shuffle<1, 2, 4, 5>(first_, last_)),
            Vec3(shuffle<0, 2, 3, 3>(shuffle<3, 3, 4, 5>(first_, last_)))};
  }

  friend SymmetricMatrix operator+(SymmetricMatrix a, SymmetricMatrix b) {
    return {a.first_ + b.first_, a.last_ + b.last_};
  }

 private:
  SymmetricMatrix(Float4 first, Float4 last) : first_(first), last_(last) {}

  Float4 first_;  // xx xy yy xz
  Float4 last_;   // yz zz
};

/// Formed as I_zz 1 + E'(I - I_zz 1)E. The shifted matrix is L + w x, where L has the columns (I_xx - I_zz, I_xy,
/// 2 I_xz), (I_xy, I_yy - I_zz, 2 I_yz), 0 and w = (-I_yz, I_xz, 0), so that E'L E takes two columns and E'(w x)E =
/// (E'w) x is one vector. Featherstone 2008, appendix A.5. Needs E orthonormal.
inline SymmetricMatrix Matrix3::applyInv(const SymmetricMatrix& I) const {
  const auto [e0, e1, e2] = transpose();
  const Vec3 off = I.off();
  const Vec3 doubled = off + off;
  const Vec3 zz = I.diagonal().splat<2>();
  const Vec3 shifted = I.diagonal() - zz;
  const Vec3 Y0 = e0 * shifted.splat<0>() + e1 * off.splat<2>() + e2 * doubled.splat<1>();
  const Vec3 Y1 = e0 * off.splat<2>() + e1 * shifted.splat<1>() + e2 * doubled.splat<0>();
  const Vec3 Etw = e1 * off.splat<1>() - e0 * off.splat<0>();
  return {Y0 * e0 + Y1 * e1 + zz, Y0.yzx() * e0.zxy() + Y1.yzx() * e1.zxy() - Etw};
}

}  // namespace kinetra::Spatial
