#include "host/scenefile/textureurl.h"

#include <algorithm>

namespace q7z
{

namespace
{

constexpr std::string_view kRelativeScheme = "relative:";

String View(std::string_view text) noexcept
{
  return String(text.data(), static_cast<Int>(text.size()));
}

/// "%" as its percent code, and what else would be taken for something.
std::string Encode(std::string_view path, std::string_view special)
{
  std::string text;
  for (const char byte : path)
  {
    if (byte == '%')
      text += "%25";
    else if (byte == ':' && special.find(byte) != std::string_view::npos)
      text += "%3A";
    else
      text += byte;
  }
  return text;
}

Bool IsAbsolute(std::string_view path) noexcept
{
  return path.starts_with('/') || path.starts_with('\\') || (path.size() > 1 && path[1] == ':');
}

/// The path below the folder; empty when it does not lie there.
std::string_view GetPathBelow(std::string_view path, std::string_view folder) noexcept
{
  if (folder.empty())
    return IsAbsolute(path) ? std::string_view() : path;
  if (!path.starts_with(folder))
    return {};
  path.remove_prefix(folder.size());
  if (!folder.ends_with('/'))
  {
    if (!path.starts_with('/'))
      return {};
    path.remove_prefix(1);
  }
  return path.starts_with('/') ? std::string_view() : path;
}

}  // namespace

std::string MakeTextureText(const Url& url, std::string_view folder, std::string_view imageFolder)
{
  const std::string_view path = url.GetPath().GetView();
  switch (url.GetScheme())
  {
    case URLSCHEME_NONE: return {};
    case URLSCHEME_RELATIVE: return "relative:///" + Encode(path, "");
    case URLSCHEME_FILESYSTEM: break;
    default:
    {
      const Result<String> text = url.GetUrl();
      if (text.HasError())
        throw std::bad_alloc();
      return std::string(text.GetValue().GetView());
    }
  }
  const std::string_view belowImages = imageFolder.empty() ? imageFolder : GetPathBelow(path, imageFolder);
  const std::string_view below = belowImages.empty() ? GetPathBelow(path, folder) : belowImages;
  if (!below.empty())
    return Encode(below, ":");  // a colon would make what stands before it a scheme or a drive
  const Bool isDrive = path.size() > 1 && path[1] == ':';
  return (path.starts_with('/') ? "file://" : isDrive ? "file:///" : "file:") + Encode(path, "");
}

Result<Url> ReadTextureText(std::string_view text, std::string_view folder)
{
  // A Url that is no local path keeps parts of the text it is made from, and outlives this one.
  ASSIGN_OR_RETURN(const String ownText, String::Create(text));
  ASSIGN_OR_RETURN(Url url, Url::FromReference(ownText));
  const std::string_view start = text.substr(0, kRelativeScheme.size());
  const Bool saysRelative = View(start).EqualsIgnoringCase(View(kRelativeScheme));
  if (url.GetScheme() != URLSCHEME_RELATIVE || saysRelative)
    return url;
  std::string path(folder);
  if (!path.empty() && !path.ends_with('/'))
    path += '/';
  path += url.GetPath().GetView();
  ASSIGN_OR_RETURN(const String whole, String::Create(path));
  return Url::FromPath(whole);
}

}  // namespace q7z
