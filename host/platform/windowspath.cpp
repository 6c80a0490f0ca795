#include "host/platform/windowspath.h"

#include <cerrno>

// Behind all headers of ours, since its macros rename what they meet.
#include <windows.h>

namespace q7z
{

namespace
{

constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
constexpr std::wstring_view kLongServerPrefix = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevicePrefix = L"\\\\.\\";

int ToErrno(DWORD reason) noexcept
{
  switch (reason)
  {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_NOT_READY: return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT: return EACCES;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS: return EEXIST;
    case ERROR_DIRECTORY: return ENOTDIR;
    case ERROR_DIR_NOT_EMPTY: return ENOTEMPTY;
    case ERROR_FILENAME_EXCED_RANGE: return ENAMETOOLONG;
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_DISK_FULL: return ENOSPC;
    case ERROR_TOO_MANY_OPEN_FILES: return EMFILE;
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA: return EPIPE;
    case ERROR_OPERATION_ABORTED: return EINTR;
    case ERROR_NOT_SAME_DEVICE: return EXDEV;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY: return ENOMEM;
    default: return EIO;
  }
}

std::wstring MakeAbsolute(const std::wstring& path)
{
  std::wstring absolute(MAX_PATH, L'\0');
  for (;;)
  {
    const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(absolute.size()), absolute.data(), nullptr);
    const bool fits = length < absolute.size();
    absolute.resize(length);
    if (fits)
      return absolute;
  }
}

}  // namespace

std::wstring ToWide(const std::string& text)
{
  const int byteCount = static_cast<int>(text.size());
  std::wstring wide(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), byteCount, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), byteCount, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string ToUtf8(const std::wstring& text)
{
  const int count = static_cast<int>(text.size());
  const int byteCount = WideCharToMultiByte(CP_UTF8, 0, text.data(), count, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<size_t>(byteCount), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), count, bytes.data(), byteCount, nullptr, nullptr);
  return bytes;
}

std::wstring ToSystemPath(const std::string& path)
{
  const std::wstring absolute = MakeAbsolute(ToWide(path));
  if (absolute.starts_with(kDevicePrefix) || absolute.starts_with(kLongPrefix))
    return absolute;
  if (absolute.empty() || absolute.find(L':', 2) != std::wstring::npos)
  {
    errno = path.empty() ? ENOENT : EINVAL;
    return L"";
  }
  const bool isOnServer = absolute.starts_with(L"\\\\");
  return isOnServer ? std::wstring(kLongServerPrefix) + absolute.substr(2) : std::wstring(kLongPrefix) + absolute;
}

std::string FromSystemPath(const std::wstring& path)
{
  std::string text = path.starts_with(kLongServerPrefix) ? "//" + ToUtf8(path.substr(kLongServerPrefix.size()))
                     : path.starts_with(kLongPrefix)     ? ToUtf8(path.substr(kLongPrefix.size()))
                                                         : ToUtf8(path);
  for (char& byte : text)
    byte = byte == '\\' ? '/' : byte;
  return text;
}

bool IsDevicePath(const std::wstring& path)
{
  return path.starts_with(kDevicePrefix);
}

bool KeepReason() noexcept
{
  errno = ToErrno(GetLastError());
  return false;
}

}  // namespace q7z
