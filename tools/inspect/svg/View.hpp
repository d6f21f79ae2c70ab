#pragma once

#include <string>
#include <vector>

#include <Eigen/Geometry>

#include <tools/inspect/Report.hpp>
#include <tools/limbs.hpp>

namespace lumo::inspect {

// The colours of the page.
inline constexpr const char *ink = "#2b303b", *faint = "#6f7885", *accent = "#c2203a";

/// The text with the characters escaped that have a meaning in SVG.
std::string escaped(const std::string& text);

/// A parallel projection of the robot onto the page.
class View {
 public:
  /// `right` and `up` are the directions of the world that point to the right and up on the page. `masses` tells
  /// whether the extent contains the balls of the masses.
  View(const Report& robot, const Eigen::Vector3d& right, const Eigen::Vector3d& up, bool masses);

  /// The rectangle that the robot takes in the plane of the projection (m).
  const Eigen::AlignedBox2d& extent() const { return extent_; }

  /// Puts the view on the page: the middle of its extent, the world's origin, and the units of the page per metre.
  void place(double centre, double originY, double scale);

  /// Where the centre of mass is on the page.
  Eigen::Vector2d com() const { return page(Eigen::Vector3f(robot_.com.data()).cast<double>()); }

  /// Draws the masses, and the names of the bodies between the heights `top` and `bottom`. The centre of mass has a
  /// plumb line down to the ground.
  std::string drawMasses(double top, double bottom, double groundY) const;

  /// Draws the axes of the joints, and their names between the heights `top` and `bottom`.
  std::string drawAxes(double top, double bottom) const;

 private:
  Eigen::Vector3d origin(std::size_t b) const { return robot_.bodies[b].pose.col(3).cast<double>(); }
  Eigen::Vector3d com(std::size_t b) const { return Eigen::Vector3f(robot_.bodies[b].com.data()).cast<double>(); }
  Eigen::Vector2d plane(const Eigen::Vector3d& p) const { return {p.dot(right_), p.dot(up_)}; }
  Eigen::Vector2d page(const Eigen::Vector3d& p) const {
    return middle_ + scale_ * Eigen::Vector2d(1, -1).cwiseProduct(plane(p));
  }

  double middle() const { return middle_.x() + scale_ * extent_.center().x(); }

  std::string drawTorso() const;
  std::string drawLinks(double opacity) const;

  const Report robot_;
  std::vector<const char*> colours_;  ///< of the bodies
  std::vector<Link> links_;           ///< from the farthest to the nearest
  Eigen::Vector3d right_, up_;
  Eigen::AlignedBox2d extent_;
  Eigen::Vector2d middle_ = Eigen::Vector2d::Zero();  ///< the origin of the world on the page
  double scale_ = 1;
};

}  // namespace lumo::inspect
