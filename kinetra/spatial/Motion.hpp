#pragma once

#include <kinetra/spatial/Vec3.hpp>

namespace kinetra::Spatial {

/// A spatial motion (velocity or acceleration) of a body in one frame: the angular part, then the linear part, that
/// of the point of the body now at the frame's origin (rad/s, m/s; rad/s^2, m/s^2). Featherstone 2008, section 2.2.
class Motion {
 public:
  /// A motion at work, its parts in registers: what operations take and give. Either form turns into the other.
  class Lanes {
   public:
    Lanes(Vec3 angular, Vec3 linear) : angular_(angular), linear_(linear) {}
    static Lanes load(const float* m) { return {Vec3::load(m), Vec3::load(m + 3)}; }
    void store(float* m) const { store6(angular_, linear_, m); }
    Vec3 angular() const { return angular_; }
    Vec3 linear() const { return linear_; }
    operator Eigen::Matrix<float, 6, 1>() const { return Motion(*this); }

   private:
    Vec3 angular_;
    Vec3 linear_;
  };

  /// Left unset.
  Motion() = default;
  Motion(Lanes m) { *this = m; }
  Motion(Vec3 angular, Vec3 linear) : Motion(Lanes(angular, linear)) {}
  /// From and to a column of six, angular first.
  explicit Motion(const Eigen::Matrix<float, 6, 1>& v) : Motion(Lanes::load(v.data())) {}
  operator Eigen::Matrix<float, 6, 1>() const { return (Eigen::Matrix<float, 6, 1>() << angular_, linear_).finished(); }

  Motion& operator=(Lanes m) {
    m.store(reinterpret_cast<float*>(this));
    return *this;
  }
  operator Lanes() const { return {angular_, linear_}; }

  static Motion zero() { return {Vec3(0.0F, 0.0F, 0.0F), Vec3(0.0F, 0.0F, 0.0F)}; }

  const Eigen::Vector3f& angular() const { return angular_; }
  const Eigen::Vector3f& linear() const { return linear_; }
  Eigen::Vector3f& angular() { return angular_; }
  Eigen::Vector3f& linear() { return linear_; }

 private:
  Eigen::Vector3f angular_;
  Eigen::Vector3f linear_;
};
static_assert(sizeof(Motion) == 6 * sizeof(float), "a Motion is six contiguous floats");

inline Motion::Lanes operator+(Motion::Lanes a, Motion::Lanes b) {
  return {a.angular() + b.angular(), a.linear() + b.linear()};
}
inline Motion::Lanes operator-(Motion::Lanes a, Motion::Lanes b) {
  return {a.angular() - b.angular(), a.linear() - b.linear()};
}
/// A column of six, such as a motion subspace times its coordinates, is added as a motion.
template <typename Derived>
Motion::Lanes operator+(Motion::Lanes a, const Eigen::MatrixBase<Derived>& b) {
  return a + Motion::Lanes(Motion(b));
}

/// Motion cross product v x m: the rate of change of m when it is carried along with velocity v, both in one frame.
/// (w, v0) x (mw, mv) = (w x mw, w x mv + v0 x mw). Featherstone 2008, section 2.9.
inline Motion::Lanes crm(Motion::Lanes v, Motion::Lanes m) {
  return {cross(v.angular(), m.angular()), cross(v.angular(), m.linear()) + cross(v.linear(), m.angular())};
}

}  // namespace kinetra::Spatial
