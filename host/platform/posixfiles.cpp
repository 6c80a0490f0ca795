// Files, folders and libraries by POSIX.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "framework/memory.h"
#include "host/platform/platform.h"

namespace q7z
{

namespace
{

// What the system reads or writes in one call.
constexpr Int kLargestCall = Int(1) << 30;
constexpr mode_t kNewFileRights = 0666;  // less what the process masks
constexpr int kTemporaryNameTries = 100;

int GetOpenFlags(PlatformOpen mode) noexcept
{
  // Not to be held up by a pipe, which is refused once it is seen to be one.
  constexpr int kCommon = O_CLOEXEC | O_NONBLOCK;
  switch (mode)
  {
    case PlatformOpen::kRead: return kCommon | O_RDONLY;
    case PlatformOpen::kReplace: return kCommon | O_WRONLY | O_CREAT | O_TRUNC;
    case PlatformOpen::kContinue: return kCommon | O_WRONLY | O_CREAT;
  }
  return kCommon | O_RDONLY;
}

int ToDescriptor(std::intptr_t handle) noexcept
{
  return static_cast<int>(handle);
}

size_t GetCallSize(Int rest) noexcept
{
  return static_cast<size_t>(rest < kLargestCall ? rest : kLargestCall);
}

constexpr size_t kLargePageBytes = size_t(2) << 20;

size_t RoundToLargePages(Int byteCount) noexcept
{
  return (static_cast<size_t>(byteCount) + kLargePageBytes - 1) / kLargePageBytes * kLargePageBytes;
}

/// A name in folder that is likely to be free.
std::string MakeTemporaryName(const std::string& folder)
{
  static std::atomic<unsigned> counter{0};
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  return folder + "/.q7z-" + std::to_string(getpid()) + "-" + std::to_string(now) + "-" + std::to_string(counter++);
}

}  // namespace

Bool PlatformFile::Open(const char* path, PlatformOpen mode) noexcept
{
  if (IsOpen())
  {
    errno = EBUSY;
    return false;
  }
  const int descriptor = open(path, GetOpenFlags(mode), kNewFileRights);
  _handle = descriptor;
  struct stat status = {};
  if (!IsOpen() || fstat(descriptor, &status) != 0)
  {
    Close();
    return false;
  }
  if (!S_ISREG(status.st_mode))
  {
    Close();
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return false;
  }
  _length = status.st_size;
  if (mode == PlatformOpen::kRead)
    posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);  // a hint
  return true;
}

Int PlatformFile::ReadAt(Int position, void* target, Int byteCount) noexcept
{
  Int done = 0;
  while (done < byteCount)
  {
    const ssize_t count =
      pread(ToDescriptor(_handle), static_cast<Byte*>(target) + done, GetCallSize(byteCount - done), position + done);
    if (count < 0 && errno == EINTR)
      continue;
    if (count < 0)
      return -1;
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
    const ssize_t count =
      pwrite(ToDescriptor(_handle), static_cast<const Byte*>(source) + done, GetCallSize(byteCount - done), position + done);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return false;
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
  const int result = close(ToDescriptor(_handle));
  _handle = kNoHandle;
  return result == 0;
}

std::string GetSystemReason()
{
  return std::strerror(errno);
}

std::string TakePath(const std::string& text)
{
  return text;
}

HostFileSystemType GetFileSystemType(const std::string& path)
{
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0)
    return HostFileSystemType::kNone;
  if (S_ISREG(status.st_mode))
    return HostFileSystemType::kFile;
  return S_ISDIR(status.st_mode) ? HostFileSystemType::kFolder : HostFileSystemType::kOther;
}

bool IsReadable(const std::string& path)
{
  return access(path.c_str(), R_OK) == 0;
}

