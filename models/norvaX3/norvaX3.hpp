#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include <kinetra/Node.hpp>
#include <kinetra/algos/FreeFlyerBodyJoint.hpp>
#include <kinetra/algos/RevoluteJointAboutZ.hpp>
#include <kinetra/node_list.hpp>

namespace kinetra {

/// The robot: a free-floating torso with a head, two arms and a leg; 16 bodies, 21 coordinates. A value of this type
/// holds the working state of every node. The tree is constant and the model's data is static; norvaX3.cpp has the
/// numbers.
struct norvaX3 {
  static constexpr int nb_bodies = 16;
  static constexpr int nb_dof = 21;

  static const std::array<std::string, nb_bodies> joint_names;
  static const std::array<std::string, nb_bodies> body_names;  ///< equal to joint_names

  /// Spatial inertia of each body about its own origin, in its own frame. All objects of the process share this table.
  /// It must not be written during a pass; a change takes effect in the next pass.
  static std::array<Inertia, nb_bodies> inertias;

  template <int Id, int ParentId, int DofIndex, typename Joint, typename XtRotation, int... Children>
  struct NamedNode : Node<Id, ParentId, DofIndex, Joint, XtRotation, Children...> {
    static constexpr const std::string& joint_name = joint_names[Id];
    static constexpr const std::string& body_name = body_names[Id];
  };

  using Free = FreeFlyerBodyJoint;
  using AboutZ = RevoluteJointAboutZ;
  using Identity = RotationMatrixIdentity;
  using General = RotationMatrix;

  // Xt takes the parent's frame to the joint's. Its kind of rotation and the joint's decide the kind of sXp = Xj Xt,
  // the transform from the parent's frame to the body's.
  // clang-format off
  //                       id  parent  dof  joint   rotation  children
  //                                                of Xt
  struct Node0  : NamedNode< 0,    -1,   0, Free,   Identity, 1, 3, 8, 11> { static const Placement Xt; };  // Torso
  struct Node1  : NamedNode< 1,     0,   6, AboutZ, Identity, 2>           { static const Placement Xt; };  // HeadYaw
  struct Node2  : NamedNode< 2,     1,   7, AboutZ, General>               { static const Placement Xt; };  // HeadPitch
  struct Node3  : NamedNode< 3,     0,   8, AboutZ, General,  4>           { static const Placement Xt; };  // LShoulderPitch
  struct Node4  : NamedNode< 4,     3,   9, AboutZ, General,  5>           { static const Placement Xt; };  // LShoulderRoll
  struct Node5  : NamedNode< 5,     4,  10, AboutZ, General,  6>           { static const Placement Xt; };  // LElbowYaw
  struct Node6  : NamedNode< 6,     5,  11, AboutZ, General,  7>           { static const Placement Xt; };  // LElbowRoll
  struct Node7  : NamedNode< 7,     6,  12, AboutZ, General>               { static const Placement Xt; };  // LWristYaw
  struct Node8  : NamedNode< 8,     0,  13, AboutZ, General,  9>           { static const Placement Xt; };  // HipRoll
  struct Node9  : NamedNode< 9,     8,  14, AboutZ, General,  10>          { static const Placement Xt; };  // HipPitch
  struct Node10 : NamedNode<10,     9,  15, AboutZ, Identity>              { static const Placement Xt; };  // KneePitch
  struct Node11 : NamedNode<11,     0,  16, AboutZ, General,  12>          { static const Placement Xt; };  // RShoulderPitch
  struct Node12 : NamedNode<12,    11,  17, AboutZ, General,  13>          { static const Placement Xt; };  // RShoulderRoll
  struct Node13 : NamedNode<13,    12,  18, AboutZ, General,  14>          { static const Placement Xt; };  // RElbowYaw
  struct Node14 : NamedNode<14,    13,  19, AboutZ, General,  15>          { static const Placement Xt; };  // RElbowRoll
  struct Node15 : NamedNode<15,    14,  20, AboutZ, General>               { static const Placement Xt; };  // RWristYaw

  // The same tree for the service, at run time. Checked against the table above when this header is compiled.
  static constexpr std::array<std::int32_t, nb_bodies> parents     = {-1, 0, 1, 0, 3, 4, 5, 6, 0, 8, 9, 0, 11, 12, 13, 14};
  static constexpr std::array<std::int32_t, nb_bodies> dof_numbers = {6, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  static constexpr std::array<std::int32_t, nb_bodies> dof_indexes = {0, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
  // clang-format on

  node_list<Node0, Node1, Node2, Node3, Node4, Node5, Node6, Node7, Node8, Node9, Node10, Node11, Node12, Node13,
            Node14, Node15>
      nodes;
};

namespace internal {

/// Whether the children of node i name it as their parent and come in increasing order.
template <typename Robot, int i, int... Children>
constexpr bool isParentOf(std::integer_sequence<int, Children...>) {
  constexpr int ids[] = {i, Children...};
  for (std::size_t k = 1; k < std::size(ids); ++k) {
    if (ids[k - 1] >= ids[k]) return false;
  }
  return ((node_t<Robot, Children>::parent_id == i) && ...);
}

template <typename Robot, int... i>
constexpr bool treeIsConsistent(std::integer_sequence<int, i...>) {
  return (node_t<Robot, i>::children::size() + ... + 1U) == Robot::nb_bodies &&
         ((node_t<Robot, i>::id == i && node_t<Robot, i>::parent_id == Robot::parents[i] &&
           node_t<Robot, i>::dof_number == Robot::dof_numbers[i] &&
           node_t<Robot, i>::dof_index == Robot::dof_indexes[i] &&
           isParentOf<Robot, i>(typename node_t<Robot, i>::children{})) &&
          ...);
}

/// Whether each subtree has consecutive numbers, and its coordinates are consecutive in the same order.
template <typename Robot>
constexpr bool subtreesAreConsecutive() {
  int dof_index = 0;
  for (std::size_t i = 0; i < Robot::parents.size(); ++i) {
    int parent = static_cast<int>(i) - 1;  // it must be the node before i, or an ancestor of that node
    while (parent > Robot::parents[i]) parent = Robot::parents[static_cast<std::size_t>(parent)];
    if (parent != Robot::parents[i] || Robot::dof_indexes[i] != dof_index) return false;
    dof_index += Robot::dof_numbers[i];
  }
  return dof_index == Robot::nb_dof;
}

}  // namespace internal

static_assert(internal::treeIsConsistent<norvaX3>(std::make_integer_sequence<int, norvaX3::nb_bodies>{}),
              "the tables parents, dof_numbers and dof_indexes and the children must agree with the nodes");
static_assert(internal::subtreesAreConsecutive<norvaX3>(),
              "the nodes and the coordinates of a subtree must follow one another");
static_assert(sizeof(norvaX3::Node0) == 608 && sizeof(norvaX3::Node1) == 296 && sizeof(norvaX3::Node2) == 324,
              "a node holds sXp, F, joint and body and nothing else");

}  // namespace kinetra
