#include "host/services/headlessfiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#include "framework/check.h"

namespace q7z
{

namespace
{

// What the kernel reads or writes in one call.
constexpr Int kLargestCall = Int(1) << 30;

/// An open file. The position is ours, so that a seek costs no call.
class HeadlessFile : public HostFile
{
public:
  int fd = -1;
  Int position = 0;
  Int length = 0;
  BYTEORDER order = BYTEORDER::V_MOTOROLA;
};

HeadlessFile* ToHeadless(HostFile* file) noexcept
{
  return static_cast<HeadlessFile*>(file);
}
const HeadlessFile* ToHeadless(const HostFile* file) noexcept
{
  return static_cast<const HeadlessFile*>(file);
}

int GetOpenFlags(FILEOPEN mode) noexcept
{
  switch (mode)
  {
    case FILEOPEN::READ:
      // A pipe must not block the open.
      return O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    case FILEOPEN::WRITE: return O_WRONLY | O_CLOEXEC | O_CREAT | O_TRUNC;
    case FILEOPEN::APPEND: return O_WRONLY | O_CLOEXEC | O_CREAT | O_APPEND;
  }
  return O_RDONLY;
}

Int SmallerOf(Int a, Int b) noexcept
{
  return a < b ? a : b;
}

Error MakeIoError(const std::string& text) noexcept
{
  const Result<String> message = String::Create(text);
  return message.HasError() ? message.GetError() : MAKE_ERROR(ErrorClass::kIo, message.GetValue());
}

}  // namespace

void FilePolicy::SetInput(const std::string& input, bool allowOutside, FileWarnings* warnings)
{
  _folder.clear();
  _refused.clear();
  _warnings = warnings;
  const std::string resolved = ResolvePath(input);
  if (allowOutside || resolved.empty())
    return;
  _folder = resolved.substr(0, resolved.rfind('/') + 1);
}

bool FilePolicy::MayRead(const std::string& path)
{
  if (_folder.empty())
    return true;
  const std::string resolved = ResolvePath(path);
  if (resolved.empty() || resolved.starts_with(_folder))
    return true;  // what is not there is found missing when it is opened
  if (_refused.insert(path).second && _warnings)
    _warnings->AddWarning("\"" + path + "\" lies outside the input's folder and is not read; --allow-outside permits it");
  return false;
}

HostFile* HeadlessFileTable::Alloc() noexcept
{
  return new (std::nothrow) HeadlessFile;
}

void HeadlessFileTable::Free(HostFile* file) noexcept
{
  Close(file);
  delete ToHeadless(file);
}

Bool HeadlessFileTable::Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG, BYTEORDER order, UInt32,
                             UInt32) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  if (self.fd >= 0)
    return false;
  try
  {
    const std::string path = ToStd(name.GetPath());
    if (mode == FILEOPEN::READ && !_policy.MayRead(path))
      return false;
    self.fd = open(path.c_str(), GetOpenFlags(mode), 0666);
  }
  catch (...)
  {
    return false;
  }
  struct stat status = {};
  if (self.fd >= 0 && (fstat(self.fd, &status) != 0 || !S_ISREG(status.st_mode)))
    Close(file);
  if (self.fd < 0)
    return false;
  self.length = status.st_size;
  self.position = mode == FILEOPEN::APPEND ? self.length : 0;
  self.order = order;
  return true;
}

Bool HeadlessFileTable::Close(HostFile* file) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  if (self.fd < 0)
    return true;
  const int result = close(self.fd);
  self.fd = -1;
  return result == 0;
}

Bool HeadlessFileTable::Seek(HostFile* file, Int distance) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  if (self.fd < 0 || distance < 0 || distance > INT64_MAX - self.position)
    return false;
  self.position += distance;
  return true;
}

Int HeadlessFileTable::GetPosition(const HostFile* file) noexcept
{
  return ToHeadless(file)->position;
}
Int HeadlessFileTable::GetLength(const HostFile* file) noexcept
{
  return ToHeadless(file)->length;
}

Int HeadlessFileTable::ReadBytes(HostFile* file, void* target, Int byteCount) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  Int done = 0;
  while (done < byteCount)
  {
    const size_t wanted = static_cast<size_t>(SmallerOf(byteCount - done, kLargestCall));
    const ssize_t count = pread(self.fd, static_cast<Byte*>(target) + done, wanted, self.position);
    if (count < 0 && errno == EINTR)
      continue;
    if (count < 0)
      return -1;
    if (count == 0)
      break;
    done += count;
    self.position += count;
  }
  return done;
}

Bool HeadlessFileTable::WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  Int done = 0;
  while (done < byteCount)
  {
    const size_t wanted = static_cast<size_t>(SmallerOf(byteCount - done, kLargestCall));
    const ssize_t count = write(self.fd, static_cast<const Byte*>(source) + done, wanted);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return false;
    done += count;
    self.position += count;
  }
  return true;
}

Bool HeadlessFileTable::ReadUInt32(HostFile* file, UInt32* value) noexcept
{
  UInt32 word = 0;
  if (ReadBytes(file, &word, sizeof(word)) != sizeof(word))
    return false;
  *value = ToHeadless(file)->order == BYTEORDER::V_INTEL ? word : __builtin_bswap32(word);
  return true;
}

Bool HeadlessFileTable::Exists(const HostFilename& name) noexcept
{
  try
  {
    const std::string path = ToStd(name.GetPath());
    return GetFileSystemType(path) != HostFileSystemType::kNone && _policy.MayRead(path);
  }
  catch (...)
  {
    return false;
  }
}

HostFileSystemType HeadlessUrlService::GetType(const Url& url) noexcept
{
  if (url.GetScheme() != URLSCHEME_FILESYSTEM)
    return HostFileSystemType::kNone;
  try
  {
    return GetFileSystemType(ToStd(url.GetPath()));
  }
  catch (...)
  {
    return HostFileSystemType::kNone;
  }
}

Result<void> HeadlessUrlService::Write(const Url& url, const Byte* bytes, Int byteCount) noexcept
{
  try
  {
    const std::string failure = WriteFileWhole(ToStd(url.GetPath()), bytes, static_cast<size_t>(byteCount));
    return failure.empty() ? Result<void>() : MakeIoError(failure);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<void> HeadlessUrlService::CreateFolder(const Url& url) noexcept
{
  try
  {
    const std::string path = ToStd(url.GetPath());
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return error ? MakeIoError("cannot make the folder \"" + path + "\": " + error.message()) : Result<void>();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<Url> HeadlessUrlService::GetBaseFolder() noexcept
{
  if (_baseFolder.empty())
    return MAKE_ERROR(ErrorClass::kIo, "There is no folder for the textures of this load."_s);
  ASSIGN_OR_RETURN(const String folder, String::Create(_baseFolder));
  return Url::FromPath(folder);
}

}  // namespace q7z
