#pragma once

#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

/// No rotation: E is the identity. The factor k, 1 in every placement, scales a rotation multiplied by this one and
/// nothing else.
class RotationMatrixIdentity {
 public:
  using Vector = Eigen::Vector3f;  ///< of a translation that stands beside it

  /// k is left unset.
  // cppcheck-suppress uninitMemberVar ; on purpose: tables of placements are filled when they are built
  RotationMatrixIdentity() = default;
  explicit RotationMatrixIdentity(float k) : k_(k) {}

  float k() const { return k_; }
  Eigen::Matrix3f matrix() const { return Eigen::Matrix3f::Identity(); }

  Vec3 apply(Vec3 p) const { return p; }
  Vec3 applyInv(Vec3 p) const { return p; }
  SymmetricMatrix applyInv(const SymmetricMatrix& I) const { return I; }

 private:
  float k_;
};

}  // namespace kinetra::Spatial
