#pragma once

#include <kinetra/spatial/Force.hpp>
#include <kinetra/spatial/Motion.hpp>
#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

namespace simd {

struct Inertia {
  static constexpr int size = 10;

  Float4 h_m;  ///< h, and m in lane 3
  SymmetricMatrix I;

  static Inertia load(const float* p) {
    return {shuffle<1, 2, 3, 0>(load4(p)), SymmetricMatrix::load(p + 4)};  // m hx hy hz -> hx hy hz m
  }
  void store(float* p) const {
    store4(shuffle<3, 0, 1, 2>(h_m), p);  // hx hy hz m -> m hx hy hz
    I.store(p + 4);
  }

  static Inertia zero() {
    const Vector3 zeros(0.0F, 0.0F, 0.0F);
    return {Float4{}, SymmetricMatrix(zeros, zeros)};
  }

  Vector3 h() const { return Vector3(h_m); }
  Vector3 m() const { return Vector3(shuffle<3, 3, 3, 3>(h_m)); }  ///< (m, m, m)

  Vector3 com() const { return h() / m(); }
};

inline Inertia operator+(const Inertia& a, const Inertia& b) { return {a.h_m + b.h_m, a.I + b.I}; }

/// I (w, v) = (I w + h x v, m v - h x w)
inline Force operator*(const Inertia& inertia, Motion a) {
  return {inertia.I.apply(a.angular) + cross(inertia.h(), a.linear),
          a.linear * inertia.m() - cross(inertia.h(), a.angular)};
}

/// A body's first moment in another frame (kg m): m P, with P = E'c + r its centre of mass there. X = (E, r) takes that
/// frame to the body's.
template <typename Transform>
Vector3 firstMoment(const Inertia& inertia, const Transform& X) {
  return X.applyInvToPoint(inertia.com()) * inertia.m();
}

}  // namespace simd

/// Spatial inertia of a body, or of several bodies moving as one, in one frame. As a 6 x 6 matrix on motions it is
/// [[I, h x], [-h x, m 1]]. If all ten values are zero, the body is left out. Featherstone 2008, section 2.13.
struct Inertia {
  using InRegisters = simd::Inertia;

  float m = 0.0F;                ///< mass (kg)
  Eigen::Vector3f h;             ///< first moment m c, c the centre of mass (kg m)
  Eigen::Matrix<float, 6, 1> I;  ///< rotational inertia about the frame's origin: xx, xy, yy, xz, yz, zz (kg m^2)

  /// Without mass; h and I are left unset.
  Inertia() = default;
  explicit Inertia(const simd::Inertia& inertia) { store(inertia, *this); }
  Inertia(float m_, const Eigen::Vector3f& h_, const Eigen::Matrix<float, 6, 1>& I_) : m(m_), h(h_), I(I_) {}

  static Inertia zero() { return Inertia(simd::Inertia::zero()); }

  /// Centre of mass h / m (m), by three divisions; not finite for a body without mass.
  Eigen::Vector3f com() const { return load(*this).com(); }
};

inline Inertia operator+(const Inertia& a, const Inertia& b) { return Inertia(load(a) + load(b)); }

/// The force that accelerates a body of this inertia by a, or the momentum of its velocity, in the inertia's frame.
inline Force operator*(const Inertia& inertia, const Motion& a) { return Force(load(inertia) * load(a)); }

}  // namespace kinetra::Spatial
