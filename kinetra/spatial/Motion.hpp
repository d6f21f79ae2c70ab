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
  explicit Motion(const Eigen::Matrix<float, 6, 1>& v) : v_(v) {}
  operator Eigen::Matrix<float, 6, 1>() const { return v_; }

  Motion& operator=(Lanes m) {
    store6(m.angular(), m.linear(), v_.data());
    return *this;
  }
  operator Lanes() const { return {Vec3::load(v_.data()), Vec3::load(v_.data() + 3)}; }

  static Motion zero() { return {Vec3(0.0F, 0.0F, 0.0F), Vec3(0.0F, 0.0F, 0.0F)}; }

  auto angular() const { return v_.head<3>(); }
  auto linear() const { return v_.tail<3>(); }
  auto angular() { return v_.head<3>(); }
  auto linear() { return v_.tail<3>(); }

 private:
  Eigen::Matrix<float, 6, 1> v_;
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
