#pragma once

#include <kinetra/spatial/SinCos.hpp>
#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

namespace simd {

/// A rotation about z, its two floats each in a register.
struct RotationMatrixAboutZ {
  static constexpr int size = 2;

  float c;
  float s;

  static RotationMatrixAboutZ load(const float* p) { return {p[0], p[1]}; }
  void store(float* p) const {
    p[0] = c;
    p[1] = s;
  }

  RotationMatrixAboutZ transpose() const { return {c, -s}; }

  /// E p = (c p_x + s p_y, -s p_x + c p_y, p_z)
  Vector3 apply(Vector3 p) const {
    const Vector3 turned = p * c + p.yxz() * (Vector3(1.0F, -1.0F, 0.0F) * s);
    return Vector3(shuffle<0, 1, 6, 7>(turned.lanes(), p.lanes()));  // turned x y | p z
  }
  /// E'p
  Vector3 applyInv(Vector3 p) const { return transpose().apply(p); }

  /// E'I E, from the double angle's 1 - 2 s^2 and 2 c s. Featherstone 2008, appendix A.4.
  SymmetricMatrix applyInv(SymmetricMatrix I) const {
    const Vector3 diagonal = I.diagonal();
    const Vector3 rest = I.rest();  // yz xz xy
    const float xy = rest[2];
    const float difference = diagonal[0] - diagonal[1];
    const float ss = s * s;
    const float cs = c * s;
    const float shift = ss * difference + 2.0F * cs * xy;
    const Vector3 xz_yz = applyInv(Vector3(rest[1], rest[0], 0.0F));
    return {Vector3(diagonal[0] - shift, diagonal[1] + shift, diagonal[2]),
            Vector3(xz_yz[1], xz_yz[0], (1.0F - 2.0F * ss) * xy + cs * difference)};
  }
};

}  // namespace simd

/// A turn of the new frame by an angle about the common z axis: E = [[c, s, 0], [-s, c, 0], [0, 0, 1]], two floats.
class RotationMatrixAboutZ {
 public:
  using InRegisters = simd::RotationMatrixAboutZ;

  /// c = s = 0, which is not the identity.
  RotationMatrixAboutZ() = default;
  RotationMatrixAboutZ(float c, float s) : c_(c), s_(s) {}
  explicit RotationMatrixAboutZ(simd::RotationMatrixAboutZ E) : RotationMatrixAboutZ(E.c, E.s) {}
  explicit RotationMatrixAboutZ(SinCos angle) : RotationMatrixAboutZ(angle.c, angle.s) {}
  explicit RotationMatrixAboutZ(float angle) : RotationMatrixAboutZ(SinCos(angle)) {}

  float c() const { return c_; }
  float s() const { return s_; }
  Eigen::Matrix3f matrix() const {
    Eigen::Matrix3f E;
    E << c_, s_, 0.0F, -s_, c_, 0.0F, 0.0F, 0.0F, 1.0F;
    return E;
  }

  /// E p and E'p
  Eigen::Vector3f apply(const Eigen::Vector3f& p) const { return load(*this).apply(p); }
  Eigen::Vector3f applyInv(const Eigen::Vector3f& p) const { return load(*this).applyInv(p); }

 private:
  float c_ = 0.0F;
  float s_ = 0.0F;
};

}  // namespace kinetra::Spatial
