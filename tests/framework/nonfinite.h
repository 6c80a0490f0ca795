#pragma once

// Numbers that are none, for the tests of the framework.

#include <limits>

#include "framework/types.h"

namespace q7z
{

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

}  // namespace q7z
