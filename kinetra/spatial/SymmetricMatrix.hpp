#pragma once

#include <kinetra/spatial/Vector3.hpp>

namespace kinetra::Spatial::simd {

/// A symmetric 3 x 3 matrix, such as a rotational inertia, in two registers. Stored, it is six floats, the lower
/// triangle row by row: xx, xy, yy, xz, yz, zz.
class SymmetricMatrix {
 public:
  static constexpr int size = 6;

  /// From the diagonal (xx, yy, zz) and the rest (yz, xz, xy), each named by the axis that it leaves out.
  SymmetricMatrix(Vector3 diagonal, Vector3 rest)
      : first_(shuffle<0, 4, 1, 5>(diagonal.lanes(), shuffle<2, 1, 0, 3>(rest.lanes()))),   // xx yy . . | xy xz . .
        last_(shuffle<0, 4, 1, 5>(rest.lanes(), shuffle<2, 2, 2, 2>(diagonal.lanes()))) {}  // yz . . . | zz . . .

  static SymmetricMatrix load(const float* p) { return {load4(p), load2(p + 4)}; }
  void store(float* p) const {
    store4(first_, p);
    store2(last_, p + 4);
  }

  // From first_ and last_, xx xy yy xz | yz zz . .:
  Vector3 diagonal() const { return Vector3(shuffle<0, 2, 5, 5>(first_, last_)); }                      // xx yy zz
  Vector3 rest() const { return Vector3(shuffle<0, 2, 3, 3>(shuffle<0, 1, 7, 5>(last_, first_))); }     // yz xz xy
  Vector3 column0() const { return Vector3(shuffle<0, 1, 3, 3>(first_)); }                              // xx xy xz
  Vector3 column1() const { return Vector3(shuffle<1, 2, 4, 5>(first_, last_)); }                       // xy yy yz
  Vector3 column2() const { return Vector3(shuffle<0, 2, 3, 3>(shuffle<3, 3, 4, 5>(first_, last_))); }  // xz yz zz

  Vector3 apply(Vector3 p) const { return combine(column0(), column1(), column2(), p); }

  friend SymmetricMatrix operator+(SymmetricMatrix a, SymmetricMatrix b) {
    return {a.first_ + b.first_, a.last_ + b.last_};
  }

 private:
  SymmetricMatrix(Float4 first, Float4 last) : first_(first), last_(last) {}

  Float4 first_;
  Float4 last_;
};

}  // namespace kinetra::Spatial::simd
