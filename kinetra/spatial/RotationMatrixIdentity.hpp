#pragma once

#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

namespace simd {

struct RotationMatrixIdentity {
  static constexpr int size = 1;

  float k;

  static RotationMatrixIdentity load(const float* p) { return {*p}; }
  void store(float* p) const { *p = k; }

  Vector3 apply(Vector3 p) const { return p; }
  Vector3 applyInv(Vector3 p) const { return p; }
  SymmetricMatrix applyInv(SymmetricMatrix I) const { return I; }
};

}  // namespace simd

/// No rotation: E is the identity. The factor k, 1 in every placement, scales a rotation multiplied by this one and
/// nothing else.
class RotationMatrixIdentity {
 public:
  using InRegisters = simd::RotationMatrixIdentity;

  /// k is left unset.
  // cppcheck-suppress uninitMemberVar ; on purpose: tables of placements are filled when they are built
  RotationMatrixIdentity() = default;
  explicit RotationMatrixIdentity(float k) : k_(k) {}

  float k() const { return k_; }
  Eigen::Matrix3f matrix() const { return Eigen::Matrix3f::Identity(); }

  Eigen::Vector3f apply(const Eigen::Vector3f& p) const { return p; }
  Eigen::Vector3f applyInv(const Eigen::Vector3f& p) const { return p; }

 private:
  float k_;
};

}  // namespace kinetra::Spatial
