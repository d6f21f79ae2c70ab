#pragma once

#include <kinetra/spatial/Motion.hpp>

namespace kinetra {

/// The negated acceleration of gravity in a world whose z axis points up: (0, 0, 0, 0, 0, 9.81) m/s^2. Taken as the
/// acceleration of the root's parent, it gives every body its weight. Defined beside the model's data.
extern const Spatial::Motion minus_g;

}  // namespace kinetra
