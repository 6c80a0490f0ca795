#pragma once

// How much memory a copy of an object takes, so that a small document that shows one object very often is refused before it fills
// the machine. An estimate: what copies share (points, polygons, corner data, colours, texts) counts nothing.

#include "host/scene/headlessobject.h"

namespace q7z
{

/// Bytes of a copy without children: the object, its parameters, tags and tracks.
Int EstimateCopySize(const HeadlessObject& object) noexcept;

}  // namespace q7z
