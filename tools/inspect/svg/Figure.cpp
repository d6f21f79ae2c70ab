#include <tools/inspect/svg/Figure.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <stdexcept>

#include <fmt/format.h>

#include <tools/inspect/svg/page.hpp>

namespace lumo::inspect {

namespace {

using Eigen::Vector3d;

Vector3d vector(const std::array<float, 3>& v) { return Eigen::Vector3f(v.data()).cast<double>(); }

}  // namespace

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
      throw std::runtime_error("the robot cannot be drawn because its poses are not finite");
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

}  // namespace lumo::inspect
