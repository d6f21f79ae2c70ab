#include <tools/inspect/svg/toSvg.hpp>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include <tools/inspect/svg/Figure.hpp>
#include <tools/inspect/svg/View.hpp>
#include <tools/inspect/svg/escaped.hpp>
#include <tools/inspect/svg/page.hpp>

namespace lumo::inspect {

using Eigen::Vector3d;

namespace {

constexpr const char* style =
    R"(<svg xmlns='http://www.w3.org/2000/svg' width='{0}' height='{1:.0f}' viewBox='0 0 {0} {1:.0f}'
  font-family='Helvetica, Arial, DejaVu Sans, sans-serif'>
<style>
text {{font-size: 12px}}
.title {{font-size: 20px; font-weight: bold; fill: {2}}}
.view {{font-size: 14px; fill: {3}; text-anchor: middle; letter-spacing: 1px}}
.note {{fill: {3}}}
.name {{font-size: 12.5px}}
.axis {{font-size: 13px; font-weight: bold; fill: {2}; text-anchor: middle}}
.plumb {{fill: {4}; text-anchor: middle}}
.name, .axis, .plumb {{paint-order: stroke; stroke: white; stroke-width: 3px}}
</style>
<rect width='100%' height='100%' rx='10' fill='white'/>
)";

/// Draws the ground with its label, and a scale bar, whose length is the greatest round number that is not too long.
std::string groundAndScale(const Place& place, const Extent& extent) {
  std::string text;
  text += fmt::format("<path d='M{} {:.1f}H{}' stroke='{}' stroke-width='1.5'/>\n", margin, place.groundY,
                      pageWidth - margin, faint);
  text += fmt::format("<path d='");
  for (int i = 0; margin + 8 + 12 * i <= pageWidth - margin; ++i) {
    text += fmt::format("M{} {:.1f}l-8 8", margin + 8 + 12 * i, place.groundY);
  }
  text += fmt::format("' stroke='{}' stroke-width='0.8'/>\n", faint);
  const double low = extent.least.y(), high = extent.most.y();
  const std::string where = place.ground > 0   ? fmt::format(", {:.3g} m down", low)
                            : place.ground < 0 ? fmt::format(", {:.3g} m up", -high)
                                               : "";
  text += fmt::format("<text class='note' x='{}' y='{:.1f}'>ground, z = 0{}</text>\n", margin, place.baseY + 26, where);

  double length = 10;
  for (const double shorter : {5.0, 2.0, 1.0, 0.5, 0.2, 0.1}) {
    if (length * place.scale > 300) length = shorter;
  }
  const double step = length * place.scale / 5;
  const double x = (pageWidth - length * place.scale) / 2, y = place.baseY + bottom - 40;
  text += fmt::format("<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='6' fill='white' stroke='{}'/>\n", x, y,
                      length * place.scale, ink);
  for (int i = 0; i < 5; i += 2) {
    text +=
        fmt::format("<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='6' fill='{}'/>\n", x + i * step, y, step, ink);
  }
  for (int i = 0; i <= 5; i += step < 34 ? 5 : 1) {
    text += fmt::format("<text class='note' x='{:.1f}' y='{:.1f}' text-anchor='middle'>{:g}{}</text>\n", x + i * step,
                        y + 21, length * i / 5, i == 5 ? " m" : "");
  }
  return text;
}

}  // namespace

std::string toSvg(const Report& report, const Drawing& drawing) {
  const Figure figure = toFigure(report);
  // Both views are horizontal and follow the direction in which the root faces.
  const Vector3d forward = figure.root.col(0);
  const double yaw = std::atan2(forward.y(), forward.x());
  View front(figure, {-std::sin(yaw), std::cos(yaw), 0}, drawing.axes);
  View side(figure, {std::cos(yaw), std::sin(yaw), 0}, drawing.axes);

  const double low = front.extent().least.y(), high = front.extent().most.y();
  const double ground = std::clamp(0.0, low - 0.5, high);  // if the ground is farther away, it is drawn here
  const double least = std::min(low, ground), height = std::max(high - least, 0.25);
  const double width = std::max({front.extent().size().x(), side.extent().size().x(), 0.25});
  const double scale = std::min(figureWidth / width, figureHeight / height);
  const double baseY = top + std::max(height * scale, 320.0), pageHeight = baseY + bottom;
  const Place left{viewWidth / 2, baseY - (ground - least) * scale, baseY, scale, ground};
  Place right = left;
  right.middle += viewWidth;

  std::string text;
  text += fmt::format(fmt::runtime(style), pageWidth, pageHeight, ink, faint, accent);
  text += fmt::format("<text class='title' x='{}' y='36'>{}</text>\n", margin, escaped(drawing.title));

  text += fmt::format("<text class='note' x='{}' y='56'>{:.3f} kg in {} bodies</text>\n", margin, report.mass,
                      report.bodies.size());
  text += groundAndScale(left, front.extent());
  text += fmt::format("<text class='note' x='{}' y='36' text-anchor='end'>{}</text>\n", pageWidth - margin,
                      drawing.axes ? "dot: the axis points towards you; cross: away from you"
                                   : "shaded: for each body, a ball of water of the same mass");
  text += front.draw("FRONT", left);
  text += side.draw("RIGHT SIDE", right);
  text += "</svg>\n";
  return text;
}

}  // namespace lumo::inspect
