#include <tools/inspect/svg/toSvg.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <tuple>

#include <fmt/format.h>

#include <tools/inspect/svg/View.hpp>

namespace lumo::inspect {

using Eigen::Vector3d;

namespace {

// Sizes in units of the page.
constexpr double margin = 24, top = 92, bottom = 84, viewWidth = 560, figureWidth = 248, figureHeight = 560;
constexpr double axesWidth = 760, axesHeight = 760;

std::string header(double width, double height, const std::string& title, const char* note, const Report& robot) {
  return fmt::format(
      R"(<svg xmlns='http://www.w3.org/2000/svg' width='{0}' height='{1:.0f}' viewBox='0 0 {0} {1:.0f}'
  font-family='Helvetica, Arial, DejaVu Sans, sans-serif'>
<style>
text {{font-size: 13px; fill: {2}}}
.name {{paint-order: stroke; stroke: white; stroke-width: 3px}}
</style>
<pattern id='hatch' width='12' height='8' patternUnits='userSpaceOnUse'><path d='M10 0l-8 8' stroke='{2}'/></pattern>
<rect width='100%' height='100%' rx='10' fill='white'/>
<text x='{3}' y='36' style='font-size: 20px; font-weight: bold; fill: {4}'>{5}</text>
<text x='{3}' y='56'>{6:.3f} kg in {7} bodies</text>
<text x='{8}' y='36' text-anchor='end'>{9}</text>
)",
      width, height, faint, margin, ink, escaped(title), robot.mass, robot.bodies.size(), width - margin, note);
}

std::string centred(double x, double y, const std::string& text, const char* colour = faint) {
  return fmt::format("<text x='{:.1f}' y='{:.1f}' style='fill: {}' text-anchor='middle'>{}</text>\n", x, y, colour,
                     text);
}

/// The axes are seen from above and from the right of the front, so that the arms lie side by side.
std::string axesToSvg(const Report& robot, const std::string& title, double yaw) {
  const double azimuth = yaw - 0.5, elevation = 0.5;
  const Vector3d right(-std::sin(azimuth), std::cos(azimuth), 0);
  const Vector3d up(-std::sin(elevation) * std::cos(azimuth), -std::sin(elevation) * std::sin(azimuth),
                    std::cos(elevation));
  View view(robot, right, up, false);
  const double scale = std::min(520 / view.extent().sizes().x(), axesHeight / view.extent().sizes().y());
  view.place(axesWidth / 2, top + 40 + scale * view.extent().max().y(), scale);
  return header(axesWidth, top + 40 + axesHeight + margin, title,
                "arrows: the axes of the joints; x, y, z: the axes of the torso", robot) +
         view.drawAxes(top, top + 40 + axesHeight);
}

std::string massesToSvg(const Report& robot, const Drawing& drawing, double yaw) {
  View front(robot, {-std::sin(yaw), std::cos(yaw), 0}, Vector3d::UnitZ(), true);
  View side(robot, {std::cos(yaw), std::sin(yaw), 0}, Vector3d::UnitZ(), true);

  const double low = front.extent().min().y(), high = front.extent().max().y();
  const double zero = -drawing.root.z(), ground = std::clamp(zero, low - 0.5, high);
  const double least = std::min(low, ground), height = high - least;
  const double width = std::max(front.extent().sizes().x(), side.extent().sizes().x());
  const double scale = std::min(figureWidth / width, figureHeight / height);
  const double baseY = top + std::max(height * scale, 320.0), groundY = baseY - (ground - least) * scale;
  front.place(viewWidth / 2, groundY + ground * scale, scale);
  side.place(viewWidth * 3 / 2, groundY + ground * scale, scale);

  const Vector3d com = drawing.root + Eigen::Vector3f(robot.com.data()).cast<double>();
  const char* format = com.cwiseAbs().maxCoeff() < 1e4 ? "x {:.3f}, y {:.3f} m" : "x {:.3g}, y {:.3g} m";
  const std::string plumb = fmt::format(fmt::runtime(format), com.x(), com.y());
  const std::string where = zero < ground   ? fmt::format(", {:.3g} m down", low - zero)
                            : zero > ground ? fmt::format(", {:.3g} m up", zero - high)
                                            : "";

  std::string svg = header(2 * viewWidth, baseY + bottom, drawing.title,
                           "shaded: for each body, a ball of water of the same mass", robot);
  svg += fmt::format("<path d='M{} {:.1f}h{}' stroke='{}' stroke-width='1.5'/>\n", margin, groundY,
                     2 * (viewWidth - margin), faint);
  svg += fmt::format("<rect x='{}' width='{}' height='8' transform='translate(0 {:.1f})' fill='url(#hatch)'/>\n",
                     margin, 2 * (viewWidth - margin), groundY);
  svg += fmt::format("<text x='{}' y='{:.1f}'>ground, z = 0{}</text>\n", margin, baseY + 26, where);
  for (const auto& [view, name, middle] : {std::tuple(&front, "FRONT", 0.5), std::tuple(&side, "RIGHT SIDE", 1.5)}) {
    svg += centred(middle * viewWidth, top - 22, name);
    svg += view->drawMasses(top, baseY + 10, groundY);
    svg += centred(view->com().x(), baseY + 26, plumb, accent);
  }

  const double length = 0.5, x = viewWidth - length * scale / 2, y = baseY + 48;
  svg += fmt::format("<path d='M{:.1f} {:.1f}v8m0 -4h{:.1f}m0 -4v8' stroke='{}' fill='none'/>\n", x, y, length * scale,
                     ink);
  return svg + centred(viewWidth, y + 22, fmt::format("{} m", length));
}

}  // namespace

std::string toSvg(const Report& robot, const Drawing& drawing) {
  const auto finite = [](const Report::Body& body) {
    return body.pose.allFinite() && Eigen::Vector3f(body.com.data()).allFinite();
  };
  if (!std::all_of(robot.bodies.begin(), robot.bodies.end(), finite)) {
    throw std::runtime_error("the robot cannot be drawn because its poses are not finite");
  }
  const double yaw = static_cast<double>(robot.bodies.front().angles[2]);
  return (drawing.axes ? axesToSvg(robot, drawing.title, yaw) : massesToSvg(robot, drawing, yaw)) + "</svg>\n";
}

}  // namespace lumo::inspect
