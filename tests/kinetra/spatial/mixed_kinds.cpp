#include <type_traits>

#include <kinetra/spatial/ConstraintMotionAboutZ.hpp>
#include <kinetra/spatial/ConstraintMotionFreeFlyerBody.hpp>
#include <kinetra/spatial/Transform.hpp>

// Expressions that mix motions, forces and inertias must not compile. The first line of each table must compile: it
// shows that the check can tell.

namespace kinetra::Spatial {
namespace {

template <typename Operation, typename A, typename B>
constexpr bool compiles(Operation, A (*)(), B (*)()) {
  return std::is_invocable_v<Operation, const A&, const B&>;
}

Motion m() { return Motion::zero(); }
Force f() { return Force::zero(); }
Inertia I() { return Inertia::zero(); }
Motion::Vector6 column() { return m(); }
Eigen::RowVectorXf row() { return {}; }
ConstraintMotionFreeFlyerBody S6() { return {}; }
ConstraintMotionAboutZ S1() { return {}; }
TransformT<RotationMatrix> X() { return {}; }
simd::Motion mv() { return load(m()); }
simd::Force fv() { return load(f()); }

constexpr auto sum = [](const auto& a, const auto& b) -> decltype(void(a + b)) {};
static_assert(compiles(sum, m, m) && compiles(sum, f, f) && compiles(sum, I, I) && compiles(sum, m, column));
static_assert(!compiles(sum, m, f) && !compiles(sum, f, m) && !compiles(sum, f, column) && !compiles(sum, m, I));
static_assert(!compiles(sum, m, row));
static_assert(!compiles(sum, mv, fv) && !compiles(sum, m, fv) && !compiles(sum, I, m) && !compiles(sum, f, I));

constexpr auto difference = [](const auto& a, const auto& b) -> decltype(void(a - b)) {};
static_assert(compiles(difference, m, m) && compiles(difference, f, f));
static_assert(!compiles(difference, m, f) && !compiles(difference, f, m) && !compiles(difference, mv, fv));

constexpr auto product = [](const auto& a, const auto& b) -> decltype(void(a * b)) {};
static_assert(compiles(product, I, m) && compiles(product, S6, column));
static_assert(!compiles(product, I, f) && !compiles(product, S6, m) && !compiles(product, S6, f));
static_assert(!compiles(product, X, m) && !compiles(product, m, f) && !compiles(product, I, fv));

constexpr auto crossed = [](const auto& a, const auto& b) -> decltype(void(crm(a, b))) {};
static_assert(compiles(crossed, m, m));
static_assert(!compiles(crossed, m, f) && !compiles(crossed, f, m) && !compiles(crossed, mv, fv));

constexpr auto dualCrossed = [](const auto& a, const auto& b) -> decltype(void(crf(a, b))) {};
static_assert(compiles(dualCrossed, m, f));
static_assert(!compiles(dualCrossed, m, m) && !compiles(dualCrossed, f, f) && !compiles(dualCrossed, mv, mv));

constexpr auto projected = [](const auto& S, const auto& a) -> decltype(void(S.transposeTimes(a))) {};
static_assert(compiles(projected, S6, f) && compiles(projected, S1, f));
static_assert(!compiles(projected, S6, m) && !compiles(projected, S1, m));

constexpr auto transformed = [](const auto& E, const auto& a) -> decltype(void(E.apply(a))) {};
static_assert(compiles(transformed, X, m));
static_assert(!compiles(transformed, X, I) && !compiles(transformed, X, column));

static_assert(std::is_constructible_v<Motion, Motion::Vector6> && std::is_convertible_v<Force, Force::Vector6>);
static_assert(!std::is_constructible_v<Motion, Force> && !std::is_constructible_v<Force, Motion>);
static_assert(!std::is_assignable_v<Motion&, Force> && !std::is_assignable_v<Force&, Motion>);
static_assert(!std::is_convertible_v<Motion::Vector6, Motion> && !std::is_convertible_v<Force::Vector6, Force>);

// Operations on stored values return stored values and not their forms in registers, so that users can read the members
// of a result.
template <typename Expected, typename... Actual>
constexpr void expect(const Actual&...) {
  static_assert((std::is_same_v<Expected, Actual> && ...));
}
constexpr auto stored = [](const auto& X, const Eigen::Vector3f& p) {
  expect<Motion>(m() + m(), m() - m(), m() + column(), crm(m(), m()), X.apply(m()), X.applyInv(m()));
  expect<Force>(f() + f(), f() - f(), crf(m(), f()), I() * m(), X.apply(f()), X.applyInv(f()));
  expect<Inertia>(I() + I(), X.applyInv(I()));
  expect<Eigen::Vector3f>(X.applyToPoint(p), X.applyInvToPoint(p), X.E.apply(p), X.E.applyInv(p));
  expect<TransformT<RotationMatrix>>(X * TransformT<RotationMatrix>());
};
static_assert(std::is_invocable_v<decltype(stored), TransformT<RotationMatrix>, Eigen::Vector3f>);
static_assert(std::is_invocable_v<decltype(stored), TransformT<RotationMatrixAboutZ>, Eigen::Vector3f>);

}  // namespace
}  // namespace kinetra::Spatial
