#pragma once

#include <kinetra/spatial/Motion.hpp>
#include <kinetra/spatial/Vec3.hpp>

namespace kinetra::Spatial {

/// A spatial force in one frame: the couple about the frame's origin, then the linear force (N m, N).
/// Featherstone 2008, section 2.3.
class Force {
 public:
  /// A force at work, its parts in registers: what operations take and give. Either form turns into the other.
  class Lanes {
   public:
    Lanes(Vec3 couple, Vec3 force) : couple_(couple), force_(force) {}
    static Lanes load(const float* f) { return {Vec3::load(f), Vec3::load(f + 3)}; }
    void store(float* f) const { store6(couple_, force_, f); }
    Vec3 couple() const { return couple_; }
    Vec3 force() const { return force_; }
    operator Eigen::Matrix<float, 6, 1>() const { return Force(*this); }

   private:
    Vec3 couple_;
    Vec3 force_;
  };

  /// Left unset.
  Force() = default;
  Force(Lanes f) { *this = f; }
  Force(Vec3 couple, Vec3 force) : Force(Lanes(couple, force)) {}
  /// From and to a column of six, couple first.
  explicit Force(const Eigen::Matrix<float, 6, 1>& f) : f_(f) {}
  operator Eigen::Matrix<float, 6, 1>() const { return f_; }

  Force& operator=(Lanes f) {
    f.store(f_.data());
    return *this;
  }
  operator Lanes() const { return Lanes::load(f_.data()); }

  static Force zero() { return {Vec3(0.0F, 0.0F, 0.0F), Vec3(0.0F, 0.0F, 0.0F)}; }

  auto couple() const { return f_.head<3>(); }
  auto force() const { return f_.tail<3>(); }
  auto couple() { return f_.head<3>(); }
  auto force() { return f_.tail<3>(); }

 private:
  Eigen::Matrix<float, 6, 1> f_;
};
static_assert(sizeof(Force) == 6 * sizeof(float), "a Force is six contiguous floats");

inline Force::Lanes operator+(Force::Lanes a, Force::Lanes b) {
  return {a.couple() + b.couple(), a.force() + b.force()};
}
inline Force::Lanes operator-(Force::Lanes a, Force::Lanes b) {
  return {a.couple() - b.couple(), a.force() - b.force()};
}

/// A 6 x n matrix at work, whose columns are forces.
template <int n>
struct ForceMatrix {
  Force::Lanes columns[n];

  void store(Eigen::Matrix<float, 6, n>& F) const {
    for (int k = 0; k < n; ++k) {
      columns[k].store(&F(0, k));
    }
  }
  operator Eigen::Matrix<float, 6, n>() const {
    Eigen::Matrix<float, 6, n> F;
    store(F);
    return F;
  }
};

/// Force cross product v x* f: the rate of change of f when it is carried along with velocity v, both in one frame.
/// (w, v0) x* (n, f0) = (w x n + v0 x f0, w x f0). Featherstone 2008, section 2.9.
inline Force::Lanes crf(Motion::Lanes v, Force::Lanes f) {
  return {cross(v.angular(), f.couple()) + cross(v.linear(), f.force()), cross(v.angular(), f.force())};
}

}  // namespace kinetra::Spatial
