#include <host/inspect/toSvg.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <stdexcept>

#include <Eigen/Geometry>
#include <fmt/format.h>

namespace lumo::inspect {

namespace {

using Eigen::Vector2d, Eigen::Vector3d;

// The page, in its own units: two views side by side, each with a column of names on either side.
constexpr double pageWidth = 1120, viewWidth = pageWidth / 2, nameWidth = 132, margin = 24;
constexpr double top = 92, bottom = 84, figureHeight = 560, lineHeight = 15;
constexpr double figureWidth = viewWidth - 2 * (nameWidth + margin);

constexpr const char* ink = "#2b303b";
constexpr const char* faint = "#8d96a3";
constexpr const char* accent = "#c2203a";
constexpr const char* rootColour = "#4a5261";
constexpr const char* limbColours[] = {"#7a5ba8", "#12907c", "#3f6fb0", "#d9772b", "#a8871c", "#4d8f3a"};

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return result;
}

Vector3d vector(const std::array<float, 3>& v) { return Eigen::Vector3f(v.data()).cast<double>(); }

/// One body as it is drawn: its origin is its joint.
struct Part {
  std::string name;
  std::size_t parent;  ///< itself for the root
  const char* colour;  ///< of its limb: the root's child that carries it
  bool last;           ///< has no children
  Vector3d origin, com;
  double radius;      ///< of a ball of water of its mass (m)
  Vector3d axis;      ///< of its joint
  std::string about;  ///< the same in words: the root's axis that is nearest
};

struct Figure {
  std::vector<Part> parts;
  Vector3d com;
  Eigen::Matrix3d root;  ///< its axes as columns
};

Figure toFigure(const Report& report) {
  Figure figure;
  figure.com = vector(report.com);
  figure.root = report.bodies.front().pose.leftCols<3>().cast<double>();
  std::size_t limbs = 0;
  for (std::size_t b = 0; b < report.bodies.size(); ++b) {
    const Report::Body& body = report.bodies[b];
    const std::size_t parent = body.parent < 0 ? b : static_cast<std::size_t>(body.parent);
    const char* colour = b == 0        ? rootColour
                         : parent == 0 ? limbColours[limbs++ % std::size(limbColours)]
                                       : figure.parts[parent].colour;
    const double volume = std::max(0.0, static_cast<double>(body.mass)) / 1000;
    figure.parts.push_back({body.name, parent, colour, true, body.pose.col(3).cast<double>(), vector(body.com),
                            std::cbrt(0.75 * volume / M_PI), Vector3d::Zero(), ""});
    figure.parts[parent].last = b == 0;
    if (!(figure.parts[b].origin + figure.parts[b].com + figure.com).allFinite()) {
      throw std::runtime_error("a robot whose poses are not finite cannot be drawn");
    }
  }
  for (const Report::Joint& joint : report.joints) {
    Part& part = figure.parts[joint.body];
    part.axis = figure.root * joint.axis.cast<double>();
    Eigen::Index nearest = 0;
    const bool along = joint.axis.cwiseAbs().maxCoeff(&nearest) > 0.9999F;
    part.about = fmt::format(" {}{}{}", along ? "" : "≈", joint.axis[nearest] < 0 ? "−" : "+", "xyz"[nearest]);
  }
  return figure;
}

/// What the figure takes of a plane: across and up (m).
struct Extent {
  Vector2d least = Vector2d::Constant(std::numeric_limits<double>::infinity()), most = -least;

  void add(const Vector2d& p, double radius = 0) {
    least = least.cwiseMin((p.array() - radius).matrix());
    most = most.cwiseMax((p.array() + radius).matrix());
  }
  Vector2d size() const { return most - least; }
  Vector2d centre() const { return (least + most) / 2; }
};

/// The names at one place, with a line from them to it.
struct Label {
  struct Line {
    std::string text;
    const char* colour;
  };
  std::vector<Line> lines;
  Vector2d at;   ///< on the page
  double y = 0;  ///< of its middle

