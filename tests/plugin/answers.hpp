#pragma once

#include <algorithm>
#include <string>

#include <service/RigidBodySystem.hpp>

namespace lumo::test {

/// The bits of everything that an object answers with, and of what it computes on the spot.
template <class System>
std::string answers(System& o) {
  std::string bits;
  const auto add = [&bits](const auto& x) { bits.append(reinterpret_cast<const char*>(&x), sizeof x); };
  const auto addAll = [&add](const auto& values) { std::for_each(values.begin(), values.end(), add); };
  for (const FloatView& view :
       {o.getJointAnglesPos(), o.getJointAnglesVel(), o.getJointAnglesAcc(), o.getJointAnglesTorque()}) {
    addAll(view);
  }
  add(o.getRootVelocity()), add(o.getRootAcceleration()), add(o.getMass()), add(o.getComPositionInRoot());
  add(o.getComPosition()), add(o.getVolatilePose(0)), add(o.getPose(static_cast<std::size_t>(-1)));
  addAll(o.getJacobianInRoot().reshaped()), addAll(o.getGeneralizedMass().reshaped());
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  for (std::size_t b = 0; b < o.getNbBodies(); ++b) {
    add(o.getPose(b)), add(o.getPoseInRoot(b)), add(o.getMass(b)), add(o.getPartialMass(b)), add(o.getComPosition(b));
    add(o.computePartialComPositionInRoot(b)), o.computePartialComJacobian(b, J), addAll(J.reshaped());
    add(o.getBodyId(o.getBodyName(b))), add(b == 0 ? 0 : o.getJointAngleId(o.getJointAngleName(b - 1)));
  }
  addAll(o.getParentsVector()), addAll(o.getDofNumbersVector()), addAll(o.getDofIndexesVector());
  return bits += o.getRootName() + o.getName();
}

}  // namespace lumo::test
