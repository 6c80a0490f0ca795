#pragma once

// Small readers of lines that the resource files share. Pure functions on text.

#include <string_view>
#include <vector>

#include "framework/types.h"

namespace q7z
{

/// Without blanks, tabs and carriage returns at both ends.
std::string_view TrimLine(std::string_view text) noexcept;

/// The parts between separators, trimmed; at least one.
std::vector<std::string_view> SplitLine(std::string_view line, char separator);

/// @return false when text is no whole number of 32 bits.
bool ReadNumber(std::string_view text, Int32& number) noexcept;

bool IsValidUtf8(std::string_view text) noexcept;

}  // namespace q7z
