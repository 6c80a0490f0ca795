#include "plugin/material/gltfmaterialexportcolor.h"

#include <algorithm>

namespace q7z
{

namespace
{

constexpr Float kLeastSaturation = 0.001;

}  // namespace

Vector RgbToHsv(const Vector& rgb) noexcept
{
  const Float largest = std::max({rgb.x, rgb.y, rgb.z});
  const Float smallest = std::min({rgb.x, rgb.y, rgb.z});
  if (largest == 0)
    return {};
  const Float saturation = 1 - (smallest / largest);
  if (saturation < kLeastSaturation)
    return {0, 0, smallest};
  const Float range = largest - smallest;
  const Float sector = largest == rgb.x   ? (rgb.y - rgb.z) / range
                       : largest == rgb.y ? 2 + (rgb.z - rgb.x) / range
                                          : 4 + (rgb.x - rgb.y) / range;
  return {(sector < 0 ? sector + 6 : sector) / 6, saturation, largest};
}

Vector HsvToRgb(const Vector& hsv) noexcept
{
  const Float saturation = hsv.y;
  const Float value = hsv.z;
  if (saturation < kLeastSaturation)
    return {value, value, value};
  const Float hue = hsv.x == 1 ? 0 : hsv.x * 6;
  const Float sector = std::floor(hue);
  const Float fraction = hue - sector;
  const Float low = value * (1 - saturation);
  const Float falling = value * (1 - saturation * fraction);
  const Float rising = value * (1 - saturation * (1 - fraction));
  // Compared as it is: a hue that is no number has no sector.
  if (sector == 0)
    return {value, rising, low};
  if (sector == 1)
    return {falling, value, low};
  if (sector == 2)
    return {low, value, rising};
  if (sector == 3)
    return {low, falling, value};
  if (sector == 4)
    return {rising, low, value};
  return {value, low, falling};
}

}  // namespace q7z
