#pragma once

// Configuration variables: named switches that the user of the host sets from outside the module. The table stands from static
// initialisation on and holds at most 256 entries.

#include "plugin/module/hostservices.h"

namespace q7z
{

inline constexpr Int32 kMaximumConfigVariables = 256;

/// Appends an entry and returns the default, for the initialisation of the variable itself. Beyond the table's end the default
/// is stored in the variable and nothing in the table.
Bool RegisterConfigVariable(Bool* variable, const String& name, const String& help, Bool defaultValue) noexcept;

extern Bool g_gltfImporterNoSkin;
extern Bool g_gltfImporterBakeSplineInterpolatedAnimation;

}  // namespace q7z
