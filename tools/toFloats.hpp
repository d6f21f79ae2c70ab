#pragma once

#include <array>
#include <cstring>
#include <type_traits>

namespace lumo {

/// The floats of a host math value in their documented order, whatever the library calls its members.
template <class Value>
std::array<float, sizeof(Value) / sizeof(float)> toFloats(const Value& value) {
  static_assert(std::is_trivially_copyable_v<Value> && sizeof(Value) % sizeof(float) == 0);
  std::array<float, sizeof(Value) / sizeof(float)> values;
  std::memcpy(values.data(), &value, sizeof(Value));
  return values;
}

}  // namespace lumo
