#include <tools/inspect/svg/View.hpp>

#include <algorithm>
#include <cmath>
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
  for (Label& label : column) {  // as high as the point, or below the label before
    label.y = std::max(label.at.y(), top + label.height() / 2);
    top = label.y + label.height() / 2;
  }
  for (auto label = column.rbegin(); label != column.rend(); ++label) {  // back up from the end of the page
    label->y = std::min(label->y, bottom - label->height() / 2);
    bottom = label->y - label->height() / 2;
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

/// Writes labels in two columns, at a distance from the middle, with a line from each label to its point. The left half
/// of the points belongs to the left column.
std::string drawLabels(std::vector<Label> labels, double middle, double distance, double top, double bottom) {
  std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) {
    return std::pair(std::round(a.at.x()), a.at.y()) < std::pair(std::round(b.at.x()), b.at.y());
  });
  const auto half = labels.begin() + static_cast<std::ptrdiff_t>(labels.size() / 2);
  std::string svg;
  for (const double side : {-1.0, 1.0}) {
    auto column = side < 0 ? std::vector(labels.begin(), half) : std::vector(half, labels.end());
    arrange(column, top, bottom);
    const double x = middle + side * distance;
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

/// An arrow on the page.
std::string arrow(const Vector2d& from, const Vector2d& to, const char* colour) {
  const Vector2d along = (to - from).normalized(), across(-along.y(), along.x()), back = to - 11 * along;
  const Vector2d left = back + 5 * across, right = back - 5 * across;
  return line(from, to - 8 * along, colour, 2.5) +
         fmt::format("<polygon points='{:.1f},{:.1f} {:.1f},{:.1f} {:.1f},{:.1f}' fill='{}'/>\n", to.x(), to.y(),
                     left.x(), left.y(), right.x(), right.y(), colour);
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

void View::place(double centre, double originY, double scale) {
  middle_ = {centre - scale * extent_.center().x(), originY};
  scale_ = scale;
}

/// The torso is the area between the joints of the root's children.
std::string View::drawTorso() const {
  std::vector<Vector2d> points;
  for (std::size_t b = 0; b < robot_.bodies.size(); ++b) {
    if (robot_.bodies[b].parent == 0) points.push_back(page(origin(b)));
  }
  Vector2d centre = Vector2d::Zero();
  for (const Vector2d& p : points) centre += p / static_cast<double>(points.size());
  const auto angle = [&](const Vector2d& p) { return std::atan2(p.y() - centre.y(), p.x() - centre.x()); };
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

  std::vector<Label> labels{{{{"centre of mass", accent}}, com()}};
  for (std::size_t b = 0; b < robot_.bodies.size(); ++b) {
    const Vector2d at = page(origin(b));
    const auto same =
        std::find_if(labels.begin() + 1, labels.end(), [&](const Label& label) { return (label.at - at).norm() < 4; });
    auto& label = same != labels.end() ? *same : labels.emplace_back(Label{{}, at});
    label.lines.emplace_back(robot_.bodies[b].name, colours_[b]);
  }
  return svg + drawLabels(labels, middle(), 148, top, bottom);
}

std::string View::drawAxes(double top, double bottom) const {
  std::string svg = drawTorso() + drawLinks(0.3);
  const auto tip = [&](const Vector2d& from, const auto& axis) -> Vector2d {
    return from + 70 * (page(axis.template cast<double>()) - page(Vector3d::Zero())) / scale_;
  };
  std::vector<Label> labels;
  for (const Report::Joint& joint : robot_.joints) {
    Eigen::Index nearest = 0;
    const bool along = joint.axis.cwiseAbs().maxCoeff(&nearest) > 0.9999F;
    const std::string name =
        fmt::format("{} {}{}{}", joint.name, along ? "" : "≈", joint.axis[nearest] < 0 ? "−" : "+", "xyz"[nearest]);
    const Vector2d from = page(origin(joint.body)), to = tip(from, robot_.bodies[joint.body].pose.col(2));
    svg += arrow(from, to, colours_[joint.body]);
    labels.push_back({{{name, colours_[joint.body]}}, to});
  }
  for (int i = 0; i < 3; ++i) {
    const Vector2d from(90, page(origin(0)).y() + 340), to = tip(from, robot_.bodies[0].pose.col(i));
    svg += arrow(from, to, ink) + text(to + 14 * (to - from).normalized() + Vector2d(0, 4), ink, "middle", {"xyz"[i]});
  }
  return svg + drawLabels(labels, middle(), 236, top, bottom);
}

}  // namespace lumo::inspect
