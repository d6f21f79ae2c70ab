#pragma once

#include <cmath>

namespace lumo {

/// Compares the bits of two floats, except that any two NaN are the same.
inline bool same(float a, float b) {
  return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

}  // namespace lumo
