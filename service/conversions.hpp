#pragma once

#include <type_traits>
#include <vector>

#include <kinetra/spatial/Transform.hpp>
#include <service/RigidBodySystem.hpp>

// Spatial transforms to and from the host's 3D math types. A spatial transform (E, r) takes a point p to E (p - r); a
// host transform (R, t) takes it to R p + t. Of the host's types only their floats are used, and their layout.

namespace lumo {

namespace simd = kinetra::Spatial::simd;
using kinetra::Spatial::Force;
using SpatialTransform = kinetra::Spatial::TransformT<kinetra::Spatial::RotationMatrix>;

/// The floats of a host value, in order: a Transform's rows (three of R, one of t), a position's or velocity's
/// components.
template <typename HostType>
auto floats(HostType& value) {
  static_assert(std::is_trivially_copyable_v<HostType>, "host types must be plain floats");
  using Float = std::conditional_t<std::is_const_v<HostType>, const float, float>;
  return reinterpret_cast<Float*>(&value);
}
static_assert(sizeof(OX::Math::Transform) == 12 * sizeof(float), "three rows of R and t");
static_assert(sizeof(OX::Math::Position3D) == 3 * sizeof(float), "x, y, z");
static_assert(sizeof(OX::Math::Position6D) == 6 * sizeof(float), "x, y, z and the angles about them");
static_assert(sizeof(OX::Math::Velocity6D) == 6 * sizeof(float), "linear x, y, z and angular x, y, z");

/// The pose of X's new frame in its old frame: R = E', t = r. Moves values only.
inline void invToOXMath(const simd::TransformT<simd::RotationMatrix>& X, OX::Math::Transform& H) {
  float* rows = floats(H);
  simd::store4(simd::append<0>(X.E.column0, X.r.lanes()), rows);
  simd::store4(simd::append<1>(X.E.column1, X.r.lanes()), rows + 4);
  simd::store4(simd::append<2>(X.E.column2, X.r.lanes()), rows + 8);
}
inline void invToOXMath(const SpatialTransform& X, OX::Math::Transform& H) { invToOXMath(load(X), H); }

/// The pose of A's new frame in B's old frame, B first: the inverse of A B. Row 2 of R is the cross product of rows 0
/// and 1, as column 2 of every product of general rotations is of columns 0 and 1.
inline void invProdToOXMath(const SpatialTransform& A, const SpatialTransform& B, OX::Math::Transform& H) {
  invToOXMath(load(A) * load(B), H);
}

/// The host transform that takes points as X does: R = E, t = -E r.
inline void toOXMath(const SpatialTransform& X, OX::Math::Transform& H) {
  invToOXMath(SpatialTransform(X.E.transpose(), -X.E.apply(X.r)), H);
}

/// The spatial transform that takes points as H does: E = R, r = -R't. R must be orthonormal; not checked.
inline SpatialTransform fromOXMath(const OX::Math::Transform& H) {
  const float* rows = floats(H);
  const simd::RotationMatrix Rt = {simd::Vector3::load(rows), simd::Vector3::load(rows + 4),
                                   simd::Vector3::load(rows + 8)};
  return SpatialTransform({Rt.transpose(), -Rt.apply({rows[3], rows[7], rows[11]})});
}

inline OX::Math::Position3D toPosition3D(simd::Vector3 p) {
  OX::Math::Position3D position;
  p.store(floats(position));
  return position;
}

/// The spatial force of a wrench of six floats, force then torque.
inline Force toForce(const std::vector<float>& wrench) {
  return Force(simd::Force{simd::Vector3::load(wrench.data() + 3), simd::Vector3::load(wrench.data())});
}

}  // namespace lumo
