#include <oxmath/oxmath.h>

#include <cmath>
#include <type_traits>

namespace OX::Math {

// If one of these types were not trivially copyable, it would be returned by value in another way.
static_assert(std::is_trivially_copyable_v<Transform> && std::is_standard_layout_v<Transform>);
static_assert(std::is_trivially_copyable_v<Position3D> && std::is_standard_layout_v<Position3D>);
static_assert(std::is_trivially_copyable_v<Position6D> && std::is_standard_layout_v<Position6D>);
static_assert(std::is_trivially_copyable_v<Velocity6D> && std::is_standard_layout_v<Velocity6D>);
static_assert(sizeof(Transform) == 48 && sizeof(Position3D) == 12);
static_assert(sizeof(Position6D) == 24 && sizeof(Velocity6D) == 24);

// The yaw is computed from column 0 of R, then roll and pitch from Rz' R = Ry Rx. At gimbal lock the yaw is arbitrary,
// but roll and pitch are computed for this yaw, so that the product Rz Ry Rx is still R.
Position6D position6DFromTransform(const Transform& H) {
  const auto R = [&H](int row, int column) { return static_cast<double>(H.m[row][column]); };

  const double yaw = std::atan2(R(1, 0), R(0, 0));
  const double s = std::sin(yaw), c = std::cos(yaw);
  const double pitch = std::atan2(-R(2, 0), c * R(0, 0) + s * R(1, 0));
  const double roll = std::atan2(s * R(0, 2) - c * R(1, 2), c * R(1, 1) - s * R(0, 1));

  return {
      H.m[0][3], H.m[1][3], H.m[2][3], static_cast<float>(roll), static_cast<float>(pitch), static_cast<float>(yaw)};
}

Transform transformFromPosition6D(const Position6D& p) {
  const double ax = static_cast<double>(p.rx), ay = static_cast<double>(p.ry), az = static_cast<double>(p.rz);
  const double sx = std::sin(ax), cx = std::cos(ax);
  const double sy = std::sin(ay), cy = std::cos(ay);
  const double sz = std::sin(az), cz = std::cos(az);
  const double R[3][3] = {{cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx},
                          {sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx},
                          {-sy, cy * sx, cy * cx}};
  const float t[3] = {p.x, p.y, p.z};

  Transform H;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) H.m[row][column] = static_cast<float>(R[row][column]);
    H.m[row][3] = t[row];
  }
  return H;
}

Position3D operator*(const Transform& H, const Position3D& p) {
  // The order of the sums is fixed, so that every build computes the same bits.
  const auto row = [&p](const float(&h)[4]) { return ((h[0] * p.x + h[1] * p.y) + h[2] * p.z) + h[3]; };
  return {row(H.m[0]), row(H.m[1]), row(H.m[2])};
}

}  // namespace OX::Math
