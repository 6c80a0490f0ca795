#pragma once

// The saver's parameters as the user sees them: their defaults, which of them are enabled, and how they become the options of one
// save.

#include "plugin/document/gltfexportoptions.h"
#include "plugin/module/hostcontainer.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

/// Writes what a new saver starts with. @return false without memory.
Bool WriteExportDefaults(HostContainer& container) noexcept;

/// Whether a parameter is enabled in the dialog.
Bool IsExportParameterEnabled(const HostContainer& container, Int32 parameter) noexcept;

/// The options of a save; a missing value reads as its default. The length factor is that from the active document's unit to the
/// chosen one, 1.0 when either is missing.
ExportOptions ReadExportOptions(const HostContainer& container) noexcept;

}  // namespace q7z
