// Files, folders and libraries by the wide functions of Windows.

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <vector>

#include "host/platform/platform.h"
#include "host/platform/windowspath.h"

// Behind all headers of ours, since its macros rename what they meet.
#include <windows.h>

namespace q7z
{

namespace
{

// What the system reads or writes in one call.
constexpr Int kLargestCall = Int(1) << 30;
constexpr int kTemporaryNameTries = 100;
constexpr size_t kLongestPath = 1 << 15;  // that a name can be told in
// As files are shared on other systems: who reads or writes one does not keep others from it.
constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Closed with its object.
class OwnedHandle
{
public:
  explicit OwnedHandle(HANDLE handle) noexcept : _handle(handle) {}
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;
  ~OwnedHandle()
  {
    if (IsOpen())
      CloseHandle(_handle);
  }
  bool IsOpen() const noexcept { return _handle != INVALID_HANDLE_VALUE; }
  HANDLE Get() const noexcept { return _handle; }
  HANDLE Release() noexcept { return std::exchange(_handle, INVALID_HANDLE_VALUE); }

private:
  HANDLE _handle;
};

HANDLE ToHandle(std::intptr_t handle) noexcept
{
  return reinterpret_cast<HANDLE>(handle);
}

HANDLE OpenByMode(const std::wstring& path, PlatformOpen mode) noexcept
{
  const bool reads = mode == PlatformOpen::kRead;
  const DWORD creation = reads ? OPEN_EXISTING : mode == PlatformOpen::kReplace ? CREATE_ALWAYS : OPEN_ALWAYS;
  return CreateFileW(path.c_str(), reads ? GENERIC_READ : GENERIC_WRITE, kShared, nullptr, creation,
                     reads ? FILE_FLAG_SEQUENTIAL_SCAN : FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// A handle that only asks, of a file or a folder.
HANDLE OpenToAsk(const std::wstring& path) noexcept
{
  return CreateFileW(path.c_str(), 0, kShared, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool IsFolder(const std::wstring& path) noexcept
{
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

/// The part of a call from position on, which needs no seek.
OVERLAPPED At(Int position) noexcept
{
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(position);
  place.OffsetHigh = static_cast<DWORD>(position >> 32);
  return place;
}

DWORD GetCallSize(Int rest) noexcept
{
  return static_cast<DWORD>(rest < kLargestCall ? rest : kLargestCall);
}

/// A name in folder that is likely to be free.
std::string MakeTemporaryName(const std::string& folder, const char* prefix)
{
  static std::atomic<unsigned> counter{0};
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  return folder + "/" + prefix + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(now.QuadPart) + "-" +
         std::to_string(counter++);
}

/// A stream that owns the handle from here on. Null when there can be none.
std::FILE* ToStream(OwnedHandle& handle) noexcept
{
  const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle.Get()), _O_WRONLY | _O_BINARY);
  if (descriptor < 0)
    return nullptr;
  handle.Release();
  std::FILE* const stream = _fdopen(descriptor, "wb");
  if (!stream)
    _close(descriptor);
  return stream;
}

/// The entries of a folder, without the two for itself and the one above.
std::vector<WIN32_FIND_DATAW> ListFolder(const std::wstring& path)
{
  std::vector<WIN32_FIND_DATAW> entries;
  WIN32_FIND_DATAW entry;
  const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE)
    return entries;
  do
  {
    if (std::wcscmp(entry.cFileName, L".") != 0 && std::wcscmp(entry.cFileName, L"..") != 0)
      entries.push_back(entry);
  } while (FindNextFileW(search, &entry));
  FindClose(search);
  return entries;
}

/// Removes the files of a folder, and puts the folders in it, links left out, behind the list.
void RemoveFiles(const std::wstring& folder, std::vector<std::wstring>& folders)
{
  for (const WIN32_FIND_DATAW& entry : ListFolder(folder))
  {
    const std::wstring path = folder + L"\\" + entry.cFileName;
    const bool isFolder = entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
    if (!isFolder)
      DeleteFileW(path.c_str());
    else if (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)
      RemoveDirectoryW(path.c_str());
    else
      folders.push_back(path);
  }
}

}  // namespace

Bool PlatformFile::Open(const char* path, PlatformOpen mode) noexcept
{
  if (IsOpen())
  {
    errno = EBUSY;
    return false;
  }
  try
  {
    const std::wstring name = ToSystemPath(path);
    if (name.empty())
      return false;
    OwnedHandle handle(OpenByMode(name, mode));
    LARGE_INTEGER length;
    if (!handle.IsOpen() || !GetFileSizeEx(handle.Get(), &length))
    {
      KeepReason();
      errno = IsFolder(name) ? EISDIR : errno;
      return false;
    }
    if (GetFileType(handle.Get()) != FILE_TYPE_DISK)
    {
      errno = EINVAL;
      return false;
    }
    _length = length.QuadPart;
    _handle = reinterpret_cast<std::intptr_t>(handle.Release());
    return true;
  }
  catch (...)
  {
    errno = ENOMEM;
    return false;
  }
}

Int PlatformFile::ReadAt(Int position, void* target, Int byteCount) noexcept
{
  Int done = 0;
  while (done < byteCount)
  {
    OVERLAPPED place = At(position + done);
    DWORD count = 0;
    if (!ReadFile(ToHandle(_handle), static_cast<Byte*>(target) + done, GetCallSize(byteCount - done), &count, &place))
    {
      if (GetLastError() == ERROR_HANDLE_EOF)
        break;
      KeepReason();
      return -1;
    }
    if (count == 0)
      break;
    done += count;
  }
  return done;
}

Bool PlatformFile::WriteAt(Int position, const void* source, Int byteCount) noexcept
{
  Int done = 0;
  while (done < byteCount)
  {
    OVERLAPPED place = At(position + done);
    DWORD count = 0;
    if (!WriteFile(ToHandle(_handle), static_cast<const Byte*>(source) + done, GetCallSize(byteCount - done), &count, &place) ||
        count == 0)
      return KeepReason();
    done += count;
    if (position + done > _length)
      _length = position + done;
  }
  return IsOpen();
}

Bool PlatformFile::Close() noexcept
{
  if (!IsOpen())
    return true;
  const bool closed = CloseHandle(ToHandle(_handle));
  _handle = kNoHandle;
  return closed || KeepReason();
}

std::string GetSystemReason()
{
  return std::strerror(errno);
}

std::string TakePath(const std::string& text)
{
  std::string path = text;
  for (char& byte : path)
    byte = byte == '\\' ? '/' : byte;
  // "C:a" starts from that drive's own folder, which only the system knows.
  const bool isOfDrive = path.size() > 1 && path[1] == ':' && (path.size() == 2 || path[2] != '/');
  return isOfDrive ? FromSystemPath(ToSystemPath(path)) : path;
}

HostFileSystemType GetFileSystemType(const std::string& path)
{
  const std::wstring name = ToSystemPath(path);
  if (name.empty())
    return HostFileSystemType::kNone;
  if (IsDevicePath(name))
    return HostFileSystemType::kOther;
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
  {
    KeepReason();
    return HostFileSystemType::kNone;
  }
  return attributes & FILE_ATTRIBUTE_DIRECTORY ? HostFileSystemType::kFolder : HostFileSystemType::kFile;
}

bool IsReadable(const std::string& path)
{
  const std::wstring name = ToSystemPath(path);
  return !name.empty() && (OwnedHandle(OpenByMode(name, PlatformOpen::kRead)).IsOpen() || KeepReason());
}

bool IsSameFile(const std::string& a, const std::string& b)
{
  const OwnedHandle first(OpenToAsk(ToSystemPath(a)));
  const OwnedHandle second(OpenToAsk(ToSystemPath(b)));
  BY_HANDLE_FILE_INFORMATION one;
  BY_HANDLE_FILE_INFORMATION other;
  return first.IsOpen() && second.IsOpen() && GetFileInformationByHandle(first.Get(), &one) &&
         GetFileInformationByHandle(second.Get(), &other) && one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
         one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

std::string ResolvePath(const std::string& path)
{
  const std::wstring name = ToSystemPath(path);
  const OwnedHandle handle(name.empty() ? INVALID_HANDLE_VALUE : OpenToAsk(name));
  if (!handle.IsOpen())
    return "";
  // Not every version counts alike what a longer one would need.
  std::wstring resolved(kLongestPath, L'\0');
  const DWORD length = GetFinalPathNameByHandleW(handle.Get(), resolved.data(), static_cast<DWORD>(kLongestPath), 0);
  return length < kLongestPath ? FromSystemPath(resolved.substr(0, length)) : "";
}

std::string GetFolderOf(const std::string& path)
{
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos)
    return ".";
  const bool isRoot = slash == 0 || (slash == 2 && path[1] == ':');
  return path.substr(0, isRoot ? slash + 1 : slash);
}

std::FILE* OpenTemporaryStream(const std::string& folder, std::string& name)
{
  for (int i = 0; i < kTemporaryNameTries; ++i)
  {
    name = MakeTemporaryName(folder, ".q7z-");
    const std::wstring path = ToSystemPath(name);
    if (path.empty())
      return nullptr;
    OwnedHandle handle(CreateFileW(path.c_str(), GENERIC_WRITE, kShared, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (handle.IsOpen())
    {
      std::FILE* const stream = ToStream(handle);
      if (!stream)
        RemoveFile(name);
      return stream;
    }
    KeepReason();
    if (errno != EEXIST)
      return nullptr;
  }
  return nullptr;
}

std::FILE* OpenDeviceStream(const std::string& path)
{
  OwnedHandle handle(CreateFileW(ToSystemPath(path).c_str(), GENERIC_WRITE, kShared, nullptr, OPEN_EXISTING, 0, nullptr));
  if (handle.IsOpen())
    return ToStream(handle);
  KeepReason();
  return nullptr;
}

bool SyncStream(std::FILE* stream) noexcept
{
  if (std::fflush(stream) != 0 || std::ferror(stream))
    return false;
  return FlushFileBuffers(ToHandle(_get_osfhandle(_fileno(stream)))) || KeepReason();
}

bool SyncFile(const std::string& path) noexcept
{
  try
  {
    const OwnedHandle handle(OpenByMode(ToSystemPath(path), PlatformOpen::kContinue));
    return (handle.IsOpen() && FlushFileBuffers(handle.Get())) || KeepReason();
  }
  catch (...)
  {
    errno = ENOMEM;
    return false;
  }
}

// The rights are those that the folder hands down.
bool PutInPlace(const std::string& source, const std::string& target) noexcept
{
  try
  {
    const std::wstring from = ToSystemPath(source);
    const std::wstring to = ToSystemPath(target);
    if (from.empty() || to.empty())
      return false;
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) || KeepReason();
  }
  catch (...)
  {
    errno = ENOMEM;
    return false;
  }
}

void RemoveFile(const std::string& path) noexcept
{
  try
  {
    DeleteFileW(ToSystemPath(path).c_str());
  }
  catch (...)
  {
    return;  // without memory it stays
  }
}

std::string MakeTemporaryFolder()
{
  std::wstring parent(MAX_PATH + 1, L'\0');
  parent.resize(GetTempPathW(static_cast<DWORD>(parent.size()), parent.data()));
  std::string folder = FromSystemPath(parent);
  while (folder.ends_with('/'))
    folder.pop_back();
  for (int i = 0; i < kTemporaryNameTries; ++i)
  {
    const std::string name = MakeTemporaryName(folder, "q7z-");
    if (CreateDirectoryW(ToSystemPath(name).c_str(), nullptr))
      return name;
    KeepReason();
    if (errno != EEXIST)
      break;
  }
  return "";
}

bool MakeFolders(const std::string& path)
{
  std::vector<std::string> missing;
  for (std::string folder = path; GetFileSystemType(folder) == HostFileSystemType::kNone; folder = GetFolderOf(folder))
  {
    if (!missing.empty() && folder == missing.back())
      return false;  // not even the root
    missing.push_back(folder);
  }
  for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder)
  {
    if (!CreateDirectoryW(ToSystemPath(*folder).c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
      return KeepReason();
  }
  if (GetFileSystemType(path) == HostFileSystemType::kFolder)
    return true;
  errno = ENOTDIR;
  return false;
}

bool IsEmptyFolder(const std::string& path)
{
  const std::wstring name = ToSystemPath(path);
  return IsFolder(name) && ListFolder(name).empty();
}

void RemoveEmptyFolder(const std::string& path) noexcept
{
  try
  {
    RemoveDirectoryW(ToSystemPath(path).c_str());
  }
  catch (...)
  {
    return;  // without memory it stays
  }
}

void RemoveTree(const std::string& path) noexcept
{
  try
  {
    std::vector<std::wstring> folders = {ToSystemPath(path)};
    for (size_t i = 0; i < folders.size(); ++i)
      RemoveFiles(std::wstring(folders[i]), folders);
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
      RemoveDirectoryW(folder->c_str());
  }
  catch (...)
  {
    return;  // without memory it stays for the system's own cleaning
  }
}

const char* const kLibrarySuffix = ".dll";

PlatformLibrary::~PlatformLibrary()
{
  if (_library)
    FreeLibrary(static_cast<HMODULE>(_library));
}

std::string PlatformLibrary::Load(const std::string& path)
{
  // With the prefix a library's own libraries would not be found beside it.
  const std::wstring prefixed = ToSystemPath(path);
  const std::wstring exact = prefixed.size() < MAX_PATH ? ToWide(FromSystemPath(prefixed)) : prefixed;
  std::wstring name = exact;
  for (wchar_t& letter : name)
    letter = letter == L'/' ? L'\\' : letter;
  _library = LoadLibraryExW(name.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (_library)
    return "";
  const DWORD reason = GetLastError();
  if (reason == ERROR_MOD_NOT_FOUND && GetFileSystemType(path) == HostFileSystemType::kNone)
    return GetSystemReason();
  if (reason == ERROR_BAD_EXE_FORMAT)
    return "it is no 64-bit library";
  return "the system's error " + std::to_string(reason);
}

void* PlatformLibrary::Find(const char* name) const noexcept
{
  return _library ? reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(_library), name)) : nullptr;
}

void* MapZeros(Int byteCount) noexcept
{
  return VirtualAlloc(nullptr, static_cast<SIZE_T>(byteCount), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void UnmapZeros(void* memory, Int) noexcept
{
  VirtualFree(memory, 0, MEM_RELEASE);
}

}  // namespace q7z
