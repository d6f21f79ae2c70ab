#pragma once

#include <Eigen/Core>

namespace reference {

/// A value and its magnitude. The magnitude of an entry is the sum of the absolute values of the terms that add up to
/// it, so it is not small if the terms cancel. Rounding errors of single-precision results are measured in terms of it.
struct WithMagnitude {
  Eigen::MatrixXd value;
  Eigen::MatrixXd magnitude;
};

}  // namespace reference
