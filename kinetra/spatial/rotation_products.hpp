#pragma once

#include <kinetra/spatial/RotationMatrix.hpp>
#include <kinetra/spatial/RotationMatrixAboutZ.hpp>
#include <kinetra/spatial/RotationMatrixIdentity.hpp>

namespace kinetra::Spatial {

// The products E1 E2 of rotations that the model needs: apply E2 first, then E1. The kind of the result follows from
// the kinds of the factors.

namespace simd {

/// General by general: two columns multiplied out and the third their cross product, which keeps the result
/// orthonormal and right-handed.
inline RotationMatrix operator*(const RotationMatrix& E1, const RotationMatrix& E2) {
  const Vector3 column0 = E1.apply(E2.column0);
  const Vector3 column1 = E1.apply(E2.column1);
  return {column0, column1, cross(column0, column1)};
}

/// About z by general: combines rows 0 and 1 of E2 and keeps row 2 to the bit.
inline RotationMatrix operator*(RotationMatrixAboutZ E1, const RotationMatrix& E2) {
  return {E1.apply(E2.column0), E1.apply(E2.column1), E1.apply(E2.column2)};
}

/// By the identity: the left factor times k.
inline RotationMatrixAboutZ operator*(RotationMatrixAboutZ E1, RotationMatrixIdentity E2) {
  return {E1.c * E2.k, E1.s * E2.k};
}
inline RotationMatrix operator*(const RotationMatrix& E1, RotationMatrixIdentity E2) {
  return {E1.column0 * E2.k, E1.column1 * E2.k, E1.column2 * E2.k};
}

}  // namespace simd

inline RotationMatrix operator*(const RotationMatrix& E1, const RotationMatrix& E2) {
  return RotationMatrix(load(E1) * load(E2));
}
inline RotationMatrix operator*(const RotationMatrixAboutZ& E1, const RotationMatrix& E2) {
  return RotationMatrix(load(E1) * load(E2));
}
inline RotationMatrixAboutZ operator*(const RotationMatrixAboutZ& E1, const RotationMatrixIdentity& E2) {
  return RotationMatrixAboutZ(load(E1) * load(E2));
}
inline RotationMatrix operator*(const RotationMatrix& E1, const RotationMatrixIdentity& E2) {
  return RotationMatrix(load(E1) * load(E2));
}

}  // namespace kinetra::Spatial
