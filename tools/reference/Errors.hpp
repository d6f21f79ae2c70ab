#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include <fmt/format.h>

#include <tools/reference/WithMagnitude.hpp>

namespace reference {

/// The errors of one kind of result. The unit is a float epsilon times the magnitude of the entry.
class Errors {
 public:
  /// The root mean square and the largest error are those over 100,000 states from seed 1, as docs/accuracy.md states
  /// them.
  Errors(const char* kind, double statedRms, double statedLargest)
      : kind_(kind), statedRms_(statedRms), statedLargest_(statedLargest) {}

  /// An entry that is NaN, or that is not zero although its magnitude is, counts as an infinite error.
  template <typename Actual>
  void add(const Eigen::MatrixBase<Actual>& actual, const WithMagnitude& expected) {
    for (Eigen::Index j = 0; j < actual.cols(); ++j) {
      for (Eigen::Index i = 0; i < actual.rows(); ++i) {
        const double error = std::abs(static_cast<double>(actual(i, j)) - expected.value(i, j));
        const double magnitude = expected.magnitude(i, j);
        if (error == 0.0 && magnitude == 0.0) continue;
        const double relative = error / (magnitude * 0x1p-23);
        largest_ = std::isnan(relative) ? HUGE_VAL : std::max(largest_, relative);
        squares_ += relative * relative;
        ++count_;
      }
    }
  }

  /// Whether the root mean square is within a quarter of the stated one, and the largest error is at most twice the
  /// stated one. A smaller root mean square would show that the magnitudes are too large, or that nothing was compared.
  bool isAsStated() const {
    return std::abs(rms() - statedRms_) <= 0.25 * statedRms_ && largest_ <= 2.0 * statedLargest_;
  }
  const char* kind() const { return kind_; }
  std::string row() const {
    return fmt::format("{:26} {:12} {:10.3f} {:10.2f} {:10.2f}\n", kind_, count_, rms(), largest_, statedLargest_);
  }

 private:
  double rms() const { return std::sqrt(squares_ / static_cast<double>(count_)); }

  const char* kind_;
  double statedRms_;
  double statedLargest_;
  double largest_ = 0.0;
  double squares_ = 0.0;
  std::uint64_t count_ = 0;
};

}  // namespace reference
