#pragma once

#include <Eigen/Core>

namespace oracle {

/// A value and, entry by entry, the sum of the absolute values of the terms it is made of: what the rounding error of a
/// single-precision result is measured against, however much the terms cancel.
struct Estimate {
  Eigen::MatrixXd value;
  Eigen::MatrixXd magnitude;
};

}  // namespace oracle
