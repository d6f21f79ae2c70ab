#include <tools/reference/BodyData.hpp>

#include <utility>

#include <models/norvaX3/norvaX3.hpp>

namespace reference {

namespace {

using Robot = kinetra::norvaX3;

template <int i>
BodyData readBody() {
  const auto& Xt = kinetra::node_t<Robot, i>::Xt;
  const auto& inertia = Robot::inertias[i];
  const double m = static_cast<double>(inertia.m);
  const Eigen::Vector3d com =
      m > 0.0 ? Eigen::Vector3d(inertia.h.template cast<double>() / m) : Eigen::Vector3d::Zero();
  const Eigen::Matrix3d shift = m * (com.squaredNorm() * Eigen::Matrix3d::Identity() - com * com.transpose());
  return {Robot::body_names[i],
          Robot::parents[i],
          Xt.E.matrix().transpose().template cast<double>(),
          Xt.r.template cast<double>(),
          m,
          com,
          rotationalInertia(inertia) - shift};
}

template <int... i>
std::vector<BodyData> readBodies(std::integer_sequence<int, i...>) {
  return {readBody<i>()...};
}

}  // namespace

std::vector<BodyData> readBodies() { return readBodies(std::make_integer_sequence<int, Robot::nb_bodies>()); }

Eigen::Matrix3d rotationalInertia(const kinetra::Spatial::Inertia& inertia) {
  const auto& I = inertia.I;  // the lower triangle, row by row
  return (Eigen::Matrix3f() << I[0], I[1], I[3], I[1], I[2], I[4], I[3], I[4], I[5]).finished().cast<double>();
}

}  // namespace reference
