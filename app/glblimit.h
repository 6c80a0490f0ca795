#pragma once

// The size of a GLB file. Its words have 32 bits, and the saver takes longer lengths modulo 2 to the 32, so that what is too large
// becomes a shorter file that is broken. q7z looks at what was saved before it puts it where the user wants it.

#include <string>

#include "host/scene/headlessdocument.h"

namespace q7z::app
{

enum class GlbLook
{
  kFits,
  kTooLarge,     ///< the words do not tell what the file was to hold
  kOutOfMemory,  ///< for the JSON
  kUnreadable,   ///< errno tells why
};

/// Whether a document's GLB file stays far below the limit, by the number of its objects, polygons and names alone. False when
/// there is anything that these do not bound, such as instances of groups, animation or textures: then only the file can tell.
bool IsFarBelowGlbLimit(const HeadlessDocument& document);

/// Compares the lengths in a GLB file of our saver with each other, with the buffer that its JSON declares, and with the file's own.
GlbLook LookAtGlb(const std::string& path);

}  // namespace q7z::app
