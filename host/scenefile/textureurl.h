#pragma once

// How a scene document spells the files of textures: a file below the document's folder as a relative reference, so that both
// can be moved together; any other as a URL with its scheme. Percent codes keep every path.

#include <string>
#include <string_view>

#include "framework/url.h"

namespace q7z
{

/// @param folder  with "/" between components; empty for the current one. @param imageFolder  files below this one are relative, too;
///   empty for none. Throws bad_alloc.
std::string MakeTextureText(const Url& url, std::string_view folder, std::string_view imageFolder = {});

/// The way back. @return an error for a reference that no Url can be made of.
Result<Url> ReadTextureText(std::string_view text, std::string_view folder);

}  // namespace q7z
