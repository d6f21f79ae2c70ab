#include <gtest/gtest.h>

#include <tools/reference/Errors.hpp>

namespace {

using Eigen::Vector2f;

/// Whether the errors of two results are as stated: the largest is one float epsilon. The true values are 1 and 0, the
/// magnitudes are 1.
bool areAsStated(const Vector2f& result, double statedRms = 0.7) {
  reference::Errors errors("a kind", statedRms, 1.0);
  errors.add(result, {Eigen::Vector2d(1.0, 0.0), Eigen::Vector2d::Ones()});
  return errors.isAsStated();
}

TEST(AccuracyCheck, AcceptsOnlyErrorsNearTheStatedOnes) {
  EXPECT_TRUE(areAsStated({1.0F, 0x1p-23F}));
  EXPECT_TRUE(areAsStated({1.0F, -0x1p-23F}));
  EXPECT_FALSE(areAsStated({1.0F, 0x1p-24F})) << "half the stated errors";
  EXPECT_FALSE(areAsStated({1.0F, 0x1p-22F})) << "twice the stated errors";
  EXPECT_FALSE(areAsStated({1.0F, 0x3p-23F}, 2.1)) << "only the largest is too large";
}

TEST(AccuracyCheck, FailsForNanInAnyEntry) {
  EXPECT_FALSE(areAsStated({std::nanf(""), 0x1p-23F}));
  EXPECT_FALSE(areAsStated({1.0F, std::nanf("")}));
}

TEST(AccuracyCheck, FailsIfNothingWasCompared) { EXPECT_FALSE(reference::Errors("a kind", 0.7, 1.0).isAsStated()); }

TEST(AccuracyCheck, FailsIfAnEntryOfMagnitudeZeroIsNotZero) {
  reference::Errors errors("a kind", 0.7, 1.0);
  errors.add(Vector2f(0x1p-23F, 1e-20F), {Eigen::Vector2d::Zero(), Eigen::Vector2d(1.0, 0.0)});
  EXPECT_FALSE(errors.isAsStated());
}

}  // namespace
