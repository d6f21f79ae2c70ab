#pragma once

#include <limits>
#include <string>

#include <Eigen/Core>

#include <tools/inspect/svg/Figure.hpp>

namespace lumo::inspect {

/// The rectangle that a figure takes in the plane of the drawing: across and up (m).
struct Extent {
  Eigen::Vector2d least = Eigen::Vector2d::Constant(std::numeric_limits<double>::infinity()), most = -least;

  void add(const Eigen::Vector2d& p, double radius = 0) {
    least = least.cwiseMin((p.array() - radius).matrix());
    most = most.cwiseMax((p.array() + radius).matrix());
  }
  Eigen::Vector2d size() const { return most - least; }
  Eigen::Vector2d centre() const { return (least + most) / 2; }
};

/// The position of a view on the page, in units of the page.
struct Place {
  double middle;   ///< the x coordinate of the middle of the view
  double groundY;  ///< the y coordinate of the height `ground`
  double baseY;    ///< the y coordinate of the lower end of the figure
  double scale;    ///< units of the page per metre
  double ground;   ///< m
};

/// A horizontal view of a figure, in which `right` points to the right. It shows the axes of the joints or the masses
/// of the bodies.
class View {
 public:
  View(const Figure& figure, const Eigen::Vector3d& right, bool axes);

  const Extent& extent() const { return extent_; }

  std::string draw(const char* title, const Place& place);

 private:
  Eigen::Vector2d plane(const Eigen::Vector3d& p) const { return {p.dot(right_), p.z()}; }
  Eigen::Vector2d page(const Eigen::Vector3d& p) const;

  void drawTorso();
  void drawMasses();
  void drawLink(const Link& link);
  void drawJoint(const Part& part);
  void drawAxis(const Eigen::Vector3d& from, const Eigen::Vector3d& axis, const char* colour, const std::string& name);
  void drawCom();
  void drawNames();

  void line(const Eigen::Vector2d& a, const Eigen::Vector2d& b, const char* colour, double width,
            const char* more = "");
  template <typename... Values>
  void print(const char* format, const Values&... values);

  const Figure& figure_;
  Eigen::Vector3d right_;
  Eigen::Vector3d towards_;  ///< the direction towards the viewer
  bool axes_;
  Extent extent_;

  // Used by draw only.
  std::string text_;
  Place place_{};
};

}  // namespace lumo::inspect
