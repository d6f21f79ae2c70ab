// Times inverse dynamics in 100,000 states, in a loop over the interface. Prints the shortest time of one state (ns).

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <host/Plugin.hpp>

int main() {
  const auto robot = lumo::Plugin(LUMO_PLUGIN).create();
  constexpr int count = 100000;
  using States = Eigen::Array<float, 15, Eigen::Dynamic>;
  const States q = States::Random(15, count), dq = States::Random(15, count), ddq = States::Random(15, count);
  States torques(15, count);
  double shortest = 1e9;
  for (int round = 0; round < 5; ++round) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
      robot->setJointAnglesPos(q.col(i));
      robot->setJointAnglesVel(dq.col(i));
      robot->setJointAnglesAcc(ddq.col(i));
      robot->computeInverseDynamics();
      const lumo::FloatView torque = robot->getJointAnglesTorque();
      std::copy(torque.begin(), torque.end(), torques.col(i).data());
    }
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    shortest = std::min(shortest, time.count() / count);
  }
  std::printf("%g\n", shortest);
}
