#include <gtest/gtest.h>

#include <vector>

#include <kinetra/depth_first_traversal.hpp>
#include <models/norvaX3/norvaX3.hpp>

namespace {

using kinetra::norvaX3;
using Ids = std::vector<int>;

template <typename Robot, int N>
struct Record {
  static void discover(Robot&, Ids& discovered, Ids&) { discovered.push_back(N); }
  static void finish(Robot&, Ids&, Ids& finished) { finished.push_back(N); }
};

TEST(Traversal, VisitsParentsBeforeChildrenAndReturnsFromChildrenFirst) {
  norvaX3 robot;
  Ids discovered, finished;
  kinetra::internal::depth_first_traversal<Record, norvaX3>::run(robot, discovered, finished);
  EXPECT_EQ(discovered, (Ids{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
  EXPECT_EQ(finished, (Ids{2, 1, 7, 6, 5, 4, 3, 10, 9, 8, 15, 14, 13, 12, 11, 0}));
}

}  // namespace