bool IsSameFile(const std::string& a, const std::string& b)
{
  struct stat first = {};
  struct stat second = {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

std::string ResolvePath(const std::string& path)
{
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
  return resolved ? resolved.get() : "";
}

std::string GetFolderOf(const std::string& path)
{
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::FILE* OpenTemporaryStream(const std::string& folder, std::string& name)
{
  int handle = -1;
  for (int i = 0; handle < 0 && i < kTemporaryNameTries; ++i)
  {
    name = MakeTemporaryName(folder);
    handle = open(name.c_str(), O_WRONLY | O_CLOEXEC | O_CREAT | O_EXCL, kNewFileRights);
    if (handle < 0 && errno != EEXIST)
      return nullptr;
  }
  std::FILE* const stream = handle < 0 ? nullptr : fdopen(handle, "wb");
  if (handle >= 0 && !stream)
  {
    close(handle);
    RemoveFile(name);
  }
  return stream;
}

std::FILE* OpenDeviceStream(const std::string& path)
{
  return std::fopen(path.c_str(), "wb");
}

bool SyncStream(std::FILE* stream) noexcept
{
  return std::fflush(stream) == 0 && !std::ferror(stream) && fsync(fileno(stream)) == 0;
}

bool SyncFile(const std::string& path) noexcept
{
  const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  const bool isSynced = descriptor >= 0 && fsync(descriptor) == 0;
  const int reason = errno;
  if (descriptor >= 0)
    close(descriptor);
  errno = reason;
  return isSynced;
}

bool PutInPlace(const std::string& source, const std::string& target) noexcept
{
  struct stat old = {};
  if (stat(target.c_str(), &old) == 0)
    chmod(source.c_str(), old.st_mode & 0777);  // where the file system can keep them
  return std::rename(source.c_str(), target.c_str()) == 0;
}

void RemoveFile(const std::string& path) noexcept
{
  unlink(path.c_str());
}

std::string MakeTemporaryFolder()
{
  const char* const parent = std::getenv("TMPDIR");
  std::string folder = std::string(parent && *parent ? parent : "/tmp") + "/q7z-XXXXXX";
  return mkdtemp(folder.data()) ? folder : "";
}

bool MakeFolders(const std::string& path)
{
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error)
    errno = error.value();
  return !error;
}

bool IsEmptyFolder(const std::string& path)
{
  std::error_code error;
  return std::filesystem::is_directory(path, error) && std::filesystem::is_empty(path, error) && !error;
}

void RemoveEmptyFolder(const std::string& path) noexcept
{
  rmdir(path.c_str());
}

void RemoveTree(const std::string& path) noexcept
{
  try
  {
    std::error_code error;
    std::filesystem::remove_all(path, error);
  }
  catch (...)
  {
    return;  // without memory it stays for the system's own cleaning
  }
}

const char* const kLibrarySuffix = ".so";

PlatformLibrary::~PlatformLibrary()
{
  if (_library)
    dlclose(_library);
}

std::string PlatformLibrary::Load(const std::string& path)
{
  // A bare name would be looked for in the system's folders.
  const std::string exact = path.find('/') == std::string::npos ? "./" + path : path;
  _library = dlopen(exact.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (_library)
    return "";
  const char* const reason = dlerror();
  return reason ? reason : "unknown reason";
}

void* PlatformLibrary::Find(const char* name) const noexcept
{
  return _library ? dlsym(_library, name) : nullptr;
}

void* MapZeros(Int byteCount) noexcept
{
  // Aligned for large pages: more than is needed is mapped, and what sticks out goes back.
  const size_t size = RoundToLargePages(byteCount);
  void* const mapped = mmap(nullptr, size + kLargePageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED)
    return nullptr;
  Byte* const begin = static_cast<Byte*>(mapped);
  const size_t lead = (kLargePageBytes - reinterpret_cast<size_t>(begin) % kLargePageBytes) % kLargePageBytes;
  if (lead > 0)
    munmap(begin, lead);
  if (lead < kLargePageBytes)
    munmap(begin + lead + size, kLargePageBytes - lead);
  UseLargePages(begin + lead, static_cast<Int>(size));
  return begin + lead;
}

void UnmapZeros(void* memory, Int byteCount) noexcept
{
  munmap(memory, RoundToLargePages(byteCount));
}

}  // namespace q7z
