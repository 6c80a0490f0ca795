#include "host/services/filereading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "framework/check.h"

namespace q7z
{

namespace
{

class Descriptor
{
public:
  explicit Descriptor(int fd) noexcept : _fd(fd) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor()
  {
    if (_fd >= 0)
      close(_fd);
  }
  int Get() const noexcept { return _fd; }
  int Close() noexcept
  {
    const int result = close(_fd);
    _fd = -1;
    return result;
  }

private:
  int _fd;
};

Error FileError(const String& path) noexcept
{
  const char* const reason = std::strerror(errno);
  const Result<String> text =
    String::Format("Cannot read \"@\": @"_s, {path, String(reason, static_cast<Int>(std::strlen(reason)))});
  return text.HasError() ? text.GetError() : MAKE_ERROR(ErrorClass::kIo, text.GetValue());
}

/// Bytes read, short only at the end of the file; -1 when the device failed.
Int ReadAll(int fd, Char* target, Int byteCount) noexcept
{
  Int done = 0;
  while (done < byteCount)
  {
    const ssize_t count = read(fd, target + done, static_cast<size_t>(byteCount - done));
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

bool WriteAll(int fd, const char* bytes, size_t byteCount) noexcept
{
  while (byteCount > 0)
  {
    const ssize_t count = write(fd, bytes, byteCount);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return false;
    bytes += count;
    byteCount -= static_cast<size_t>(count);
  }
  return true;
}

std::string GetFolder(const std::string& path)
{
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

Result<BlockOwner> ReadFileIntoBlock(const String& path, Int padding) noexcept
{
  std::string name;
  try
  {
    name = ToStd(path);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
  const Descriptor file(open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status = {};
  if (file.Get() < 0 || fstat(file.Get(), &status) != 0)
    return FileError(path);
  if (!S_ISREG(status.st_mode))
  {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return FileError(path);
  }
  const Int length = status.st_size;
  BlockOwner block(StringBlock::Create(length + padding));
  if (!block)
    return Error::OutOfMemory();
  const Int count = ReadAll(file.Get(), block.Get()->GetBytes(), length);
  if (count < 0)
    return FileError(path);
  // A file that has shrunk meanwhile reads as zeros from there on.
  std::memset(block.Get()->GetBytes() + count, 0, static_cast<size_t>(length - count + padding));
  return block;
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

std::string ResolvePath(const std::string& path)
{
  char* const resolved = realpath(path.c_str(), nullptr);
  std::string text = resolved ? resolved : "";
  std::free(resolved);
  return text;
}

std::string WriteFileWhole(const std::string& path, const void* bytes, size_t byteCount)
{
  const std::string folder = GetFolder(path);
  std::string temporary = folder + "/.q7z-XXXXXX";
  Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (file.Get() < 0)
    return "cannot write in \"" + folder + "\": " + std::strerror(errno);
  struct stat old = {};
  // A new file gets the usual rights, one that is replaced keeps its own.
  const mode_t mask = umask(0);
  umask(mask);
  const mode_t mode = stat(path.c_str(), &old) == 0 ? old.st_mode & 07777 : 0666 & ~mask;
  const bool written = WriteAll(file.Get(), static_cast<const char*>(bytes), byteCount) && fchmod(file.Get(), mode) == 0 &&
                       fsync(file.Get()) == 0 && file.Close() == 0 && std::rename(temporary.c_str(), path.c_str()) == 0;
  if (written)
    return "";
  const std::string reason = std::strerror(errno);
  unlink(temporary.c_str());
  return "cannot write \"" + path + "\": " + reason;
}

}  // namespace q7z
