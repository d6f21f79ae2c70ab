#include <tools/inspect/svg/Figure.hpp>

#include <stdexcept>

#include <fmt/format.h>

#include <tools/limbs.hpp>

namespace lumo::inspect {

namespace {

using Eigen::Vector3d;

Vector3d vector(const std::array<float, 3>& v) { return Eigen::Vector3f(v.data()).cast<double>(); }

}  // namespace

Figure toFigure(const Report& report) {
  Figure figure;
  figure.com = vector(report.com);
  figure.root = report.bodies.front().pose.leftCols<3>().cast<double>();
  std::vector<int> parents;
  for (const Report::Body& body : report.bodies) parents.push_back(body.parent);
  figure.links = linksOf(parents);
  const auto limb = limbOfBodies(parents);
  for (std::size_t b = 0; b < report.bodies.size(); ++b) {
    const Report::Body& body = report.bodies[b];
    figure.parts.push_back({body.name, parents[b] <= 0, limbs[limb[b]].colour, body.pose.col(3).cast<double>(),
                            vector(body.com), ballRadius(static_cast<double>(body.mass)), Vector3d::Zero(), ""});
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