  double height() const { return static_cast<double>(lines.size()) * lineHeight + 5; }
};

/// Puts the labels of one column as near to the height of their places as they fit: those that would overlap form a
/// block around the mean of what they want.
void arrange(std::vector<Label>& column, double from, double to) {
  std::sort(column.begin(), column.end(), [](const Label& a, const Label& b) { return a.at.y() < b.at.y(); });
  struct Block {
    std::size_t count;
    double wanted;  ///< the sum over its labels of where each wants the block to begin
    double height;
    double begin(double least, double most) const {
      return std::max(least, std::min(wanted / static_cast<double>(count), most - height));
    }
  };
  std::vector<Block> blocks;
  for (const Label& label : column) {
    Block block{1, label.at.y() - label.height() / 2, label.height()};
    while (!blocks.empty() && blocks.back().begin(from, to) + blocks.back().height > block.begin(from, to)) {
      const Block& above = blocks.back();
      block.wanted += above.wanted - static_cast<double>(block.count) * above.height;
      block.count += above.count;
      block.height += above.height;
      blocks.pop_back();
    }
    blocks.push_back(block);
  }
  auto label = column.begin();
  for (const Block& block : blocks) {
    double y = block.begin(from, to);
    for (std::size_t i = 0; i < block.count; ++i, ++label) {
      label->y = y + label->height() / 2;
      y += label->height();
    }
  }
}

/// Draws one view of a figure.
class View {
 public:
  View(const Figure& figure, const Vector3d& right, bool axes) : figure_(figure), right_(right), axes_(axes) {
    for (const Part& part : figure.parts) {
      extent_.add(plane(part.origin), 0.02);
      extent_.add(plane(part.com), axes ? 0 : part.radius);
    }
    extent_.add(plane(figure.com), 0.02);
  }

  const Extent& extent() const { return extent_; }

  /// `middle` is where on the page the middle of the view comes, `groundY` where the level `ground` comes, and `baseY`
  /// where the figure ends.
  std::string draw(const char* title, double middle, double groundY, double baseY, double scale, double ground) {
    baseY_ = baseY;
    text_.clear();
    middle_ = middle;
    groundY_ = groundY;
    scale_ = scale;
    ground_ = ground;
    print("<g>\n<text class='view' x='{:.1f}' y='{:.1f}'>{}</text>\n", middle, top - 22, title);
    drawTorso();
    if (!axes_) drawMasses();
    std::vector<const Part*> order;  // from the farthest to the nearest
    for (const Part& part : figure_.parts) order.push_back(&part);
    const Vector3d towards = right_.cross(Vector3d::UnitZ());
    std::stable_sort(order.begin(), order.end(), [&](const Part* a, const Part* b) {
      return (a->origin + a->com).dot(towards) < (b->origin + b->com).dot(towards);
    });
    for (const Part* part : order) drawLink(*part);
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

 private:
  template <typename... Values>
  void print(const char* format, const Values&... values) {
    fmt::format_to(std::back_inserter(text_), fmt::runtime(format), values...);
  }

  Vector2d plane(const Vector3d& p) const { return {p.dot(right_), p.z()}; }
  Vector2d page(const Vector3d& p) const {
    const Vector2d q = plane(p);
    return {middle_ + (q.x() - extent_.centre().x()) * scale_, groundY_ - (q.y() - ground_) * scale_};
  }

  /// The root's body is what lies between its joints.
  void drawTorso() {
    std::string points;
    std::vector<Vector2d> corners;
    for (const Part& part : figure_.parts) {
      if (part.parent == 0) corners.push_back(page(part.origin));
    }
    for (const Vector2d& p : hull(corners)) points += fmt::format("{:.1f},{:.1f} ", p.x(), p.y());
    print("<polygon points='{}' fill='#dfe3e9' stroke='#dfe3e9' stroke-width='26' stroke-linejoin='round'/>\n", points);
  }

  /// The corners of the smallest convex polygon around the points, one after another.
  static std::vector<Vector2d> hull(std::vector<Vector2d> points) {
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
      corners.pop_back();  // begins the other side
    }
    return corners.empty() ? points : corners;
  }

  void drawMasses() {
    for (const Part& part : figure_.parts) {
      const Vector2d p = page(part.com);
      print("<circle cx='{:.1f}' cy='{:.1f}' r='{:.1f}' fill='{}' fill-opacity='0.16'/>\n", p.x(), p.y(),
            part.radius * scale_, part.colour);
    }
  }

  const char* linkStyle() const {
    return axes_ ? "stroke-linecap='round' stroke-opacity='0.3'" : "stroke-linecap='round'";
  }

  void line(const Vector2d& a, const Vector2d& b, const char* colour, double width, const char* more = "") {
    print("<line x1='{:.1f}' y1='{:.1f}' x2='{:.1f}' y2='{:.1f}' stroke='{}' stroke-width='{}' {}/>\n", a.x(), a.y(),
          b.x(), b.y(), colour, width, more);
  }

  void drawLink(const Part& part) {
    const Part& parent = figure_.parts[part.parent];
    line(page(parent.origin), page(part.origin), parent.colour, 6, linkStyle());
    // Where the last body of a limb ends is not known; its centre of mass shows where it points.
    if (part.last) line(page(part.origin), page(part.com), part.colour, 6, linkStyle());
  }

