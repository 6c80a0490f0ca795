#pragma once

// Scene documents: the whole content of a HeadlessDocument as JSON text. Used by q7z to keep what it imported and to read what it
// exports, and by tests to author scenes.
//
// Reading what was written gives an equal document, and writing that again gives the same bytes. What is not written: the active
// polygon selection of objects, objects that stand in no hierarchy, and links to anything but this document's objects, tags,
// materials and layers (they are written as empty).
//
// folder, here and below, is the folder of the document's file, with "/" between components; empty for the current one. Files of
// textures that lie in it or below are written relative to it; relative names that are read become names below it.

#include <string_view>

#include "host/scene/headlessdocument.h"
#include "host/scenefile/bytesink.h"

namespace q7z
{

/// Writes the document, piece by piece, with memory for the ids of linked nodes only. A hierarchy of any depth is written, though
/// one of more than some 500 levels nests deeper than JSON is read.
/// @param imageFolder  where images went that a file held itself: textures below it are written relative to it, wherever it is;
///   empty for nowhere. @return the sink's error, or out of memory.
Result<void> WriteSceneDocument(const HeadlessDocument& document, std::string_view folder, ByteSink& sink,
                                std::string_view imageFolder = {}) noexcept;

/// Reads a whole document; on failure there is none.
/// @return an error of the class unexpected whose message begins with the JSON path of what is wrong, such as
///   "objects[0].tags[2].normals: 24 numbers expected, 23 found"; or out of memory.
Result<HeadlessOwner<HeadlessDocument>> ReadSceneDocument(std::string_view text, std::string_view folder) noexcept;

/// The same from a file, whose folder is the document's. An error of the class io tells that the file could not be read.
Result<HeadlessOwner<HeadlessDocument>> ReadSceneDocumentFile(const String& path) noexcept;

}  // namespace q7z
