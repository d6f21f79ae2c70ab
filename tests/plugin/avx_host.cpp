// A host that is compiled for wider vectors than the plug-in. Each side frees memory that the other has allocated. The
// exit code is 77 if the processor does not have these vectors.

#include <cstdio>

#include <host/Plugin.hpp>

namespace lumo::test {
namespace {

int failures = 0;

void expectNear(const char* what, float actual, float expected) {
  if (std::abs(actual - expected) <= 1e-3F) return;
  ++failures;
  std::fprintf(stderr, "%s is %.9g, expected %.9g\n", what, static_cast<double>(actual), static_cast<double>(expected));
}

__attribute__((noinline)) int run() {
  const auto system = Plugin(LUMO_PLUGIN).create();
  const auto clone = system->clone();
  system->computeFwdKinematics();
  system->computeGeneralizedMass();
  Eigen::MatrixXf H = system->getGeneralizedMass();
  Eigen::Matrix<float, 3, Eigen::Dynamic> J;
  for (const Eigen::Index columns : {5, 40, 21}) {
    J.setConstant(3, columns, 7);
    system->computePartialComJacobian(3, J);
    expectNear("number of columns of the partial Jacobian", static_cast<float>(J.cols()), 21);
    expectNear("entry (0, 0) of the partial Jacobian", J(0, 0), system->getPartialMass(3));
  }
  H += system->getGeneralizedMass();
  expectNear("twice entry (2, 2) of the mass matrix", H(2, 2), 2 * system->getMass());
  return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace lumo::test

int main(int argc, char**) {
  if (argc > 1) {
    std::fprintf(stderr, "lumo-avx-host takes no arguments\n");
    return 1;
  }
  return __builtin_cpu_supports("avx") ? lumo::test::run() : 77;
}
