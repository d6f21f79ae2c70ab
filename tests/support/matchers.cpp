#include <tests/support/matchers.hpp>

namespace {

using namespace lumo::test;
using Eigen::Vector3d;

TEST(Matchers, ReportTheWorstEntry) {
  const testing::AssertionResult result = near(Vector3d(1.0, 2.5, 3.0), Vector3d(1.1, 2.0, 3.0), 0.01);
  EXPECT_STREQ(result.message(), "entry (1, 0) is 2.5, expected 2 within 0.01; wrong entries: 2 of 3");
}

TEST(Matchers, FailForNan) {
  const Vector3d x(1.0, std::nan(""), 3.0);
  EXPECT_FALSE(near(x, Vector3d(1.0, 2.0, 3.0), 1e9));
  EXPECT_FALSE(near(x, x, 1e9));
  EXPECT_FALSE(identical(x, x));
}

TEST(Matchers, FailForAnotherSize) { EXPECT_FALSE(near(Vector3d::Zero(), Vector3d::Zero().transpose(), 1.0)); }

TEST(Matchers, DistinguishSignedZerosOnlyBitwise) {
  EXPECT_TRUE(near(-0.0, 0.0, 0.0));
  EXPECT_FALSE(identical(-0.0, 0.0));
}

}  // namespace
