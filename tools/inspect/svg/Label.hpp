#pragma once

#include <string>
#include <vector>

#include <Eigen/Core>

#include <tools/inspect/svg/page.hpp>

namespace lumo::inspect {

/// The names that belong to one point of the drawing. A line connects them with the point.
struct Label {
  struct Line {
    std::string text;
    const char* colour;
  };
  std::vector<Line> lines;
  Eigen::Vector2d at;  ///< the point on the page
  double y = 0;        ///< the height of the middle of the label on the page

  double height() const { return static_cast<double>(lines.size()) * lineHeight + 5; }
};

/// Sets the heights of the labels of one column. Each label is as near to the height of its point as possible. Labels
/// that would overlap form a block, whose height is the mean of the heights of their points.
void arrange(std::vector<Label>& column, double from, double to);

}  // namespace lumo::inspect
