#pragma once

// Images in other sizes.

#include "host/images/pixelimage.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

/// Fills target with source in target's size: the cubic of Catmull and Rom, as wide as the coarser of the two grids, so that
/// shrinking averages. Of equal sizes it is a copy. Each channel is a number of its own: colours are not weighted by alpha, since
/// textures keep other things than coverage there. An alpha channel that source does not have is 255; one that target does not have
/// is left out.
/// @param jobs  spreads the rows; null for none. @return out of memory.
Result<void> Resample(const PixelImage& source, PixelImage& target, HostJobs* jobs) noexcept;

}  // namespace q7z
