#pragma once

#include <array>

#include <kinetra/Node.hpp>
#include <kinetra/node_list.hpp>
#include <kinetra/spatial/SinCos.hpp>

namespace kinetra {

/// Generalized positions (m, rad) with the sines and cosines of all angles among them, which are computed at once
/// because that is faster than one by one. The joint passes take it in place of the plain vector q, to the same bits.
template <typename Robot>
class Positions {
 public:
  using Vector = Eigen::Matrix<float, Robot::nb_dof, 1>;

  explicit Positions(const Vector& q)
      : xyz_(simd::Vector3::load(q.data())), sinCos_(Spatial::sinCos<nb_angles>(q.data() + first_angle)) {}

  /// What the joint of a node computes its Xj from.
  template <typename Node>
  typename Node::joint_type::Position of() const {
    if constexpr (Node::dof_number == 1) {
      return sinCos_[Node::dof_index - first_angle];
    } else {
      return {xyz_, {sinCos_[0], sinCos_[1], sinCos_[2]}};
    }
  }

 private:
  // All coordinates are angles except the first three, the root's x, y and z.
  static constexpr int first_angle = node_t<Robot, 0>::joint_type::first_angle;
  static constexpr int nb_angles = Robot::nb_dof - first_angle;

  simd::Vector3 xyz_;
  std::array<SinCos, nb_angles> sinCos_;
};

}  // namespace kinetra
