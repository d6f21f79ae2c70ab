#pragma once

#include <type_traits>

#include <tools/toFloats.hpp>

namespace lumo::test {

template <class Derived>
std::true_type isMatrix(const Eigen::EigenBase<Derived>*);
std::false_type isMatrix(const void*);

/// Converts a matrix, a number or a value of the host's math library to double precision, which is exact.
template <class Value>
Eigen::MatrixXd toDoubles(const Value& value) {
  if constexpr (decltype(isMatrix(static_cast<const Value*>(nullptr)))::value) {
    return value.matrix().template cast<double>();
  } else if constexpr (std::is_arithmetic_v<Value>) {
    return Eigen::MatrixXd::Constant(1, 1, static_cast<double>(value));
  } else {
    return toMatrix(value).template cast<double>();
  }
}

}  // namespace lumo::test
