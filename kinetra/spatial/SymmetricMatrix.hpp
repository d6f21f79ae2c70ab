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

  static SymmetricMatrix load(const float* lower) { return {loadLanes(lower), loadPair(lower + 4)}; }
  void store(float* lower) const {
    storeLanes(first_, lower);
    storePair(last_, lower + 4);
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
  SymmetricMatrix(Lanes first, Lanes last) : first_(first), last_(last) {}

  Lanes first_;  // xx xy yy xz
  Lanes last_;   // yz zz
};

}  // namespace kinetra::Spatial
