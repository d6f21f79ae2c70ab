#pragma once

#include <cmath>
#include <iomanip>

#include <gtest/gtest.h>

#include <tests/support/toDoubles.hpp>
#include <tools/reference/WithMagnitude.hpp>

namespace lumo::test {

/// Compares two matrices entry by entry. NaN fails. A failure prints the worst entry. A negative tolerance requires
/// equal values, and equal signs of zeros.
inline testing::AssertionResult compare(const Eigen::MatrixXd& actual, const Eigen::MatrixXd& expected,
                                        const Eigen::MatrixXd& tolerance) {
  if (actual.rows() != expected.rows() || actual.cols() != expected.cols()) {
    return testing::AssertionFailure() << "size " << actual.rows() << " x " << actual.cols() << ", expected "
                                       << expected.rows() << " x " << expected.cols();
  }
  double worst = -1.0;
  Eigen::Index wrong = 0, row = 0, column = 0;
  for (Eigen::Index k = 0; k < actual.size(); ++k) {
    const Eigen::Index i = k % actual.rows(), j = k / actual.rows();
    const double a = actual(i, j), e = expected(i, j), tol = tolerance(i, j), error = std::abs(a - e);
    if (tol < 0.0 ? a == e && std::signbit(a) == std::signbit(e) : error <= tol) continue;
    ++wrong;
    const double excess = std::isnan(error) ? HUGE_VAL : error / std::max(tol, 0x1p-60);
    if (excess > worst) worst = excess, row = i, column = j;
  }
  if (wrong == 0) return testing::AssertionSuccess();
  testing::AssertionResult result = testing::AssertionFailure();
  result << std::setprecision(9) << "entry (" << row << ", " << column << ") is " << actual(row, column)
         << ", expected " << expected(row, column);
  if (tolerance(row, column) >= 0.0) result << " within " << std::setprecision(2) << tolerance(row, column);
  return result << "; wrong entries: " << wrong << " of " << actual.size();
}

template <class Actual, class Expected>
testing::AssertionResult near(const Actual& actual, const Expected& expected, double tolerance) {
  const Eigen::MatrixXd e = toDoubles(expected);
  return compare(toDoubles(actual), e, Eigen::MatrixXd::Constant(e.rows(), e.cols(), tolerance));
}

/// Accepts an error of k float epsilons of the magnitude of each entry.
template <class Actual>
testing::AssertionResult near(const Actual& actual, const reference::WithMagnitude& expected, double k) {
  return compare(toDoubles(actual), expected.value, k * 0x1p-23 * expected.magnitude);
}

template <class Actual, class Expected>
testing::AssertionResult identical(const Actual& actual, const Expected& expected) {
  return near(actual, expected, -1.0);
}

}  // namespace lumo::test
