#pragma once

#include <utility>

#include <kinetra/node_list.hpp>

namespace kinetra::internal {

/// One step of the walk over a robot's tree: the subtree of node N.
///
/// A pass over the tree is a visitor with two hooks per node, both static:
///   Visitor<Robot, N>::discover(robot, args...)   before the children of N: transforms, velocities, accelerations
///   Visitor<Robot, N>::finish(robot, args...)     after them: composite inertias, transmitted forces
/// The arguments reach every hook unchanged, by reference. The order of the nodes is fixed at compile time, so a pass
/// is straight-line code that knows each node's joint, parent, coordinates and kinds of rotation.
template <template <typename, int> class Visitor, typename Robot, int N>
struct depth_first_traversal_internal {
  template <typename... Args>
  static void run(Robot& robot, Args&&... args) {
    Visitor<Robot, N>::discover(robot, args...);
    runChildren(robot, args...);
    Visitor<Robot, N>::finish(robot, args...);
  }

  /// The subtrees of N's children alone.
  template <typename... Args>
  static void runChildren(Robot& robot, Args&&... args) {
    visit(typename node_t<Robot, N>::children{}, robot, args...);
  }

 private:
  template <int... Children, typename... Args>
  static void visit(std::integer_sequence<int, Children...>, Robot& robot, Args&... args) {
    (depth_first_traversal_internal<Visitor, Robot, Children>::run(robot, args...), ...);
  }
};

/// The walk over the whole tree, from the root, node 0. Nodes are numbered in the order in which they are discovered: a
/// parent before its children, a whole subtree before the next. The world, the root's parent, has the number -1.
template <template <typename, int> class Visitor, typename Robot>
struct depth_first_traversal {
  template <typename... Args>
  static void run(Robot& robot, Args&&... args) {
    depth_first_traversal_internal<Visitor, Robot, 0>::run(robot, args...);
  }
};

}  // namespace kinetra::internal