  void drawJoint(const Part& part) {
    const Vector2d p = page(part.origin);
    print("<circle cx='{:.1f}' cy='{:.1f}' r='5' fill='white' stroke='{}' stroke-width='2.5'/>\n", p.x(), p.y(),
          part.colour);
  }

  /// An arrow, or what is seen of it from its head or its tail.
  void drawAxis(const Vector3d& from, const Vector3d& axis, const char* colour, const std::string& name) {
    const double length = 52;
    const Vector2d a = page(from), way(axis.dot(right_), -axis.z());
    const double towards = axis.dot(right_.cross(Vector3d::UnitZ()));
    if (way.norm() > 0.3) {
      const Vector2d b = a + length * way, along = way.normalized(), across(-along.y(), along.x());
      const Vector2d left = b - 9 * along + 4 * across, right = b - 9 * along - 4 * across;
      line(a, b - 7 * along, colour, 2.2);
      print("<polygon points='{:.1f},{:.1f} {:.1f},{:.1f} {:.1f},{:.1f}' fill='{}'/>\n", b.x(), b.y(), left.x(),
            left.y(), right.x(), right.y(), colour);
      if (!name.empty()) {
        const Vector2d at = b + 10 * along;
        print("<text class='axis' x='{:.1f}' y='{:.1f}'>{}</text>\n", at.x(), at.y() + 4, name);
      }
    } else if (axis.norm() > 0.5 && name.empty()) {
      print("<circle cx='{:.1f}' cy='{:.1f}' r='9' fill='none' stroke='{}' stroke-width='2'/>\n", a.x(), a.y(), colour);
      if (towards > 0) {
        print("<circle cx='{:.1f}' cy='{:.1f}' r='2.5' fill='{}'/>\n", a.x(), a.y(), colour);
      } else {
        for (const double y : {-6.0, 6.0}) line(a - Vector2d(6, y), a + Vector2d(6, y), colour, 2);
      }
    }
  }

  /// The quartered circle that stands for a centre of mass, and where its plumb line meets the ground.
  void drawCom() {
    const Vector2d p = page(figure_.com);
    const double r = 10;
    line({p.x(), p.y()}, {p.x(), groundY_}, accent, 1.5, "stroke-dasharray='5 4'");
    print("<circle cx='{:.1f}' cy='{:.1f}' r='{}' fill='white' stroke='{}' stroke-width='2'/>\n", p.x(), p.y(), r,
          accent);
    for (const double side : {-r, r}) {
      print("<path d='M{0:.1f} {1:.1f}v{2}a{3} {3} 0 0 1 {4} {4}z' fill='{5}'/>\n", p.x(), p.y(), side, r, -side,
            accent);
    }
    print("<path d='M{0:.1f} {1:.1f}l-6 -10h12z' fill='{2}'/>\n", p.x(), groundY_, accent);
    const char* format = figure_.com.cwiseAbs().maxCoeff() < 1e4 ? "x {:.3f}, y {:.3f} m" : "x {:.3g}, y {:.3g} m";
    print("<text class='plumb' x='{:.1f}' y='{:.1f}'>{}</text>\n", p.x(), baseY_ + 26,
          fmt::format(fmt::runtime(format), figure_.com.x(), figure_.com.y()));
  }

