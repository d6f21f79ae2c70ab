#pragma once

#include <type_traits>

#include <tools/toFloats.hpp>

namespace lumo::test {

/// Converts a matrix, a number or a value of the host's math library to double precision, which is exact.
template <class Value>
Eigen::MatrixXd toDoubles(const Value& value) {
  if constexpr (std::is_base_of_v<Eigen::EigenBase<Value>, Value>) {
    return value.matrix().template cast<double>();
  } else if constexpr (std::is_arithmetic_v<Value>) {
    return Eigen::MatrixXd::Constant(1, 1, static_cast<double>(value));
  } else {
    return toMatrix(value).template cast<double>();
  }
}

}  // namespace lumo::test
