#include <type_traits>

#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>
#include <kinetra/spatial/ConstraintMotionFreeFlyerBody.hpp>
#include <kinetra/spatial/Transform.hpp>

// Operations on stored values return stored values and not their forms in registers, so that users can read the members
// of a result. This is checked at compile time.

namespace kinetra::Spatial {

template <typename Expected, typename... Actual>
constexpr void expect(const Actual&...) {
  static_assert((std::is_same_v<Expected, Actual> && ...));
}

template <typename Rotation>
void expectStored(const TransformT<Rotation>& X, const Motion& m, const Force& f, const Inertia& I,
                  const Eigen::Vector3f& p) {
  expect<Motion>(m + m, m - Motion::zero(), m + Motion::Vector6(m), crm(m, m), X.apply(m), X.applyInv(m));
  expect<Force>(f + f, f - Force::zero(), crf(m, f), I * m, X.apply(f), X.applyInv(f));
  expect<Inertia>(I + I, X.applyInv(I));
  expect<Eigen::Vector3f>(X.applyToPoint(p), X.applyInvToPoint(p), X.E.apply(p), X.E.applyInv(p));
  expect<Eigen::Matrix<float, 6, Eigen::Dynamic>>(X.applyInv(Eigen::Matrix<float, 6, Eigen::Dynamic>()));
  expect<TransformT<RotationMatrix>>(X * TransformT<RotationMatrix>());
  expect<TransformT<Rotation>>(X * TransformT<RotationMatrixIdentity>());
  expect<Motion::Vector6>(I * ConstraintMotionAboutZ(), ConstraintMotionFreeFlyerBody().transposeTimes(f));
}
template void expectStored(const TransformT<RotationMatrix>&, const Motion&, const Force&, const Inertia&,
                           const Eigen::Vector3f&);
template void expectStored(const TransformT<RotationMatrixAboutZ>&, const Motion&, const Force&, const Inertia&,
                           const Eigen::Vector3f&);

}  // namespace kinetra::Spatial
