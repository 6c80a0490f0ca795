#pragma once

// Url: where a thing lies. A local path (scheme file), a path relative to something (scheme relative) or an address of another
// scheme. Paths are kept decoded, with "/" between components. A value type.

#include "framework/result.h"
#include "framework/string.h"

namespace q7z
{

enum UrlScheme : Byte
{
  URLSCHEME_NONE,        ///< an empty Url
  URLSCHEME_FILESYSTEM,  ///< "file": an absolute or current-folder local path
  URLSCHEME_RELATIVE,    ///< "relative": a path below a folder that is still to be named
  URLSCHEME_HTTP,        ///< "http"
  URLSCHEME_OTHER,       ///< any other scheme, such as "https" or "data"
};

class Url
{
public:
  Url() noexcept = default;

  /// From the text of a reference as files hold it: "a/b.bin" is relative, "/a/b.bin" and "file:///a/b.bin" are local,
  /// "http://..." and other schemes are kept as text. Percent codes in a path are decoded, once.
  static Result<Url> FromReference(const String& text) noexcept;

  /// The same from a reference whose percent codes were decoded before: what looks like one is part of a name.
  static Result<Url> FromDecodedReference(const String& text) noexcept;

  /// From a local path, taken as it stands (no percent codes). A zero byte in a path is an illegal argument here and above.
  static Result<Url> FromPath(const String& path) noexcept;

  UrlScheme GetScheme() const noexcept { return _scheme; }

  /// The decoded path of the schemes file and relative; of others the text behind the scheme.
  const String& GetPath() const noexcept { return _path; }

  /// The whole text, such as "file:///a/b.bin" or "relative:///b.bin"; a path in it stays decoded.
  Result<String> GetUrl() const noexcept;

  Bool IsEmpty() const noexcept { return _scheme == URLSCHEME_NONE; }
  Bool IsPopulated() const noexcept { return _scheme != URLSCHEME_NONE; }

  /// The folder that holds what the Url names; "." for a bare file name.
  Result<Url> GetDirectory() const noexcept;

  /// One more component at the end. The name stays one component: separators in it become "_", and so does a name that is
  /// empty, "." or "..".
  Result<Url> Append(const String& name) const noexcept;

  /// A relative path at the end, component by component; ".." and "." keep their meaning and are not resolved here.
  Result<Url> AppendPath(const Url& relative) const noexcept;

  /// The text behind the last "." of the last component, without the dot; empty without one.
  String GetSuffix() const noexcept;

  /// The last component.
  String GetName() const noexcept;

  friend Bool operator==(const Url&, const Url&) noexcept = default;

private:
  static Result<Url> MakeFromReference(const String& text, Bool isDecoded) noexcept;
  Url(UrlScheme scheme, String path) noexcept : _scheme(scheme), _path(std::move(path)) {}
  UrlScheme _scheme = URLSCHEME_NONE;
  String _path;
  String _schemeText;  // of URLSCHEME_OTHER alone
};

/// "%41" becomes "A"; a "%" without two hexadecimal digits stays as it is.
Result<String> DecodePercent(const String& text) noexcept;

}  // namespace q7z
