#pragma once

// Names and texts between UTF-8, which the host has, and UTF-16, which Windows has; and the reasons of its failures as those of errno.

#include <string>

namespace q7z
{

/// Bytes that are no UTF-8 become U+FFFD.
std::wstring ToWide(const std::string& text);
/// Half a surrogate pair becomes U+FFFD.
std::string ToUtf8(const std::wstring& text);

/// A path as the system takes it at any length: absolute, with backslashes and the prefix that switches its limits off. A device
/// keeps its own name. Empty, with errno set, when no file can have the name: a component with a colon would name a stream inside
/// of a file.
std::wstring ToSystemPath(const std::string& path);

/// The reverse, for a path of the system: without the prefix, with "/".
std::string FromSystemPath(const std::wstring& path);

/// Whether a path of ToSystemPath names a device.
bool IsDevicePath(const std::wstring& path);

/// Sets errno to what the calling thread's last failure means. @return false, for the caller to pass on.
bool KeepReason() noexcept;

}  // namespace q7z
