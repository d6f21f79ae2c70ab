#include <gtest/gtest.h>

#include <tools/reference/Errors.hpp>

namespace {

using Eigen::Vector2d, Eigen::Vector2f;

/// Whether the errors of two results are as stated: the largest is one float epsilon. The true values are 1 and 0.
bool areAsStated(const Vector2f& result, double statedRms = 0.7, const Vector2d& magnitudes = {1.0, 1.0}) {
  reference::Errors errors("a kind", statedRms, 1.0);
  errors.add(result, {Vector2d(1.0, 0.0), magnitudes});
  return errors.isAsStated();
}

TEST(AccuracyCheck, AcceptsOnlyErrorsNearTheStatedOnes) {
  EXPECT_TRUE(areAsStated({1.0F, 0x1p-23F}));
  EXPECT_TRUE(areAsStated({1.0F, -0x1p-23F}));
  EXPECT_FALSE(areAsStated({1.0F, 0x1p-24F})) << "half the stated errors";
  EXPECT_FALSE(areAsStated({1.0F, 0x1p-22F})) << "twice the stated errors";
  EXPECT_FALSE(areAsStated({1.0F, 0x3p-23F}, 2.1)) << "only the largest is too large";
  EXPECT_FALSE(areAsStated({std::nanf(""), 0x1p-23F}));
  EXPECT_FALSE(areAsStated({1.0F, std::nanf("")}));
  EXPECT_TRUE(areAsStated({0x1.000002p0F, 0.0F}, 1.0, {1.0, 0.0}));
  EXPECT_FALSE(areAsStated({0x1.000002p0F, 1e-20F}, 1.0, {1.0, 0.0})) << "an entry of magnitude zero is not zero";
  EXPECT_FALSE(reference::Errors("a kind", 0.7, 1.0).isAsStated()) << "nothing was compared";
}

}  // namespace
