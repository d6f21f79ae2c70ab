#include <tools/inspect/svg/View.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <fmt/format.h>

namespace lumo::inspect {

using Eigen::Vector2d, Eigen::Vector3d;

namespace {

constexpr double lineHeight = 15;

/// Names beside a view, and the point of the page to which they belong.
struct Label {
  std::vector<std::pair<std::string, const char*>> lines;  ///< the names with their colours
  Vector2d at;
  double y = 0;  ///< the height of the middle of the label

  double height() const { return static_cast<double>(lines.size()) * lineHeight + 5; }
};

/// Sets the heights of the labels of one column: near their points, in the same order, without overlap.
void arrange(std::vector<Label>& column, double top, double bottom) {
  std::sort(column.begin(), column.end(), [](const Label& a, const Label& b) { return a.at.y() < b.at.y(); });
  for (Label& label : column) label.y = label.at.y();
  for (int i = 0; i < 1000; ++i) {
    for (std::size_t k = 0; k + 1 < column.size(); ++k) {
      Label &a = column[k], &b = column[k + 1];
      const double overlap = (a.height() + b.height()) / 2 - (b.y - a.y);
      if (overlap > 0) a.y -= overlap / 2, b.y += overlap / 2;
    }
    for (Label& a : column) a.y = std::clamp(a.y, top + a.height() / 2, bottom - a.height() / 2);
  }
}

std::string line(const Vector2d& a, const Vector2d& b, const char* colour, double width, const char* more = "") {
  return fmt::format("<line x1='{:.1f}' y1='{:.1f}' x2='{:.1f}' y2='{:.1f}' stroke='{}' stroke-width='{}' {}/>\n",
                     a.x(), a.y(), b.x(), b.y(), colour, width, more);
}

std::string circle(const Vector2d& p, double radius, const char* fill, const char* more) {
  return fmt::format("<circle cx='{:.1f}' cy='{:.1f}' r='{:.1f}' fill='{}' {}/>\n", p.x(), p.y(), radius, fill, more);
}

std::string text(const Vector2d& p, const char* colour, const char* anchor, const std::string& words) {
  return fmt::format("<text class='name' x='{:.1f}' y='{:.1f}' style='fill: {}' text-anchor='{}'>{}</text>\n", p.x(),
                     p.y(), colour, anchor, escaped(words));
}

}  // namespace

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return result;
}

View::View(const Report& robot, const Vector3d& right, const Vector3d& up, bool masses)
    : robot_(robot), right_(right), up_(up) {
  std::vector<int> parents;
  for (const Report::Body& body : robot.bodies) parents.push_back(body.parent);
  for (const std::size_t limb : limbOfBodies(parents)) colours_.push_back(limbs[limb].colour);
  links_ = linksOf(parents);
  const Vector3d towards = right.cross(up);
  const auto nearness = [&](const Link& link) { return (origin(link.end) + com(link.end)).dot(towards); };
  std::stable_sort(links_.begin(), links_.end(),
                   [&](const Link& a, const Link& b) { return nearness(a) < nearness(b); });
  for (std::size_t b = 0; b < robot.bodies.size(); ++b) {
    const Vector2d radius = Vector2d::Constant(masses ? ballRadius(static_cast<double>(robot.bodies[b].mass)) : 0);
    extent_.extend(plane(origin(b)));
    extent_.extend(Eigen::AlignedBox2d(plane(com(b)) - radius, plane(com(b)) + radius));
  }
}

void View::place(double middle, double originY, double scale) {
  middle_ = {middle - scale * extent_.center().x(), originY};
  scale_ = scale;
}

/// The torso is the area between the joints of the root's children.
std::string View::drawTorso() const {
  std::vector<Vector2d> points;
  for (std::size_t b = 0; b < robot_.bodies.size(); ++b) {
    if (robot_.bodies[b].parent == 0) points.push_back(page(origin(b)));
  }
  Vector2d middle = Vector2d::Zero();
  for (const Vector2d& p : points) middle += p / static_cast<double>(points.size());
  const auto angle = [&](const Vector2d& p) { return std::atan2(p.y() - middle.y(), p.x() - middle.x()); };
  std::sort(points.begin(), points.end(), [&](const Vector2d& a, const Vector2d& b) { return angle(a) < angle(b); });
  std::string corners;
  for (const Vector2d& p : points) corners += fmt::format("{:.1f},{:.1f} ", p.x(), p.y());
  return fmt::format("<polygon points='{0}' fill='{1}' stroke='{1}' stroke-width='26' stroke-linejoin='round'/>\n",
                     corners, "#dfe3e9");
}

std::string View::drawLinks(double opacity) const {
  std::string svg = fmt::format("<g stroke-linecap='round' stroke-opacity='{}'>\n", opacity);
  for (const auto& [body, end] : links_) {
    svg += line(page(origin(body)), page(body == end ? com(body) : origin(end)), colours_[body], 6);
  }
  svg += "</g>\n";
  for (std::size_t b = 0; b < robot_.bodies.size(); ++b) {
    svg += circle(page(origin(b)), 5, "white", fmt::format("stroke='{}' stroke-width='2.5'", colours_[b]).c_str());
  }
  return svg;
}

