#pragma once

// One touch of a finger on the sensor: what the sensor's minutiae detector reports of it.

#include <cstdint>
#include <vector>

#include "tools/orl_finger/finger_record.h"
#include "tools/orl_finger/master_finger.h"

namespace orl::tools {

// Touches the finger to a sensor of 388 x 374 pixels. The part of the pad that is in contact is
// turned, shifted and stretched smoothly; of its minutiae some are missed (more of them near the
// rim), some are moved, turned or mistaken for the other kind, and some are invented. The result
// has its minutiae from top to bottom, at least kFewestDetected of them unless the finger is too
// poor.
FingerRecord drawImpression(const MasterFinger& finger, RandomStream& random);

inline constexpr std::size_t kFewestDetected = 20;

}  // namespace orl::tools
