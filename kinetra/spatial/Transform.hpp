#pragma once

#include <utility>

#include <kinetra/spatial/Force.hpp>
#include <kinetra/spatial/Inertia.hpp>
#include <kinetra/spatial/Motion.hpp>
#include <kinetra/spatial/rotation_products.hpp>

namespace kinetra::Spatial {

// Spatial (Plücker) transform X = (E, r) from an old frame to a new one. A transform named aXb maps frame b (old) to
// frame a (new), so that in a product neighbouring letters are equal: aXc = aXb * bXc.
//
// As a 6 x 6 matrix it acts on motions as [[E, 0], [-E r x, E]] and on forces as [[E, -E r x], [0, E]]; a point p goes
// to E (p - r). Each kind of rotation has its own shortcuts; the formulas here are the same for all kinds.
// Featherstone 2008, section 2.8 and appendix A.3. E must be orthonormal; that is not checked.

namespace simd {

template <typename Rotation>
struct TransformT {
  static constexpr int size = Rotation::size + Vector3::size;

  Rotation E;
  Vector3 r;

  static TransformT load(const float* p) { return {Rotation::load(p), Vector3::load(p + Rotation::size)}; }
  static TransformT loadJustStored(const float* p) {
    return {Rotation::loadJustStored(p), Vector3::load(p + Rotation::size)};
  }
  void store(float* p) const {
    E.store(p);
    r.store(p + Rotation::size);
  }

  /// Carries a motion to the new frame: (w, v) -> (E w, E (v - r x w)).
  Motion apply(Motion m) const { return {E.apply(m.angular), E.apply(m.linear - cross(r, m.angular))}; }

  /// Carries a force to the new frame: (n, f) -> (E (n - r x f), E f).
  Force apply(Force f) const { return {E.apply(f.couple - cross(r, f.force)), E.apply(f.force)}; }

  /// Carries a motion back to the old frame: (w, v) -> (E'w, E'v + r x E'w).
  Motion applyInv(Motion m) const {
    const Vector3 w = E.applyInv(m.angular);
    return {w, E.applyInv(m.linear) + cross(r, w)};
  }

  /// Carries a force back to the old frame, about the old origin: (n, f) -> (E'n + r x E'f, E'f).
  Force applyInv(Force f) const {
    const Vector3 f0 = E.applyInv(f.force);
    return {E.applyInv(f.couple) + cross(r, f0), f0};
  }

  /// X'I X: the inertia of the same body in the old frame, about the old origin. With g = E'h:
  /// (m, h, I) -> (m, g + m r, E'I E - r x (g x) - ((g + m r) x)(r x)). Featherstone 2008, section 2.13.
  Inertia applyInv(const Inertia& inertia) const {
    const Vector3 g = E.applyInv(inertia.h());
    const Vector3 h = g + r * inertia.m();
    // -a x (b x) = (a.b) 1 - b a'. With p the products r_i g_i + h_i r_i, the diagonal is (p_y + p_z, p_z + p_x,
    // p_x + p_y) and the rest is -(g_y r_z + r_y h_z) for yz, and so on for xz and xy.
    const Vector3 p = r * g + h * r;
    const Vector3 q = g.yzx() * r.zxy() + r.yzx() * h.zxy();
    const Float4 h_m = append<3>(h, inertia.h_m);  // h x y z | m
    return {h_m, E.applyInv(inertia.I) + SymmetricMatrix(p.yzx() + p.zxy(), -q)};
  }

  /// Carries a point to the new frame, E (p - r), and back to the old one, E'p + r.
  Vector3 applyToPoint(Vector3 p) const { return E.apply(p - r); }
  Vector3 applyInvToPoint(Vector3 p) const { return E.applyInv(p) + r; }
};

/// Composition, X0 first: (E1 E0, r0 + E0'r1). The kind of the result is that of the rotations' product.
template <typename Rotation1, typename Rotation0>
[[gnu::always_inline]] inline auto operator*(const TransformT<Rotation1>& X1, const TransformT<Rotation0>& X0) {
  return TransformT<decltype(X1.E * X0.E)>{X1.E * X0.E, X0.applyInvToPoint(X1.r)};
}

}  // namespace simd

/// The stored transform: the floats of E, then r.
template <typename Rotation>
struct TransformT {
  using InRegisters = simd::TransformT<typename Rotation::InRegisters>;

  Rotation E;         ///< turns old coordinates into new ones
  Eigen::Vector3f r;  ///< origin of the new frame in old coordinates (m)

  /// The rotation as its kind constructs it (a stored matrix: zero, not the identity); r is left unset.
  TransformT() = default;
  TransformT(const Rotation& E_, const Eigen::Vector3f& r_) : E(E_), r(r_) {}
  explicit TransformT(const InRegisters& X) : E(X.E), r(X.r) {}

  // The operations above on stored values.
  Motion apply(const Motion& m) const { return Motion(load(*this).apply(load(m))); }
  Force apply(const Force& f) const { return Force(load(*this).apply(load(f))); }
  Motion applyInv(const Motion& m) const { return Motion(load(*this).applyInv(load(m))); }
  Force applyInv(const Force& f) const { return Force(load(*this).applyInv(load(f))); }
  Inertia applyInv(const Inertia& inertia) const { return Inertia(load(*this).applyInv(load(inertia))); }
  Eigen::Vector3f applyToPoint(const Eigen::Vector3f& p) const { return load(*this).applyToPoint(p); }
  Eigen::Vector3f applyInvToPoint(const Eigen::Vector3f& p) const { return load(*this).applyInvToPoint(p); }

  /// Every column of a 6 x n matrix of forces, n fixed or dynamic. F = X.applyInv(F) is safe, because the result is a
  /// copy.
  template <typename Derived>
  Eigen::Matrix<float, 6, Derived::ColsAtCompileTime> applyInv(const Eigen::MatrixBase<Derived>& F) const {
    const InRegisters X = load(*this);
    Eigen::Matrix<float, 6, Derived::ColsAtCompileTime> F_old = F;
    for (Eigen::Index k = 0; k < F_old.cols(); ++k) {
      float* column = F_old.col(k).data();
      X.applyInv(simd::Force::load(column)).store(column);
    }
    return F_old;
  }
};

template <typename Rotation1, typename Rotation0>
auto operator*(const TransformT<Rotation1>& X1, const TransformT<Rotation0>& X0) {
  return TransformT<decltype(X1.E * X0.E)>(load(X1) * load(X0));
}

}  // namespace kinetra::Spatial
