#pragma once

#include <tests/plugin/support.hpp>

namespace lumo::test {

/// The bits of everything that an object answers with, and of what it computes on the spot.
inline std::string answers(Host& system) {
  std::string bits;
  const auto add = [&bits](const void* values, std::size_t size) {
    bits.append(static_cast<const char*>(values), size);
  };
  const auto addView = [&](const FloatView& view) { add(view.first, view.size() * sizeof(float)); };
  const auto addMatrix = [&](const auto& m) { addView({m.data(), m.data() + m.size()}); };
  const auto addValue = [&](const auto& value) { add(&value, sizeof value); };
  for (const FloatView& view : {system.getJointAnglesPos(), system.getJointAnglesVel(), system.getJointAnglesAcc(),
                                system.getJointAnglesTorque()}) {
    addView(view);
  }
  addValue(system.getRootVelocity()), addValue(system.getRootAcceleration()), addValue(system.getVolatilePose(0));
  addValue(system.getComPosition()), addValue(system.getComPositionInRoot()), addValue(system.getMass());
  addMatrix(system.getJacobianInRoot()), addMatrix(system.getGeneralizedMass());
  Jacobian J;
  for (std::size_t b = 0; b < nb_bodies; ++b) {
    addValue(system.getPose(b)), addValue(system.getPoseInRoot(b)), addValue(system.getComPosition(b));
    addValue(system.computePartialComPositionInRoot(b));
    system.computePartialComJacobian(b, J);
    addMatrix(J);
  }
  for (const auto& table : {system.getParentsVector(), system.getDofNumbersVector(), system.getDofIndexesVector()}) {
    add(table.data(), table.size() * sizeof table[0]);
  }
  return bits;
}

}  // namespace lumo::test
