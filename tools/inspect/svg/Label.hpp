#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <tools/inspect/svg/page.hpp>

namespace lumo::inspect {

/// The names at one place, with a line from them to it.
struct Label {
  struct Line {
    std::string text;
    const char* colour;
  };
  std::vector<Line> lines;
  Eigen::Vector2d at;  ///< on the page
  double y = 0;        ///< of its middle

  double height() const { return static_cast<double>(lines.size()) * lineHeight + 5; }
};

/// Puts the labels of one column as near to the height of their places as they fit: those that would overlap form a
/// block around the mean of what they want.
void arrange(std::vector<Label>& column, double from, double to);

}  // namespace lumo::inspect
