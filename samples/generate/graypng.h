#pragma once

// Small gray PNG images for the samples: nothing is packed, so that the bytes are the same on every machine.

#include <functional>
#include <string>

#include "framework/types.h"

namespace q7z::generate
{

/// The gray value, 0 to 255, of a pixel; x to the right, y down.
using GrayFunction = std::function<Byte(Int x, Int y)>;

/// The bytes of a PNG file of side × side pixels; side is 1 to 250.
std::string MakeGrayPng(Int side, const GrayFunction& grayAt);

}  // namespace q7z::generate
