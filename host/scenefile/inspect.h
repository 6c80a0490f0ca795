#pragma once

// The tree that `q7z inspect` shows: what a document holds, for people.

#include "host/scene/headlessdocument.h"
#include "host/scenefile/bytesink.h"

namespace q7z
{

struct TreeSettings
{
  /// Lines of box characters, and texts as they are; else everything beyond ASCII is escaped.
  Bool isUtf8 = true;
  /// Where images went that the file held itself: textures below it are shown relative to it; empty for nowhere.
  std::string_view imageFolder{};
};

/// Writes the tree: layers, materials, objects with tags and tracks, takes, and a line of totals. Control characters in texts
/// come out as \xNN, so that no text can drive a terminal. @return the sink's error, or out of memory.
Result<void> PrintTree(const HeadlessDocument& document, const TreeSettings& settings, ByteSink& sink) noexcept;

/// Whether a terminal shows UTF-8, by the values of the variables LC_ALL, LC_CTYPE and LANG (null for an unset one): the first
/// that is set and not empty decides.
Bool IsUtf8Locale(const char* lcAll, const char* lcCtype, const char* lang) noexcept;

}  // namespace q7z
