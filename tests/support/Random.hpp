#pragma once

#include <Eigen/Geometry>

#include <kinetra/spatial/Inertia.hpp>
#include <tools/Uniform.hpp>

namespace lumo::test {

/// Random inputs, in which no two entries are equal and none is zero. Put the seed into a SCOPED_TRACE.
class Random {
 public:
  explicit Random(unsigned seed) : next_(seed) {}

  template <int rows, int columns = 1>
  Eigen::Matrix<float, rows, columns> matrix(float size = 1.0F) {
    return Eigen::Matrix<float, rows, columns>::NullaryExpr([&] { return next_(size); });
  }
  Eigen::Matrix3f rotation() {
    const Eigen::Vector4d q = matrix<4>().cast<double>().normalized();
    return Eigen::Quaterniond(q).toRotationMatrix().cast<float>();
  }
  /// Ten random numbers, which no rigid body needs to have.
  kinetra::Spatial::Inertia inertia(float size = 1.0F) {
    return {1.0F + 0.5F * matrix<1>()[0], matrix<3>(size).eval(), matrix<6>(size)};
  }

 private:
  Uniform next_;
};

}  // namespace lumo::test
