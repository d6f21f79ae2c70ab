#pragma once

#include <kinetra/node_list.hpp>

namespace kinetra::internal {

/// The walk from node j to the root: Visitor<Robot, a, j>::discover(robot, args...) for each ancestor a, nearest first,
/// with j the child of a on the way. Settled by the compiler for every pair, like the walk over the tree.
///
/// The arguments are this walk's own: what a step changes in them, the next one finds. Each step is one function,
/// shared by all walks that come past. Optimised, it keeps small arguments in registers and jumps to the next.
template <template <typename, int, int> class Visitor, typename Robot, int j>
struct backward_traversal {
  template <typename... Args>
  [[gnu::noinline]] static void run(Robot& robot, Args... args) {
    constexpr int a = node_t<Robot, j>::parent_id;
    if constexpr (a >= 0) {
      Visitor<Robot, a, j>::discover(robot, args...);
      if constexpr (node_t<Robot, a>::parent_id >= 0) {
        backward_traversal<Visitor, Robot, a>::run(robot, args...);
      }
    }
  }
};

}  // namespace kinetra::internal
