#pragma once

#include <kinetra/spatial/Force.hpp>
#include <kinetra/spatial/Motion.hpp>
#include <kinetra/spatial/SymmetricMatrix.hpp>

namespace kinetra::Spatial {

/// Spatial inertia of a body, or of several bodies moving as one, in one frame. As a 6 x 6 matrix on motions it is
/// [[I, h x], [-h x, m 1]]. All ten values zero stand for a body left out. Featherstone 2008, section 2.13.
struct Inertia {
  float m = 0.0F;                ///< mass (kg)
  Eigen::Vector3f h;             ///< first moment m c, c the centre of mass (kg m)
  Eigen::Matrix<float, 6, 1> I;  ///< rotational inertia about the frame's origin: xx, xy, yy, xz, yz, zz (kg m^2)

  /// An inertia at work, in registers: what operations take and give. Either form turns into the other.
  struct Lanes {
    Float4 h_m;  ///< h, and m in lane 3
    SymmetricMatrix I;

    Vec3 h() const { return Vec3(h_m); }
    Vec3 m() const { return Vec3(shuffle<3, 3, 3, 3>(h_m)); }  ///< (m, m, m)
  };

  /// A massless point; h and I are left unset.
  Inertia() = default;
  Inertia(const Lanes& inertia) { *this = inertia; }
  Inertia(float m_, Vec3 h_, const Eigen::Matrix<float, 6, 1>& I_) : m(m_), I(I_) { h_.store(h.data()); }

  Inertia& operator=(const Lanes& inertia) {
    store4(shuffle<3, 0, 1, 2>(inertia.h_m), data());
    inertia.I.store(I.data());
    return *this;
  }
  operator Lanes() const { return {shuffle<1, 2, 3, 0>(load4(data())), SymmetricMatrix::load(I.data())}; }

  /// Nothing: a body left out.
  static Lanes zero() {
    const Vec3 zeros(0.0F, 0.0F, 0.0F);
    return {zeros.lanes(), SymmetricMatrix(zeros, zeros)};
  }

  /// Centre of mass h / m (m), by three divisions; not finite for a body without mass.
  Vec3 com() const {
    const Lanes inertia = *this;
    return inertia.h() / inertia.m();
  }

 private:
  /// All ten values, in order.
  float* data() { return reinterpret_cast<float*>(this); }
  const float* data() const { return reinterpret_cast<const float*>(this); }
};
static_assert(sizeof(Inertia) == 10 * sizeof(float), "an Inertia is ten contiguous floats");

inline Inertia::Lanes operator+(const Inertia::Lanes& a, const Inertia::Lanes& b) { return {a.h_m + b.h_m, a.I + b.I}; }

/// The force that gives a body of this inertia an acceleration a, or the momentum of its velocity:
/// I (w, v) = (I w + h x v, m v - h x w), in the inertia's frame.
inline Force::Lanes operator*(const Inertia::Lanes& inertia, Motion::Lanes a) {
  const Vec3 Iw = inertia.I.matrix().apply(a.angular());
  return {Iw + cross(inertia.h(), a.linear()), a.linear() * inertia.m() - cross(inertia.h(), a.angular())};
}

}  // namespace kinetra::Spatial
