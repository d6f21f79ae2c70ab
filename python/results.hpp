#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include <python/arguments.hpp>

// Results of operations, as numbers in memory.

namespace lumo::python {

/// A pose as Python sees it, by rows. The last row is 0, 0, 0, 1.
struct PoseMatrix {
  std::array<float, 16> rows = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

  explicit PoseMatrix(const OX::Math::Transform& pose) { *this = pose; }
  PoseMatrix& operator=(const OX::Math::Transform& pose) {
    std::memcpy(rows.data(), &pose, sizeof pose);
    return *this;
  }
};

/// Where the numbers of a result are; the strides are numbers too.
template <typename Number_>
struct Block {
  using Number = Number_;
  const Number* first;
  Shape shape;
  py::ssize_t rowStride, columnStride;

  /// Copies the numbers by rows.
  void copyTo(Number* to) const {
    for (py::ssize_t r = 0; r < shape.rows; ++r) {
      for (py::ssize_t c = 0; c < shape.columns; ++c) *to++ = first[r * rowStride + c * columnStride];
    }
  }
};

template <typename T>
inline constexpr bool isText = std::is_same_v<T, std::string>;

/// The numbers of a result, by its type in the interface.
template <typename T>
auto blockOf(const T& result) {
  using std::int64_t;
  const auto row = [](auto* first, std::size_t size) {
    return Block<std::decay_t<decltype(*first)>>{first, {1, 1, static_cast<py::ssize_t>(size)}, 0, 1};
  };
  if constexpr (std::is_same_v<T, PoseMatrix>) {
    return Block<float>{result.rows.data(), {2, 4, 4}, 4, 1};
  } else if constexpr (std::is_same_v<T, float>) {
    return Block<float>{&result, {0, 1, 1}, 0, 0};
  } else if constexpr (std::is_same_v<T, std::size_t>) {
    return Block<int64_t>{reinterpret_cast<const int64_t*>(&result), {0, 1, 1}, 0, 0};
  } else if constexpr (std::is_same_v<T, FloatView>) {
    return row(result.begin(), result.size());
  } else if constexpr (std::is_same_v<T, std::vector<int64_t>>) {
    return row(result.data(), result.size());
  } else if constexpr (std::is_base_of_v<Eigen::MatrixBase<T>, T>) {
    return Block<float>{result.data(), {2, result.rows(), result.cols()}, 1, result.rows()};
  } else {  // a position or a velocity
    return row(reinterpret_cast<const float*>(&result), sizeof(T) / sizeof(float));
  }
}

}  // namespace lumo::python
