#pragma once

#include <string>

namespace lumo::inspect {

/// Returns a text with the characters escaped that have a meaning in SVG.
inline std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return result;
}

}  // namespace lumo::inspect
