// A host compiled for wider vectors than the plug-in: each side frees what the other allocated. Exits with 77 where the
// processor has no such vectors.

#include <host/Plugin.hpp>

__attribute__((noinline)) static int run() {
  const auto system = lumo::Plugin(LUMO_PLUGIN).create();
  const auto clone = system->clone();
  system->computeFwdKinematics();
  system->computeGeneralizedMass();
  Eigen::MatrixXf H = system->getGeneralizedMass();
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  for (const Eigen::Index columns : {5, 40, 21}) {
    J.setConstant(3, columns, 7);
    system->computePartialComJacobian(3, J);
    if (J.cols() != 21 || std::abs(J(0, 0) - system->getPartialMass(3)) > 1e-4F) return 1;
  }
  H += system->getGeneralizedMass();
  return std::abs(H(2, 2) - 2 * system->getMass()) < 1e-3F ? 0 : 1;
}

int main() { return __builtin_cpu_supports("avx") ? run() : 77; }
