#pragma once

namespace lumo::inspect {

// Sizes and colours of the page, in units of the page. Two views are side by side; each has a column of names on the
// left and on the right.
inline constexpr double pageWidth = 1120, viewWidth = pageWidth / 2, nameWidth = 132, margin = 24;
inline constexpr double top = 92, bottom = 84, figureHeight = 560, lineHeight = 15;
inline constexpr double figureWidth = viewWidth - 2 * (nameWidth + margin);

inline constexpr const char* ink = "#2b303b";
inline constexpr const char* faint = "#8d96a3";
inline constexpr const char* accent = "#c2203a";

}  // namespace lumo::inspect
