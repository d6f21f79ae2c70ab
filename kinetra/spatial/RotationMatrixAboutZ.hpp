#pragma once

#include <math.h>  // sincos

#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

/// Sine and cosine of an angle (rad): taken together in double precision, each rounded once to single.
struct SinCos {
  float s;
  float c;

  explicit SinCos(float angle) {
    double sine;
    double cosine;
    ::sincos(static_cast<double>(angle), &sine, &cosine);
    s = static_cast<float>(sine);
    c = static_cast<float>(cosine);
  }
};

/// A turn of the new frame by an angle about the common z axis: E = [[c, s, 0], [-s, c, 0], [0, 0, 1]], two floats.
class RotationMatrixAboutZ {
 public:
  using Vector = Eigen::Vector3f;       ///< of a translation that stands beside it
  using AtRest = RotationMatrixAboutZ;  ///< two floats are at rest and at work alike

  /// c = s = 0, which is not the identity.
  RotationMatrixAboutZ() = default;
  RotationMatrixAboutZ(float c, float s) : c_(c), s_(s) {}
  explicit RotationMatrixAboutZ(float angle) : RotationMatrixAboutZ(SinCos(angle)) {}

  float c() const { return c_; }
  float s() const { return s_; }
  Eigen::Matrix3f matrix() const {
    Eigen::Matrix3f E;
    E << c_, s_, 0.0F, -s_, c_, 0.0F, 0.0F, 0.0F, 1.0F;
    return E;
  }

  RotationMatrixAboutZ transpose() const { return {c_, -s_}; }

  /// E p = (c p_x + s p_y, -s p_x + c p_y, p_z)
  Vec3 apply(Vec3 p) const {
    const Vec3 turned = p * c_ + p.yxz() * (Vec3(1.0F, -1.0F, 0.0F) * s_);
    return Vec3(shuffle<0, 1, 6, 7>(turned.lanes(), p.lanes()));
  }
  /// E'p
  Vec3 applyInv(Vec3 p) const { return transpose().apply(p); }

  /// E'I E for a symmetric I, from the double angle's 1 - 2 s^2 and 2 c s. Featherstone 2008, appendix A.4.
  SymmetricMatrix applyInv(const SymmetricMatrix& I) const {
    const Vec3 diagonal = I.diagonal();
    const Vec3 off = I.off();
    const float xy = off[2];
    const float difference = diagonal[0] - diagonal[1];
    const float ss = s_ * s_;
    const float cs = c_ * s_;
    const float shift = ss * difference + 2.0F * cs * xy;
    const Vec3 zxzy = applyInv(Vec3(off[1], off[0], 0.0F));
    return {Vec3(diagonal[0] - shift, diagonal[1] + shift, diagonal[2]),
            Vec3(zxzy[1], zxzy[0], (1.0F - 2.0F * ss) * xy + cs * difference)};
  }

 private:
  explicit RotationMatrixAboutZ(SinCos angle) : RotationMatrixAboutZ(angle.c, angle.s) {}

  float c_ = 0.0F;
  float s_ = 0.0F;
};

}  // namespace kinetra::Spatial
