#pragma once

/// A stand-in for the host's 3D math library. It contains only what the plug-in needs. All types are trivially copyable
/// and hold their floats in the order shown, in single precision and SI units.
namespace OX::Math {

/// Rigid transform of a point p to R p + t. The rows are those of the matrix [R t]. The default is the identity.
struct Transform {
  float m[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};
};

/// Point in space (m).
struct Position3D {
  Position3D() = default;
  Position3D(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}

  float x = 0, y = 0, z = 0;
};

/// Translation (m), then the angles about x, y, z (rad) of the rotation R = Rz Ry Rx.
struct Position6D {
  Position6D() = default;
  Position6D(float x_, float y_, float z_, float rx_, float ry_, float rz_)
      : x(x_), y(y_), z(z_), rx(rx_), ry(ry_), rz(rz_) {}

  float x = 0, y = 0, z = 0;
  float rx = 0, ry = 0, rz = 0;
};

/// Linear velocity (m/s), then angular velocity (rad/s). Also used for accelerations (m/s^2, rad/s^2).
struct Velocity6D {
  Velocity6D() = default;
  Velocity6D(float vx_, float vy_, float vz_, float wx_, float wy_, float wz_)
      : vx(vx_), vy(vy_), vz(vz_), wx(wx_), wy(wy_), wz(wz_) {}

  float vx = 0, vy = 0, vz = 0;
  float wx = 0, wy = 0, wz = 0;
};

/// Returns the translation and the angles of H. Roll and yaw are in [-pi, pi] and pitch is in [-pi/2, pi/2], with these
/// bounds rounded to float, which makes them slightly larger than pi and pi/2. At gimbal lock, where pitch is pi/2 or
/// -pi/2, many pairs of roll and yaw describe the rotation, and one of them is returned. R must be orthonormal; this is
/// not checked.
Position6D position6DFromTransform(const Transform& H);

/// Returns the transform with translation (x, y, z) and rotation Rz Ry Rx.
Transform transformFromPosition6D(const Position6D& p);

/// Returns R p + t.
Position3D operator*(const Transform& H, const Position3D& p);

}  // namespace OX::Math
