#pragma once

#include <boost/fusion/include/at_c.hpp>
#include <boost/fusion/include/for_each.hpp>
#include <boost/fusion/include/value_at.hpp>
#include <boost/fusion/include/vector.hpp>

namespace kinetra {

/// The nodes of a robot, each of its own type, held by value in the order of their ids.
template <typename... Nodes>
using node_list = boost::fusion::vector<Nodes...>;

/// Type of node N of a robot.
template <typename Robot, int N>
using node_t = typename boost::fusion::result_of::value_at_c<decltype(Robot::nodes), N>::type;

/// Node N of a robot.
template <int N, typename Robot>
node_t<Robot, N>& node(Robot& robot) {
  return boost::fusion::at_c<N>(robot.nodes);
}
template <int N, typename Robot>
const node_t<Robot, N>& node(const Robot& robot) {
  return boost::fusion::at_c<N>(robot.nodes);
}

/// Calls f(node) for every node of a robot, in the order of ids.
template <typename Robot, typename F>
void forEachNode(Robot& robot, const F& f) {
  boost::fusion::for_each(robot.nodes, f);
}

}  // namespace kinetra
