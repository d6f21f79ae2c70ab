#pragma once

#include <string>

namespace lumo::inspect {

/// Text as it must be written in SVG.
inline std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return result;
}

}  // namespace lumo::inspect
