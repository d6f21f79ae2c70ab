#include <tools/inspect/svg/View.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include <Eigen/Geometry>
#include <fmt/format.h>

#include <tools/inspect/svg/Label.hpp>
#include <tools/inspect/svg/escaped.hpp>
#include <tools/inspect/svg/page.hpp>

namespace lumo::inspect {

using Eigen::Vector2d, Eigen::Vector3d;

namespace {

/// Returns the corners of the smallest convex polygon around the points, in order.
std::vector<Vector2d> hull(std::vector<Vector2d> points) {
  std::sort(points.begin(), points.end(),
            [](const Vector2d& a, const Vector2d& b) { return a.x() < b.x() || (a.x() == b.x() && a.y() < b.y()); });
  std::vector<Vector2d> corners;
  for (int side = 0; side < 2; ++side, std::reverse(points.begin(), points.end())) {
    const std::size_t first = corners.size();
    for (const Vector2d& p : points) {
      const auto turnsBack = [&](const Vector2d& a, const Vector2d& b) {
        return (b.x() - a.x()) * (p.y() - a.y()) <= (b.y() - a.y()) * (p.x() - a.x());
      };
      while (corners.size() >= first + 2 && turnsBack(corners[corners.size() - 2], corners.back())) {
        corners.pop_back();
      }
      corners.push_back(p);
    }
    corners.pop_back();  // this corner is the first of the other side
  }
  return corners.empty() ? points : corners;
}

}  // namespace

View::View(const Figure& figure, const Vector3d& right, bool axes)
    : figure_(figure), right_(right), towards_(right.cross(Vector3d::UnitZ())), axes_(axes) {
  for (const Part& part : figure.parts) {
    extent_.add(plane(part.origin), 0.02);
    extent_.add(plane(part.com), axes ? 0 : part.radius);
  }
  extent_.add(plane(figure.com), 0.02);
}

std::string View::draw(const char* title, const Place& place) {
  text_.clear();
  place_ = place;
  print("<g>\n<text class='view' x='{:.1f}' y='{:.1f}'>{}</text>\n", place.middle, top - 22, title);
  drawTorso();
  if (!axes_) drawMasses();
  // From the farthest to the nearest.
  const auto nearness = [this](const Part& part) { return (part.origin + part.com).dot(towards_); };
  std::vector<const Part*> order;
  for (const Part& part : figure_.parts) order.push_back(&part);
  std::stable_sort(order.begin(), order.end(),
                   [&](const Part* a, const Part* b) { return nearness(*a) < nearness(*b); });
  auto links = figure_.links;
  std::stable_sort(links.begin(), links.end(), [&](const Link& a, const Link& b) {
    return nearness(figure_.parts[a.end]) < nearness(figure_.parts[b.end]);
  });
  for (const Link& link : links) drawLink(link);
  for (const Part* part : order) drawJoint(*part);
  if (axes_) {
    for (const Part* part : order) drawAxis(part->origin, part->axis, part->colour, "");
    for (int i = 0; i < 3; ++i) drawAxis(figure_.parts[0].origin, figure_.root.col(i), ink, std::string(1, "xyz"[i]));
  }
  drawCom();
  drawNames();
  print("</g>\n");
  return text_;
}

template <typename... Values>
void View::print(const char* format, const Values&... values) {
  fmt::format_to(std::back_inserter(text_), fmt::runtime(format), values...);
}

Vector2d View::page(const Vector3d& p) const {
  const Vector2d q = plane(p);
  return {place_.middle + (q.x() - extent_.centre().x()) * place_.scale,
          place_.groundY - (q.y() - place_.ground) * place_.scale};
}

/// Draws the root's body as the polygon between the joints of its children.
void View::drawTorso() {
  std::string points;
  std::vector<Vector2d> corners;
  for (const Part& part : figure_.parts) {
    if (part.corner) corners.push_back(page(part.origin));
  }
  for (const Vector2d& p : hull(corners)) points += fmt::format("{:.1f},{:.1f} ", p.x(), p.y());
  print("<polygon points='{}' fill='#dfe3e9' stroke='#dfe3e9' stroke-width='26' stroke-linejoin='round'/>\n", points);
}

void View::drawMasses() {
  for (const Part& part : figure_.parts) {
    const Vector2d p = page(part.com);
    print("<circle cx='{:.1f}' cy='{:.1f}' r='{:.1f}' fill='{}' fill-opacity='0.16'/>\n", p.x(), p.y(),
          part.radius * place_.scale, part.colour);
  }
}

void View::line(const Vector2d& a, const Vector2d& b, const char* colour, double width, const char* more) {
  print("<line x1='{:.1f}' y1='{:.1f}' x2='{:.1f}' y2='{:.1f}' stroke='{}' stroke-width='{}' {}/>\n", a.x(), a.y(),
        b.x(), b.y(), colour, width, more);
}

void View::drawLink(const Link& link) {
  const Part &from = figure_.parts[link.body], &to = figure_.parts[link.end];
  line(page(from.origin), page(link.end == link.body ? to.com : to.origin), from.colour, 6,
       axes_ ? "stroke-linecap='round' stroke-opacity='0.3'" : "stroke-linecap='round'");
}

void View::drawJoint(const Part& part) {
  const Vector2d p = page(part.origin);
  print("<circle cx='{:.1f}' cy='{:.1f}' r='5' fill='white' stroke='{}' stroke-width='2.5'/>\n", p.x(), p.y(),
        part.colour);
}

/// Draws an axis as an arrow. If it points almost towards the viewer or away, draws a dot or a cross in a circle.
void View::drawAxis(const Vector3d& from, const Vector3d& axis, const char* colour, const std::string& name) {
  const double length = 52;
  const Vector2d a = page(from), way(axis.dot(right_), -axis.z());
  if (way.norm() > 0.3) {
    const Vector2d b = a + length * way, along = way.normalized(), across(-along.y(), along.x());
    const Vector2d left = b - 9 * along + 4 * across, right = b - 9 * along - 4 * across;
    line(a, b - 7 * along, colour, 2.2);
    print("<polygon points='{:.1f},{:.1f} {:.1f},{:.1f} {:.1f},{:.1f}' fill='{}'/>\n", b.x(), b.y(), left.x(), left.y(),
          right.x(), right.y(), colour);
    if (!name.empty()) {
      const Vector2d at = b + 10 * along;
      print("<text class='axis' x='{:.1f}' y='{:.1f}'>{}</text>\n", at.x(), at.y() + 4, name);
    }
  } else if (axis.norm() > 0.5 && name.empty()) {
    print("<circle cx='{:.1f}' cy='{:.1f}' r='9' fill='none' stroke='{}' stroke-width='2'/>\n", a.x(), a.y(), colour);
    if (axis.dot(towards_) > 0) {
      print("<circle cx='{:.1f}' cy='{:.1f}' r='2.5' fill='{}'/>\n", a.x(), a.y(), colour);
    } else {
      for (const double y : {-6.0, 6.0}) line(a - Vector2d(6, y), a + Vector2d(6, y), colour, 2);
    }
  }
}

/// Draws the centre of mass as a circle with two dark quarters, and the vertical line from there to the ground.
void View::drawCom() {
  const Vector2d p = page(figure_.com);
  const double r = 10;
  line({p.x(), p.y()}, {p.x(), place_.groundY}, accent, 1.5, "stroke-dasharray='5 4'");
  print("<circle cx='{:.1f}' cy='{:.1f}' r='{}' fill='white' stroke='{}' stroke-width='2'/>\n", p.x(), p.y(), r,
        accent);
  for (const double side : {-r, r}) {
    print("<path d='M{0:.1f} {1:.1f}v{2}a{3} {3} 0 0 1 {4} {4}z' fill='{5}'/>\n", p.x(), p.y(), side, r, -side, accent);
  }
  print("<path d='M{0:.1f} {1:.1f}l-6 -10h12z' fill='{2}'/>\n", p.x(), place_.groundY, accent);
  const char* format = figure_.com.cwiseAbs().maxCoeff() < 1e4 ? "x {:.3f}, y {:.3f} m" : "x {:.3g}, y {:.3g} m";
  print("<text class='plumb' x='{:.1f}' y='{:.1f}'>{}</text>\n", p.x(), place_.baseY + 26,
        fmt::format(fmt::runtime(format), figure_.com.x(), figure_.com.y()));
}

void View::drawNames() {
  std::vector<Label> labels;
  for (const Part& part : figure_.parts) {
    const Vector2d at = page(part.origin);
    const Label::Line name{axes_ ? part.name + part.about : part.name, part.colour};
    const auto same =
        std::find_if(labels.begin(), labels.end(), [&](const Label& label) { return (label.at - at).norm() < 4; });
    if (same != labels.end()) {
      same->lines.push_back(name);
    } else {
      labels.push_back({{name}, at});
    }
  }
  labels.push_back({{{"centre of mass", accent}}, page(figure_.com)});

  // The labels of the left half of the points go to the left column.
  std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) {
    return std::pair(std::round(a.at.x()), a.at.y()) < std::pair(std::round(b.at.x()), b.at.y());
  });
  const auto half = labels.begin() + static_cast<std::ptrdiff_t>(labels.size() / 2);
  std::vector<Label> columns[] = {{labels.begin(), half}, {half, labels.end()}};
  for (const double side : {-1.0, 1.0}) {
    std::vector<Label>& column = columns[side < 0 ? 0 : 1];
    arrange(column, top, place_.baseY + 10);
    const double x = place_.middle + side * (figureWidth / 2 + margin);
    for (const Label& label : column) {
      const Vector2d from(x - side * 4, label.y), way = (label.at - from).normalized();
      line(from, label.at - 8 * way, faint, 0.8);
      double y = label.y - static_cast<double>(label.lines.size() - 1) * lineHeight / 2 + 4;
      for (const auto& [name, colour] : label.lines) {
        print("<text class='name' x='{:.1f}' y='{:.1f}' fill='{}' text-anchor='{}'>{}</text>\n", x, y, colour,
              side < 0 ? "end" : "start", escaped(name));
        y += lineHeight;
      }
    }
  }
}

}  // namespace lumo::inspect