  void drawNames() {
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

    // The left half goes to the left column.
    std::stable_sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) {
      return std::abs(a.at.x() - b.at.x()) > 1 ? a.at.x() < b.at.x() : a.at.y() < b.at.y();
    });
    const auto half = labels.begin() + static_cast<std::ptrdiff_t>(labels.size() / 2);
    std::vector<Label> columns[] = {{labels.begin(), half}, {half, labels.end()}};
    for (const double side : {-1.0, 1.0}) {
      std::vector<Label>& column = columns[side < 0 ? 0 : 1];
      arrange(column, top, baseY_ + 10);
      const double x = middle_ + side * (figureWidth / 2 + margin);
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

  const Figure& figure_;
  Vector3d right_;
  bool axes_;
  Extent extent_;
  std::string text_;
  double middle_ = 0, groundY_ = 0, baseY_ = 0, scale_ = 0, ground_ = 0;
};

/// The ground with what it is called, and a rule of the greatest length that is a round number and not too long.
std::string groundAndScale(double groundY, double baseY, double scale, double ground, double low) {
  std::string text;
  const auto out = std::back_inserter(text);
  fmt::format_to(out, "<path d='M{} {:.1f}H{}' stroke='{}' stroke-width='1.5'/>\n", margin, groundY, pageWidth - margin,
                 faint);
  fmt::format_to(out, "<path d='");
  for (double x = margin + 8; x <= pageWidth - margin; x += 12) fmt::format_to(out, "M{} {:.1f}l-8 8", x, groundY);
  fmt::format_to(out, "' stroke='{}' stroke-width='0.8'/>\n", faint);
  const std::string where =
      ground == 0 ? "" : fmt::format(", {:.3g} m {}", std::abs(low), low > 0 ? "farther down" : "up");
  fmt::format_to(out, "<text class='note' x='{}' y='{:.1f}'>ground, z = 0{}</text>\n", margin, baseY + 26, where);

  double length = 10;
  for (const double shorter : {5.0, 2.0, 1.0, 0.5, 0.2, 0.1}) {
    if (length * scale > 300) length = shorter;
  }
  const double x = (pageWidth - length * scale) / 2, y = baseY + bottom - 40, step = length * scale / 5;
  fmt::format_to(out, "<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='6' fill='white' stroke='{}'/>\n", x, y,
                 length * scale, ink);
  for (int i = 0; i < 5; i += 2) {
    fmt::format_to(out, "<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='6' fill='{}'/>\n", x + i * step, y, step,
                   ink);
  }
  for (int i = 0; i <= 5; i += step < 34 ? 5 : 1) {
    fmt::format_to(out, "<text class='note' x='{:.1f}' y='{:.1f}' text-anchor='middle'>{:g}{}</text>\n", x + i * step,
                   y + 21, length * i / 5, i == 5 ? " m" : "");
  }
  return text;
}

}  // namespace

std::string toSvg(const Report& report, const Drawing& drawing) {
  const Figure figure = toFigure(report);
  // Level, and to the left of where the root faces.
  const Vector3d forward = figure.root.col(0);
  const double yaw = std::atan2(forward.y(), forward.x());
  View front(figure, {-std::sin(yaw), std::cos(yaw), 0}, drawing.axes);
  View side(figure, {std::cos(yaw), std::sin(yaw), 0}, drawing.axes);

  const double low = front.extent().least.y(), high = front.extent().most.y();
  const double ground = std::clamp(0.0, low - 0.5, high);  // drawn there, though it may be farther away
  const double least = std::min(low, ground), height = std::max(high - least, 0.25);
  const double width = std::max({front.extent().size().x(), side.extent().size().x(), 0.25});
  const double scale = std::min(figureWidth / width, figureHeight / height);
  const double baseY = top + std::max(height * scale, 320.0), groundY = baseY - (ground - least) * scale;
  const double pageHeight = baseY + bottom;

  std::string text;
  const auto out = std::back_inserter(text);
  fmt::format_to(
      out,
      "<svg xmlns='http://www.w3.org/2000/svg' width='{0}' height='{1:.0f}' viewBox='0 0 {0} {1:.0f}' "
      "font-family='Helvetica, Arial, DejaVu Sans, sans-serif'>\n"
      "<style>.title{{font-size:20px;font-weight:bold;fill:{2}}} .view{{font-size:14px;fill:{3};"
      "text-anchor:middle;letter-spacing:1px}} "
      ".name{{font-size:12.5px;paint-order:stroke;stroke:white;stroke-width:3px}} .note{{font-size:12px;fill:{3}}} "
      ".axis{{font-size:13px;font-weight:bold;fill:{2};text-anchor:middle;paint-order:stroke;stroke:white;stroke-width:"
      "3px}} "
      ".plumb{{font-size:12px;fill:{4};text-anchor:middle;paint-order:stroke;stroke:white;stroke-width:4px}}</style>\n"
      "<rect width='100%' height='100%' rx='10' fill='white'/>\n",
      pageWidth, pageHeight, ink, faint, accent);
  fmt::format_to(out, "<text class='title' x='{}' y='36'>{}</text>\n", margin, escaped(drawing.title));

  fmt::format_to(out, "<text class='note' x='{}' y='56'>{:.3f} kg in {} bodies</text>\n", margin, report.mass,
                 report.bodies.size());
  text += groundAndScale(groundY, baseY, scale, ground, low);
  fmt::format_to(out, "<text class='note' x='{}' y='36' text-anchor='end'>{}</text>\n", pageWidth - margin,
                 drawing.axes ? "an axis points at you: a dot; away from you: a cross"
                              : "shaded: each body’s mass as a ball of water");
  text += front.draw("FRONT", viewWidth / 2, groundY, baseY, scale, ground);
  text += side.draw("RIGHT SIDE", viewWidth * 1.5, groundY, baseY, scale, ground);
  text += "</svg>\n";
  return text;
}

}  // namespace lumo::inspect
