#pragma once

// Names of the files that embedded images are written to. Pure functions on texts.

#include "framework/result.h"
#include "framework/string.h"

namespace q7z
{

/// "<material>_<key>.<extension>". The material's name comes from the file and is made fit to be part of one path component on any
/// system: separators, control characters and other bytes that a system gives a meaning become "_", as does the first byte of a
/// hidden or reserved name; at most 200 bytes of it are taken, whole characters only.
Result<String> MakeTextureFileName(const String& materialName, const String& key, const String& extension) noexcept;

}  // namespace q7z
