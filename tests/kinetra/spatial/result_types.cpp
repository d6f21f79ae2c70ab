#include <type_traits>

#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>
#include <kinetra/spatial/ConstraintMotionFreeFlyerBody.hpp>
#include <kinetra/spatial/Transform.hpp>

// The types that the operations on stored values return. They are checked at compile time.

namespace kinetra::Spatial {

using Vector3 = Eigen::Vector3f;
using Vector6 = Eigen::Matrix<float, 6, 1>;
using Forces = Eigen::Matrix<float, 6, Eigen::Dynamic>;
template <typename Rotation>
using X = TransformT<Rotation>;

template <typename Expected, typename Actual>
constexpr void returns(const Actual&) {
  static_assert(std::is_same_v<Expected, Actual>);
}
template <typename Expected, typename Actual>
constexpr void refersTo(Actual&) {
  static_assert(std::is_same_v<Expected, Actual>);
}

[[maybe_unused]] void vectorsAndInertias(Motion& m, Force& f, Inertia& I, const Vector6& column) {
  returns<Motion>(m + m);
  returns<Motion>(m - Motion::zero());
  returns<Motion>(m + column);
  returns<Motion>(crm(m, m));
  returns<Motion>(Motion::zero());
  returns<Force>(f + f);
  returns<Force>(f - Force::zero());
  returns<Force>(crf(m, f));
  returns<Force>(Force::zero());
  returns<Force>(I * m);
  returns<Inertia>(I + I);
  returns<Inertia>(Inertia::zero());
  returns<Vector6>(I * ConstraintMotionAboutZ());
  returns<Eigen::Matrix<float, 6, 6>>(I * ConstraintMotionFreeFlyerBody());
  returns<Eigen::Matrix<float, 1, 1>>(ConstraintMotionAboutZ().transposeTimes(f));
  returns<Vector6>(ConstraintMotionFreeFlyerBody().transposeTimes(f));
  returns<Vector6>(ConstraintMotionAboutZ() * Eigen::Matrix<float, 1, 1>());
  returns<Vector6>(ConstraintMotionFreeFlyerBody() * column);
  returns<Vector6>((column.transpose() * ConstraintMotionFreeFlyerBody().matrix()).transpose().eval());
  refersTo<Vector3>(m.angular());
  refersTo<Vector3>(m.linear());
  refersTo<Vector3>(f.couple());
  refersTo<Vector3>(f.force());
  refersTo<Vector3>(I.h);
  returns<float>((I + I).m);
}

[[maybe_unused]] void products(const RotationMatrix& E, const RotationMatrixAboutZ& Z,
                               const RotationMatrixIdentity& k) {
  returns<RotationMatrix>(E.transpose());
  returns<RotationMatrix>(E * E);
  returns<RotationMatrix>(Z * E);
  returns<RotationMatrix>(E * k);
  returns<RotationMatrixAboutZ>(Z * k);
  returns<X<RotationMatrix>>(X<RotationMatrix>() * X<RotationMatrix>());
  returns<X<RotationMatrix>>(X<RotationMatrixAboutZ>() * X<RotationMatrix>());
  returns<X<RotationMatrix>>(X<RotationMatrix>() * X<RotationMatrixIdentity>());
  returns<X<RotationMatrixAboutZ>>(X<RotationMatrixAboutZ>() * X<RotationMatrixIdentity>());
}

template <typename Rotation>
void transforms(X<Rotation>& X, const Motion& m, const Force& f, const Inertia& I, const Vector3& p, const Forces& F) {
  returns<Motion>(X.apply(m));
  returns<Motion>(X.applyInv(m));
  returns<Force>(X.apply(f));
  returns<Force>(X.applyInv(f));
  returns<Inertia>(X.applyInv(I));
  returns<Vector3>(X.applyToPoint(p));
  returns<Vector3>(X.applyInvToPoint(p));
  returns<Vector3>(X.E.apply(p));
  returns<Vector3>(X.E.applyInv(p));
  returns<Eigen::Matrix3f>(X.E.matrix());
  returns<Forces>(X.applyInv(F));
  returns<Eigen::Matrix<float, 6, 4>>(X.applyInv(Eigen::Matrix<float, 6, 4>()));
  refersTo<Vector3>(X.r);
  returns<float>(X.r.norm());
}
template void transforms(X<RotationMatrix>&, const Motion&, const Force&, const Inertia&, const Vector3&,
                         const Forces&);
template void transforms(X<RotationMatrixAboutZ>&, const Motion&, const Force&, const Inertia&, const Vector3&,
                         const Forces&);
template void transforms(X<RotationMatrixIdentity>&, const Motion&, const Force&, const Inertia&, const Vector3&,
                         const Forces&);

}  // namespace kinetra::Spatial
