#pragma once

#include <type_traits>

#include <kinetra/spatial/Force.hpp>
#include <kinetra/spatial/Inertia.hpp>
#include <kinetra/spatial/Motion.hpp>
#include <kinetra/spatial/rotation_products.hpp>

namespace kinetra::Spatial {

/// Spatial (Plücker) transform X = (E, r) from an old frame to a new one. A transform named aXb maps frame b (old) to
/// frame a (new), so that in a product neighbouring letters are equal: aXc = aXb * bXc.
///
/// As a 6 x 6 matrix it acts on motions as [[E, 0], [-E r x, E]] and on forces as [[E, -E r x], [0, E]]; a point p goes
/// to E (p - r). What the kind of the rotation saves is decided in the rotation kinds; here each formula stands once.
/// Featherstone 2008, section 2.8 and appendix A.3. E must be orthonormal; that is not checked.
template <typename Rotation>
struct TransformT {
  Rotation E;                   ///< turns old coordinates into new ones
  typename Rotation::Vector r;  ///< origin of the new frame in old coordinates (m)

  /// The rotation as its kind constructs it (zero, not the identity); r is left unset.
  TransformT() = default;
  TransformT(const Rotation& E_, Vec3 r_) : E(E_), r(r_) {}

  /// A general transform at work, with its rotation in registers, becomes one at rest, and the other way round.
  template <typename OtherForm, typename = std::enable_if_t<std::is_convertible_v<OtherForm, Rotation>>>
  TransformT(const TransformT<OtherForm>& X) : E(X.E), r(X.r) {}
  template <typename AtWork>
  TransformT& operator=(const TransformT<AtWork>& X) {
    E = X.E;
    X.r.store(r.data());
    return *this;
  }
  /// A general transform that was written only just now, at work.
  TransformT<Matrix3> fresh() const { return {E.fresh(), r}; }

  /// Carries a motion to the new frame: (w, v) -> (E w, E (v - r x w)).
  Motion::Lanes apply(Motion::Lanes m) const {
    const Vec3 w = m.angular();
    return {E.apply(w), E.apply(m.linear() - cross(r, w))};
  }

  /// Carries a force to the new frame: (n, f) -> (E (n - r x f), E f).
  Force::Lanes apply(Force::Lanes f) const {
    const Vec3 f0 = f.force();
    return {E.apply(f.couple() - cross(r, f0)), E.apply(f0)};
  }

  /// Carries a motion back to the old frame: (w, v) -> (E'w, E'v + r x E'w).
  Motion::Lanes applyInv(Motion::Lanes m) const {
    const Vec3 w = E.applyInv(m.angular());
    return {w, E.applyInv(m.linear()) + cross(r, w)};
  }

  /// Carries a force back to the old frame, about the old origin: (n, f) -> (E'n + r x E'f, E'f).
  Force::Lanes applyInv(Force::Lanes f) const {
    const Vec3 f0 = E.applyInv(f.force());
    return {E.applyInv(f.couple()) + cross(r, f0), f0};
  }

  /// The same for every column of a 6 x n matrix of forces.
  template <int n>
  Eigen::Matrix<float, 6, n> applyInv(const Eigen::Matrix<float, 6, n>& F) const {
    Eigen::Matrix<float, 6, n> F_old;
    for (int k = 0; k < n; ++k) {
      applyInv(Force::Lanes::load(&F(0, k))).store(&F_old(0, k));
    }
    return F_old;
  }

  /// The same body's inertia in the old frame, about the old origin. With g = E'h:
  /// (m, h, I) -> (m, g + m r, E'I E - r x (g x) - ((g + m r) x)(r x)). Featherstone 2008, section 2.13.
  Inertia::Lanes applyInv(const Inertia::Lanes& inertia) const {
    const Vec3 r_old = r;
    const Vec3 g = E.applyInv(inertia.h());
    const Vec3 h = g + r_old * inertia.m();
    const SymmetricMatrix I = E.applyInv(inertia.I);
    // Entry by entry, -a x (b x) = (a.b) 1 - b a', so that the diagonal takes the products of the two other axes.
    const Vec3 p = r_old * g + h * r_old;
    const Vec3 q = g.yzx() * r_old.zxy() + r_old.yzx() * h.zxy();
    return {append<3>(h, inertia.h_m), I + SymmetricMatrix(p.yzx() + p.zxy(), -q)};
  }

  /// Carries a point to the new frame: E (p - r).
  Vec3 applyToPoint(Vec3 p) const { return E.apply(p - r); }

  /// Carries a point back to the old frame: E'p + r.
  Vec3 applyInvToPoint(Vec3 p) const { return E.applyInv(p) + r; }
};
static_assert(sizeof(TransformT<RotationMatrix>) == 12 * sizeof(float), "E column by column, then r");
static_assert(sizeof(TransformT<RotationMatrixAboutZ>) == 5 * sizeof(float), "c, s, then r");
static_assert(sizeof(TransformT<RotationMatrixIdentity>) == 4 * sizeof(float), "k, then r");

/// Composition, X0 first: (E1 E0, r0 + E0'r1). The kind of the result is that of the rotations' product; a general one
/// is given at work and becomes a TransformT<RotationMatrix> where it is stored.
template <typename Rotation1, typename Rotation0>
[[gnu::always_inline]] inline auto operator*(const TransformT<Rotation1>& X1, const TransformT<Rotation0>& X0) {
  return TransformT<std::decay_t<decltype(X1.E * X0.E)>>(X1.E * X0.E, X0.applyInvToPoint(X1.r));
}

}  // namespace kinetra::Spatial
