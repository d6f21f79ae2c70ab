#pragma once

#include <kinetra/spatial/Motion.hpp>

namespace kinetra {

/// The negated acceleration of gravity in a world whose z axis points up (m/s^2). Taken as the acceleration of the
/// root's parent, it adds the weight to every body.
inline const Spatial::Motion minus_g({0.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 9.81F});

}  // namespace kinetra
