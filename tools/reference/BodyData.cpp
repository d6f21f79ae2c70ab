#include <tools/reference/BodyData.hpp>

#include <models/norvaX3/norvaX3.hpp>

namespace reference {

std::vector<BodyData> readBodies() {
  std::vector<BodyData> bodies;
  kinetra::norvaX3 robot;
  kinetra::forEachNode(robot, [&bodies](const auto& n) {
    const auto& inertia = kinetra::norvaX3::inertias[n.id];
    const double m = static_cast<double>(inertia.m);
    const Eigen::Vector3d com =
        m > 0.0 ? Eigen::Vector3d(inertia.h.template cast<double>() / m) : Eigen::Vector3d::Zero();
    const Eigen::Matrix3d shift = m * (com.squaredNorm() * Eigen::Matrix3d::Identity() - com * com.transpose());
    bodies.push_back({n.body_name, n.parent_id, n.Xt.E.matrix().transpose().template cast<double>(),
                      n.Xt.r.template cast<double>(), m, com, rotationalInertia(inertia) - shift});
  });
  return bodies;
}

Eigen::Matrix3d nearestRotation(const Eigen::Matrix3d& R) { return 1.5 * R - 0.5 * R * R.transpose() * R; }

Eigen::Matrix3d rotationalInertia(const kinetra::Spatial::Inertia& inertia) {
  const auto& I = inertia.I;  // the lower triangle, row by row
  return (Eigen::Matrix3f() << I[0], I[1], I[3], I[1], I[2], I[4], I[3], I[4], I[5]).finished().cast<double>();
}

}  // namespace reference
