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
  explicit Force(const Eigen::Matrix<float, 6, 1>& f) : Force(Lanes::load(f.data())) {}
  operator Eigen::Matrix<float, 6, 1>() const { return (Eigen::Matrix<float, 6, 1>() << couple_, force_).finished(); }

  Force& operator=(Lanes f) {
    f.store(reinterpret_cast<float*>(this));
    return *this;
  }
  operator Lanes() const { return {couple_, force_}; }

  static Force zero() { return {Vec3(0.0F, 0.0F, 0.0F), Vec3(0.0F, 0.0F, 0.0F)}; }

  const Eigen::Vector3f& couple() const { return couple_; }
  const Eigen::Vector3f& force() const { return force_; }
  Eigen::Vector3f& couple() { return couple_; }
  Eigen::Vector3f& force() { return force_; }

 private:
  Eigen::Vector3f couple_;
  Eigen::Vector3f force_;
};
static_assert(sizeof(Force) == 6 * sizeof(float), "a Force is six contiguous floats");

inline Force::Lanes operator+(Force::Lanes a, Force::Lanes b) {
  return {a.couple() + b.couple(), a.force() + b.force()};
}
inline Force::Lanes operator-(Force::Lanes a, Force::Lanes b) {
  return {a.couple() - b.couple(), a.force() - b.force()};
}

/// Force cross product v x* f: the rate of change of f when it is carried along with velocity v, both in one frame.
/// (w, v0) x* (n, f0) = (w x n + v0 x f0, w x f0). Featherstone 2008, section 2.9.
inline Force::Lanes crf(Motion::Lanes v, Force::Lanes f) {
  return {cross(v.angular(), f.couple()) + cross(v.linear(), f.force()), cross(v.angular(), f.force())};
}

}  // namespace kinetra::Spatial
