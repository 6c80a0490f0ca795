#pragma once

// What a camera answers for parameters that nobody has set: that of a user who made one and changed nothing. A scene document lists
// set parameters alone, so this is all that one without any has.

#include "host/scene/headlessobject.h"

namespace q7z
{

/// An angle of view follows from the other one where that is set, by the shape of the document's pictures.
/// @return false, with the value left alone, for other objects and for parameters without a default.
Bool FindCameraDefault(const HeadlessObject& object, const HostDescId& id, HostValue& value) noexcept;

}  // namespace q7z
