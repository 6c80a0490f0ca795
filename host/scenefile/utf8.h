#pragma once

// What the writers of this folder know of UTF-8: where a well-formed sequence ends, and which ones a terminal would obey.

#include <string_view>

#include "framework/types.h"

namespace q7z
{

/// The length of the well-formed UTF-8 sequence at the start of text, which is not empty; 0 when there is none.
size_t GetUtf8Length(std::string_view text) noexcept;

/// Whether a well-formed sequence is a control character: C0, DEL or C1.
Bool IsControlSequence(std::string_view sequence) noexcept;

}  // namespace q7z
