#pragma once

// Scene documents as texts, for the tests of this folder.

#include <string>
#include <string_view>

#include "host/scenefile/scenefile.h"

namespace q7z::test
{

using DocumentOwner = HeadlessOwner<HeadlessDocument>;

/// The document of a text; a failure of the test, and null, when it is refused.
DocumentOwner Read(std::string_view text, std::string_view folder = "");

/// The text of a document.
std::string Write(const HeadlessDocument& document, std::string_view folder = "");

/// What is read from text, written again; empty when it is refused.
std::string Rewrite(std::string_view text);

/// Why a text is refused; empty when it is read.
std::string GetRefusal(std::string_view text);

/// A document with more members behind format and version.
std::string MakeText(std::string_view members);

/// A document with the tags on a square of four points and two triangles, object 1.
std::string MakeTagText(std::string_view tags);

/// A document that holds every member there is, each at least once with a content that is not its default, in the order in which
/// they are written.
extern const std::string_view kEverything;

/// The nodes that are alive.
Int CountNodes();

}  // namespace q7z::test
