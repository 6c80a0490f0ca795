#include "framework/url.h"

#include "framework/basearray.h"
#include "framework/check.h"

namespace q7z
{

namespace
{

constexpr Bool IsAlpha(Char c) noexcept
{
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr Bool IsSchemeByte(Char c) noexcept
{
  return IsAlpha(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

/// The length of "scheme" in "scheme:rest", 0 without one. A single letter is a drive, not a scheme.
Int GetSchemeLength(const String& text) noexcept
{
  const Int colon = text.FindFirst(':');
  if (colon < 2 || !IsAlpha(text.GetBytes()[0]))
    return 0;
  for (Int i = 1; i < colon; ++i)
  {
    if (!IsSchemeByte(text.GetBytes()[i]))
      return 0;
  }
  return colon;
}

Bool IsDrivePath(const String& text) noexcept
{
  return text.GetByteCount() >= 2 && IsAlpha(text.GetBytes()[0]) && text.GetBytes()[1] == ':';
}

/// The path behind "//authority" of a URL's rest.
String SkipAuthority(const String& rest) noexcept
{
  if (!rest.StartsWith("//"_s))
    return rest;
  const String behind = rest.GetPart(2, rest.GetByteCount());
  const Int slash = behind.FindFirst('/');
  return slash < 0 ? String() : behind.GetPart(slash, behind.GetByteCount());
}

Int GetHexDigit(Char c) noexcept
{
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// A system that ends paths with a zero would open another file than the one that was meant.
Result<void> CheckPath(const String& path) noexcept
{
  if (path.FindFirst('\0') >= 0)
    return MAKE_ERROR(ErrorClass::kIllegalArgument, "A path cannot hold a zero byte."_s);
  return {};
}

Result<String> DecodePath(const String& text, Bool isDecoded) noexcept
{
  ASSIGN_OR_RETURN(String path, isDecoded ? Result<String>(text) : DecodePercent(text));
  RETURN_IF_ERROR(CheckPath(path));
  return path;
}

/// "/C:/a" as "C:/a": behind the empty host of a URL a drive has a slash before it.
String DropSlashOfDrive(const String& path) noexcept
{
  const String rest = path.GetPart(1, path.GetByteCount());
  return path.StartsWith("/"_s) && IsDrivePath(rest) ? rest : path;
}

String TrimLeadingSlashes(String path) noexcept
{
  while (path.StartsWith("/"_s))
    path = path.GetPart(1, path.GetByteCount());
  return path;
}

}  // namespace

Result<Url> Url::FromReference(const String& text) noexcept
{
  return MakeFromReference(text, false);
}

Result<Url> Url::FromDecodedReference(const String& text) noexcept
{
  return MakeFromReference(text, true);
}

Result<Url> Url::MakeFromReference(const String& text, Bool isDecoded) noexcept
{
  if (text.IsEmpty())
    return Url();
  const Int schemeLength = GetSchemeLength(text);
  if (schemeLength == 0)
  {
    if (text.StartsWith("//"_s))
    {
      Url url(URLSCHEME_OTHER, text);
      return url;
    }
    const Bool local = text.StartsWith("/"_s) || IsDrivePath(text);
    ASSIGN_OR_RETURN(String path, DecodePath(text, isDecoded));
    return local ? Url(URLSCHEME_FILESYSTEM, path) : Url(URLSCHEME_RELATIVE, TrimLeadingSlashes(path));
  }
  const String scheme = text.GetPart(0, schemeLength);
  const String rest = text.GetPart(schemeLength + 1, text.GetByteCount());
  if (scheme.EqualsIgnoringCase("file"_s))
  {
    ASSIGN_OR_RETURN(String path, DecodePath(SkipAuthority(rest), isDecoded));
    return Url(URLSCHEME_FILESYSTEM, DropSlashOfDrive(path));
  }
  if (scheme.EqualsIgnoringCase("relative"_s))
  {
    ASSIGN_OR_RETURN(String path, DecodePath(rest, isDecoded));
    return Url(URLSCHEME_RELATIVE, TrimLeadingSlashes(path));
  }
  Url url(scheme.EqualsIgnoringCase("http"_s) ? URLSCHEME_HTTP : URLSCHEME_OTHER, rest);
  url._schemeText = scheme;
  return url;
}

Result<Url> Url::FromPath(const String& path) noexcept
{
  RETURN_IF_ERROR(CheckPath(path));
  return path.IsEmpty() ? Url() : Url(URLSCHEME_FILESYSTEM, path);
}

Result<String> Url::GetUrl() const noexcept
{
  switch (_scheme)
  {
    case URLSCHEME_NONE: return String();
    case URLSCHEME_FILESYSTEM:
      return String::Join({_path.StartsWith("/"_s) ? "file://"_s : IsDrivePath(_path) ? "file:///"_s : "file:"_s, _path});
    case URLSCHEME_RELATIVE: return String::Join({"relative:///"_s, _path});
    case URLSCHEME_HTTP:
    case URLSCHEME_OTHER: break;
  }
  return _schemeText.IsEmpty() ? Result<String>(_path) : String::Join({_schemeText, ":"_s, _path});
}

Result<Url> Url::GetDirectory() const noexcept
{
  Url directory(*this);
  const Int slash = _path.FindLast('/');
  // The slash of a root stays: "/" and "C:/" are folders, "" and "C:" are something else.
  const Bool isRoot = slash == 0 || (slash == 2 && IsDrivePath(_path));
  directory._path = slash < 0 ? "."_s : _path.GetPart(0, isRoot ? slash + 1 : slash);
  return directory;
}

Result<Url> Url::Append(const String& name) const noexcept
{
  if (name.IsEmpty() || name == "."_s || name == ".."_s)
    return AppendPath(Url(URLSCHEME_RELATIVE, "_"_s));
  BaseArray<Char> bytes;
  RETURN_IF_ERROR(bytes.AppendCopies(name.GetBytes(), name.GetByteCount()));
  for (Char& byte : bytes)
  {
    if (byte == '/' || byte == '\\' || byte == '\0')
      byte = '_';
  }
  ASSIGN_OR_RETURN(String component, String::Create({bytes.GetFirst(), static_cast<size_t>(bytes.GetCount())}));
  return AppendPath(Url(URLSCHEME_RELATIVE, std::move(component)));
}

Result<Url> Url::AppendPath(const Url& relative) const noexcept
{
  if (relative._path.IsEmpty())
    return *this;
  Url joined(*this);
  const Bool needsSlash = _path.IsPopulated() && _path.GetBytes()[_path.GetByteCount() - 1] != '/';
  ASSIGN_OR_RETURN(joined._path, String::Join({_path, needsSlash ? "/"_s : String(), TrimLeadingSlashes(relative._path)}));
  if (joined._scheme == URLSCHEME_NONE)
    joined._scheme = URLSCHEME_RELATIVE;
  return joined;
}

String Url::GetSuffix() const noexcept
{
  const String name = GetName();
  const Int dot = name.FindLast('.');
  return dot < 0 ? String() : name.GetPart(dot + 1, name.GetByteCount());
}

String Url::GetName() const noexcept
{
  const Int slash = _path.FindLast('/');
  return _path.GetPart(slash + 1, _path.GetByteCount());
}

Result<String> DecodePercent(const String& text) noexcept
{
  if (text.FindFirst('%') < 0)
    return text;
  BaseArray<Char> bytes;
  RETURN_IF_ERROR(bytes.Reserve(text.GetByteCount()));
  for (Int i = 0; i < text.GetByteCount(); ++i)
  {
    const Char* const at = text.GetBytes() + i;
    const Bool coded = *at == '%' && i + 2 < text.GetByteCount() && GetHexDigit(at[1]) >= 0 && GetHexDigit(at[2]) >= 0;
    RETURN_IF_ERROR(bytes.Append(coded ? static_cast<Char>(GetHexDigit(at[1]) * 16 + GetHexDigit(at[2])) : *at));
    i += coded ? 2 : 0;
  }
  return String::Create({bytes.GetFirst(), static_cast<size_t>(bytes.GetCount())});
}

}  // namespace q7z
