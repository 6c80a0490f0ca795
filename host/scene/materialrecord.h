#pragma once

// Deep copies of the values that a node material keeps. What the plug-in hands over may point at texts of its library, which is
// unloaded before the last document goes.

#include "plugin/module/hostservices.h"

namespace q7z
{

/// A value with texts, member names and elements of its own.
Result<Data> CopyData(const Data& value) noexcept;

/// Becomes a copy of source, without the textures' pixels. On failure target is in an unknown but valid state.
Result<void> CopyExchangeData(const HostMaterialExchangeData& source, HostMaterialExchangeData& target) noexcept;

}  // namespace q7z
