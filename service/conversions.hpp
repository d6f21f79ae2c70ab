#pragma once

#include <type_traits>

#include <kinetra/spatial/Transform.hpp>
#include <service/RigidBodySystem.hpp>

// Spatial transforms to and from the host's 3D math types. A spatial transform (E, r) takes a point p to E (p - r); a
// host transform (R, t) takes it to R p + t. Of the host's types only their floats are used, and their layout.

namespace lumo {

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
template <typename Rotation>
void invToOXMath(const kinetra::Spatial::TransformT<Rotation>& X, OX::Math::Transform& H) {
  using kinetra::Spatial::append;
  using kinetra::Spatial::store4;
  const kinetra::Spatial::Matrix3 E = X.E;
  const kinetra::Spatial::Float4 r = kinetra::Spatial::Vec3(X.r).lanes();
  float* rows = floats(H);
  store4(append<0>(E.column0, r), rows);
  store4(append<1>(E.column1, r), rows + 4);
  store4(append<2>(E.column2, r), rows + 8);
}

/// The pose of A's new frame in B's old frame, B first: the inverse of A B. Row 2 of R is the cross product of rows 0
/// and 1, as column 2 of every product of rotations is.
template <typename RotationA, typename RotationB>
[[gnu::always_inline]] inline void invProdToOXMath(const kinetra::Spatial::TransformT<RotationA>& A,
                                                   const kinetra::Spatial::TransformT<RotationB>& B,
                                                   OX::Math::Transform& H) {
  invToOXMath(A * B, H);
}

/// The host transform that takes points as X does: R = E, t = -E r.
inline void toOXMath(const SpatialTransform& X, OX::Math::Transform& H) {
  invToOXMath(SpatialTransform(X.E.transpose(), -X.E.apply(X.r)), H);
}

/// The spatial transform that takes points as H does: E = R, r = -R't. R must be orthonormal; not checked.
inline SpatialTransform fromOXMath(const OX::Math::Transform& H) {
  using kinetra::Spatial::Vec3;
  const float* rows = floats(H);
  const kinetra::Spatial::Matrix3 Rt = {Vec3::load(rows), Vec3::load(rows + 4), Vec3::load(rows + 8)};
  return {Rt.transpose(), -Rt.apply(Vec3(rows[3], rows[7], rows[11]))};
}

}  // namespace lumo