std::string View::drawMasses(double top, double bottom, double groundY) const {
  std::string svg = drawTorso();
  for (std::size_t b = 0; b < robot_.bodies.size(); ++b) {
    const double radius = ballRadius(static_cast<double>(robot_.bodies[b].mass));
    svg += circle(page(com(b)), radius * scale_, colours_[b], "fill-opacity='0.16'");
  }
  svg += drawLinks(1);

  // The centre of mass is a circle with two dark quarters.
  const Vector2d p = com();
  svg += line(p, {p.x(), groundY}, accent, 1.5, "stroke-dasharray='5 4'");
  svg += circle(p, 10, "white", fmt::format("stroke='{}' stroke-width='2'", accent).c_str());
  svg += fmt::format("<path d='M{:.1f} {:.1f}v-10a10 10 0 0 1 10 10h-20a10 10 0 0 0 10 10z' fill='{}'/>\n", p.x(),
                     p.y(), accent);
  svg += fmt::format("<path d='M{0:.1f} {1:.1f}l-6 -10h12z' fill='{2}'/>\n", p.x(), groundY, accent);
  return svg + drawNames(top, bottom);
}

std::string View::drawNames(double top, double bottom) const {
  std::vector<Label> labels{{{{"centre of mass", accent}}, com()}};
  for (std::size_t b = 0; b < robot_.bodies.size(); ++b) {
    const Vector2d at = page(origin(b));
    const std::pair name(robot_.bodies[b].name, colours_[b]);
    const auto same =
        std::find_if(labels.begin() + 1, labels.end(), [&](const Label& label) { return (label.at - at).norm() < 4; });
    if (same != labels.end()) {
      same->lines.push_back(name);
    } else {
      labels.push_back({{name}, at});
    }
  }

  // The labels of the left half of the points go to the left column.
  std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) {
    return std::pair(std::round(a.at.x()), a.at.y()) < std::pair(std::round(b.at.x()), b.at.y());
  });
  const auto half = labels.begin() + static_cast<std::ptrdiff_t>(labels.size() / 2);
  std::string svg;
  for (const double side : {-1.0, 1.0}) {
    auto column = side < 0 ? std::vector(labels.begin(), half) : std::vector(half, labels.end());
    arrange(column, top, bottom);
    const double x = middle_.x() + scale_ * extent_.center().x() + side * 148;
    for (const Label& label : column) {
      const Vector2d from(x - side * 4, label.y), way = (label.at - from).normalized();
      svg += line(from, label.at - 8 * way, faint, 0.8);
      double y = label.y - static_cast<double>(label.lines.size() - 1) * lineHeight / 2 + 4;
      for (const auto& [name, colour] : label.lines) {
        svg += text({x, y}, colour, side < 0 ? "end" : "start", name);
        y += lineHeight;
      }
    }
  }
  return svg;
}

namespace {

/// An arrow on the page with the name of its axis.
struct Arrow {
  Vector2d from, to;
  std::string name;
  const char* colour;

  std::string draw() const {
    const Vector2d along = (to - from).normalized(), across(-along.y(), along.x()), back = to - 11 * along;
    const Vector2d left = back + 5 * across, right = back - 5 * across;
    return line(from, to - 8 * along, colour, 2.5) +
           fmt::format("<polygon points='{:.1f},{:.1f} {:.1f},{:.1f} {:.1f},{:.1f}' fill='{}'/>\n", to.x(), to.y(),
                       left.x(), left.y(), right.x(), right.y(), colour);
  }
};

/// Writes each name near the tip of its arrow, where it hides as little as possible of the arrows and the other names.
std::string nameArrows(const std::vector<Arrow>& arrows) {
  using Box = Eigen::AlignedBox2d;
  std::vector<Box> taken;
  for (const auto& [from, to, name, colour] : arrows) {
    for (int i = 0; i <= 10; ++i) {
      const Vector2d p = from + i * (to - from) / 10;
      taken.emplace_back(p - Vector2d(5, 5), p + Vector2d(5, 5));
    }
  }
  std::string svg;
  for (const Arrow& arrow : arrows) {
    const Vector2d size(6.7 * static_cast<double>(arrow.name.size()), 14), along = (arrow.to - arrow.from).normalized();
    Box best;
    double least = std::numeric_limits<double>::infinity();
    for (const double turn : {0.0, 0.4, -0.4, 0.8, -0.8, 1.2, -1.2, 1.6, -1.6, 2.0, -2.0}) {
      const Vector2d way = Eigen::Rotation2Dd(turn) * along;
      const Vector2d middle = arrow.to + 9 * way + way.cwiseProduct(size / 2);
      const Box box(middle - size / 2, middle + size / 2);
      double cost = std::abs(turn);
      for (const Box& other : taken)
        cost += std::max(0.0, box.intersection(other).isEmpty() ? 0 : box.intersection(other).volume());
      if (cost < least) least = cost, best = box;
    }
    taken.push_back(best);
    svg += text(best.center() + Vector2d(0, 4), arrow.colour, "middle", arrow.name);
  }
  return svg;
}

}  // namespace

std::string View::drawAxes() const {
  std::string svg = drawTorso() + drawLinks(0.3);
  std::vector<Arrow> arrows;
  const auto add = [&](const Vector2d& from, const Vector3d& axis, const std::string& name, const char* colour) {
    arrows.push_back({from, from + 70 * (page(axis) - page(Vector3d::Zero())) / scale_, name, colour});
    svg += arrows.back().draw();
  };
  for (const Report::Joint& joint : robot_.joints) {
    Eigen::Index nearest = 0;
    const bool along = joint.axis.cwiseAbs().maxCoeff(&nearest) > 0.9999F;
    add(page(origin(joint.body)), robot_.bodies[joint.body].pose.col(2).cast<double>(),
        fmt::format("{} {}{}{}", joint.name, along ? "" : "≈", joint.axis[nearest] < 0 ? "−" : "+", "xyz"[nearest]),
        colours_[joint.body]);
  }
  for (int i = 0; i < 3; ++i) {
    add({90, page(origin(0)).y() + 340}, robot_.bodies[0].pose.col(i).cast<double>(), std::string(1, "xyz"[i]), ink);
  }
  return svg + nameArrows(arrows);
}

}  // namespace lumo::inspect
