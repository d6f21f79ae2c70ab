#pragma once

#include <array>
#include <cstring>
#include <type_traits>

#include <Eigen/Core>

#include <service/RigidBodySystem.hpp>

namespace lumo {

/// The floats of a host math value in their documented order, whatever the library calls its members.
template <class Value>
std::array<float, sizeof(Value) / sizeof(float)> toFloats(const Value& value) {
  static_assert(std::is_trivially_copyable_v<Value> && sizeof(Value) % sizeof(float) == 0);
  std::array<float, sizeof(Value) / sizeof(float)> values;
  std::memcpy(values.data(), &value, sizeof(Value));
  return values;
}

/// The same as a matrix: a pose as [R t], 3 x 4, anything else as a column.
inline Eigen::Matrix<float, 3, 4> toMatrix(const OX::Math::Transform& pose) {
  return Eigen::Matrix<float, 3, 4, Eigen::RowMajor>(toFloats(pose).data());
}
template <class Value>
Eigen::Matrix<float, sizeof(Value) / sizeof(float), 1> toMatrix(const Value& value) {
  return Eigen::Matrix<float, sizeof(Value) / sizeof(float), 1>(toFloats(value).data());
}
inline Eigen::VectorXf toMatrix(const FloatView& view) {
  return Eigen::VectorXf::Map(view.first, static_cast<Eigen::Index>(view.size()));
}

}  // namespace lumo
