#pragma once

/// A stand-in for the host's 3D math library, with what the plug-in needs of it and nothing more. All values are
/// single precision in SI units, trivially copyable, and hold their floats in the order shown.
namespace OX::Math {

/// Rigid transform p -> R p + t, row by row: [R t]. The identity by default.
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

/// Linear velocity (m/s), then angular velocity (rad/s); for accelerations, per second once more.
struct Velocity6D {
  Velocity6D() = default;
  Velocity6D(float vx_, float vy_, float vz_, float wx_, float wy_, float wz_)
      : vx(vx_), vy(vy_), vz(vz_), wx(wx_), wy(wy_), wz(wz_) {}

  float vx = 0, vy = 0, vz = 0;
  float wx = 0, wy = 0, wz = 0;
};

/// The translation of H and angles, in [-pi, pi], that give its rotation back. At the gimbal lock (pitch of a right
/// angle) one of the many equivalent triples is returned. R must be orthonormal; not checked.
Position6D position6DFromTransform(const Transform& H);

/// The transform with translation (x, y, z) and rotation Rz Ry Rx.
Transform transformFromPosition6D(const Position6D& p);

/// R p + t.
Position3D operator*(const Transform& H, const Position3D& p);

}  // namespace OX::Math
