#pragma once

#include <iomanip>

#include <gtest/gtest.h>

#include <tools/accuracy/Estimate.hpp>

namespace lumo::test {

/// Entry by entry; NaN fails; tells the worst entry. A negative tolerance asks for the same value and sign of zero.
inline testing::AssertionResult compare(const Eigen::MatrixXd& actual, const Eigen::MatrixXd& expected,
                                        const Eigen::MatrixXd& tolerance) {
  if (actual.rows() != expected.rows() || actual.cols() != expected.cols()) {
    return testing::AssertionFailure() << "size " << actual.rows() << " x " << actual.cols() << ", expected "
                                       << expected.rows() << " x " << expected.cols();
  }
  double worst = -1.0;
  testing::AssertionResult result = testing::AssertionSuccess();
  for (Eigen::Index k = 0; k < actual.size(); ++k) {
    const Eigen::Index i = k % actual.rows(), j = k / actual.rows();
    const double a = actual(i, j), e = expected(i, j), tol = tolerance(i, j), error = std::abs(a - e);
    const bool good = tol < 0.0 ? a == e && std::signbit(a) == std::signbit(e) : error <= tol;
    const double excess = std::isnan(error) ? HUGE_VAL : error / std::max(tol, 0x1p-60);
    if (!good && excess > worst) {
      worst = excess;
      result = testing::AssertionFailure() << std::setprecision(9) << "worst at (" << i << ", " << j << "): " << a
                                           << ", expected " << e << ", tolerance " << tol;
    }
  }
  return result;
}

template <typename Actual, typename Expected>
testing::AssertionResult near(const Eigen::MatrixBase<Actual>& actual, const Eigen::MatrixBase<Expected>& expected,
                              double tolerance) {
  return compare(actual.template cast<double>(), expected.template cast<double>(),
                 Eigen::MatrixXd::Constant(expected.rows(), expected.cols(), tolerance));
}

/// Within k float epsilons of each entry's magnitude.
template <typename Actual>
testing::AssertionResult near(const Eigen::MatrixBase<Actual>& actual, const oracle::Estimate& expected, double k) {
  return compare(actual.template cast<double>(), expected.value, k * 0x1p-23 * expected.magnitude);
}

template <typename Actual, typename Expected>
testing::AssertionResult identical(const Eigen::MatrixBase<Actual>& actual,
                                   const Eigen::MatrixBase<Expected>& expected) {
  return near(actual, expected, -1.0);
}

}  // namespace lumo::test
