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
  /// `stated` is the largest error over 100,000 states from seed 1, as docs/accuracy.md states it.
  Errors(const char* kind, double stated) : kind_(kind), stated_(stated) {}

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

  /// Whether the largest error is between a quarter of the stated one and twice it. A much smaller error would show
  /// that the magnitudes are too large, or that nothing was compared.
  bool isAsStated() const { return largest_ >= 0.25 * stated_ && largest_ <= 2.0 * stated_; }
  const char* kind() const { return kind_; }
  std::string row() const {
    const double rootMeanSquare = std::sqrt(squares_ / static_cast<double>(count_));
    return fmt::format("{:26} {:12} {:10.3f} {:10.2f} {:10.2f}\n", kind_, count_, rootMeanSquare, largest_, stated_);
  }

 private:
  const char* kind_;
  double stated_;
  double largest_ = 0.0;
  double squares_ = 0.0;
  std::uint64_t count_ = 0;
};

}  // namespace reference
