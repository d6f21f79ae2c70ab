#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

// How pictures show the robot: the colour of each body, the lines between the joints, the sizes of the masses.

namespace lumo {

/// The bodies that pictures show in one colour.
struct Limb {
  const char* name;
  const char* colour;  ///< #rrggbb
};
inline constexpr Limb limbs[] = {
    {"torso", "#4a5261"}, {"head", "#7a5ba8"}, {"left arm", "#12907c"}, {"leg", "#3f6fb0"}, {"right arm", "#d9772b"}};

/// The limb of each body, as an index of `limbs`. The root is the torso, and each of its children begins another limb.
/// The parents are in the order of the bodies, as getParentsVector returns them.
template <class Parents>
std::vector<std::size_t> limbOfBodies(const Parents& parents) {
  std::vector<std::size_t> limb{0};
  std::size_t last = 0;
  for (std::size_t b = 1; b < parents.size(); ++b) {
    limb.push_back(parents[b] == 0 ? ++last : limb[static_cast<std::size_t>(parents[b])]);
  }
  return limb;
}

/// A straight line that is fixed to a body and has its colour. It begins at the origin of the body, on its joint.
struct Link {
  std::size_t body;
  std::size_t end;  ///< the line ends at the origin of this body; if it is the same body, at its centre of mass
};

/// The links of all bodies: each leads to the joint of a child, or to the centre of mass of a body without a child.
template <class Parents>
std::vector<Link> linksOf(const Parents& parents) {
  std::vector<Link> links;
  for (std::size_t b = 0; b < parents.size(); ++b) {
    if (parents[b] >= 0) links.push_back({static_cast<std::size_t>(parents[b]), b});
    const auto child = std::find(parents.begin(), parents.end(), static_cast<typename Parents::value_type>(b));
    if (child == parents.end()) links.push_back({b, b});
  }
  return links;
}

/// The radius of a ball of water of this mass (kg), in metres.
inline double ballRadius(double mass) { return std::cbrt(0.75 * std::fmax(mass, 0.0) / 1000 / 3.14159265358979323846); }

}  // namespace lumo
