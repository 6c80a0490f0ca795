#include "host/services/headlessfiles.h"

#include <algorithm>
#include <bit>
#include <new>

#include "framework/check.h"

namespace q7z
{

namespace
{

static_assert(std::endian::native == std::endian::little);

/// An open file. The position is ours, so that a seek costs no call of the system.
class HeadlessFile : public HostFile
{
public:
  PlatformFile file;
  Int position = 0;
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

PlatformOpen GetPlatformMode(FILEOPEN mode) noexcept
{
  switch (mode)
  {
    case FILEOPEN::READ: return PlatformOpen::kRead;
    case FILEOPEN::WRITE: return PlatformOpen::kReplace;
    case FILEOPEN::APPEND: return PlatformOpen::kContinue;
  }
  return PlatformOpen::kRead;
}

std::string WithSlash(const std::string& folder)
{
  return folder.ends_with('/') ? folder : folder + "/";
}

Bool HasPath(const Url& url) noexcept
{
  return url.GetScheme() == URLSCHEME_FILESYSTEM;
}

Error MakeSchemeError() noexcept
{
  return MAKE_ERROR(ErrorClass::kIllegalArgument, "Only local files and folders can be written."_s);
}

}  // namespace

void FilePolicy::Restrict(const std::string& input, FileWarnings* warnings)
{
  Lift();
  _restricted = true;  // holds, whatever fails below
  const std::string folder = GetFolderOf(input);
  const std::string resolved = ResolvePath(folder);
  _input = ResolvePath(input);
  _namedFolder = WithSlash(folder);
  _folder = resolved.empty() ? "" : WithSlash(resolved);
  _warnings = warnings;
}

void FilePolicy::Allow(const std::string& folder)
{
  const std::string resolved = ResolvePath(folder);
  if (!resolved.empty())
    _allowed.emplace_back(WithSlash(folder), WithSlash(resolved));
}

void FilePolicy::Lift() noexcept
{
  _restricted = false;
  _namedFolder.clear();
  _folder.clear();
  _input.clear();
  _allowed.clear();
  _warnings = nullptr;
  _refused.clear();
}

std::string FilePolicy::FindReadable(const std::string& path)
{
  if (!_restricted)
    return path;
  std::string resolved = ResolvePath(path);
  if (resolved.empty() || IsInside(resolved))
    return resolved;
  const std::lock_guard lock(_mutex);
  if (_refused.insert(resolved).second)
    Warn(path);
  return "";
}

bool FilePolicy::IsInside(const std::string& resolved) const
{
  if (resolved == _input || (!_folder.empty() && resolved.starts_with(_folder)))
    return true;
  return std::any_of(_allowed.begin(), _allowed.end(), [&](const auto& folder) { return resolved.starts_with(folder.second); });
}

std::string FilePolicy::GetShortName(const std::string& path) const
{
  if (!_namedFolder.empty() && path.starts_with(_namedFolder))
    return path.substr(_namedFolder.size());
  for (const auto& [named, resolved] : _allowed)
  {
    const size_t parent = named.rfind('/', named.size() - 2) + 1;  // 0 for a folder without one
    if (path.starts_with(named))
      return path.substr(parent);
  }
  return path;
}

void FilePolicy::Warn(const std::string& path)
{
  if (!_warnings)
    return;
  _warnings->AddWarning("\"" + GetShortName(path) +
                        "\" lies outside the input's folder and is not read; --allow-outside permits it");
}

HostFile* HeadlessFileTable::Alloc() noexcept
{
  return new (std::nothrow) HeadlessFile;
}

void HeadlessFileTable::Free(HostFile* file) noexcept
{
  delete ToHeadless(file);
}

Bool HeadlessFileTable::Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG, BYTEORDER order, UInt32,
                             UInt32) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  try
  {
    const std::string named = ToStd(name.GetPath());
    const std::string path = mode == FILEOPEN::READ ? _policy.FindReadable(named) : named;
    if (path.empty() || !self.file.Open(path.c_str(), GetPlatformMode(mode)))
    {
      if (mode != FILEOPEN::READ)
        NoteWriteFailure();
      return false;
    }
  }
  catch (...)
  {
    return false;
  }
  self.position = mode == FILEOPEN::APPEND ? self.file.GetLength() : 0;
  self.order = order;
  return true;
}

Bool HeadlessFileTable::Close(HostFile* file) noexcept
{
  const Bool closed = ToHeadless(file)->file.Close();
  if (!closed)
    NoteWriteFailure();
  return closed;
}

Bool HeadlessFileTable::Seek(HostFile* file, Int distance) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  if (!self.file.IsOpen() || distance < 0 || distance > INT64_MAX - self.position)
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
  return ToHeadless(file)->file.GetLength();
}

Int HeadlessFileTable::ReadBytes(HostFile* file, void* target, Int byteCount) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  // Far beyond the end the system would call the position itself an error.
  if (self.file.IsOpen() && self.position > self.file.GetLength())
    return 0;
  const Int count = self.file.ReadAt(self.position, target, byteCount);
  self.position += count > 0 ? count : 0;
  return count;
}

Bool HeadlessFileTable::WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept
{
  HeadlessFile& self = *ToHeadless(file);
  if (byteCount < 0 || !self.file.WriteAt(self.position, source, byteCount))
  {
    NoteWriteFailure();
    return false;
  }
  self.position += byteCount;
  return true;
}

void HeadlessFileTable::NoteWriteFailure() noexcept
{
  try
  {
    _writeFailure = GetSystemReason();
  }
  catch (...)
  {
    _writeFailure.clear();  // the failure itself is still told
  }
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
    const std::string path = _policy.FindReadable(ToStd(name.GetPath()));
    return !path.empty() && GetFileSystemType(path) != HostFileSystemType::kNone;
  }
  catch (...)
  {
    return false;
  }
}

HeadlessUrlService::~HeadlessUrlService()
{
  if (!_temporaryFolder.empty())
    RemoveTree(_temporaryFolder);
}

std::string HeadlessUrlService::GetTexFolder() const
{
  const std::string& chosen = _baseFolder.empty() ? _temporaryFolder : _baseFolder;
  return chosen.empty() ? "" : WithSlash(chosen) + "tex";
}

HostFileSystemType HeadlessUrlService::GetType(const Url& url) noexcept
{
  if (!HasPath(url))
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
  if (!HasPath(url))
    return MakeSchemeError();
  try
  {
    const std::string failure = WriteFileWhole(ToStd(url.GetPath()), bytes, static_cast<size_t>(byteCount), &_writeFailure);
    return failure.empty() ? Result<void>() : MakeIoError(failure);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<void> HeadlessUrlService::CreateFolder(const Url& url) noexcept
{
  if (!HasPath(url))
    return MakeSchemeError();
  try
  {
    const std::string path = ToStd(url.GetPath());
    return MakeFolders(path) ? Result<void>() : MakeIoError("cannot make the folder \"" + path + "\": " + GetSystemReason());
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<Url> HeadlessUrlService::GetBaseFolder() noexcept
{
  try
  {
    if (_baseFolder.empty() && _temporaryFolder.empty())
      _temporaryFolder = MakeTemporaryFolder();
    const std::string& chosen = _baseFolder.empty() ? _temporaryFolder : _baseFolder;
    if (chosen.empty())
      return MakeIoError("cannot make a temporary folder: " + GetSystemReason());
    ASSIGN_OR_RETURN(const String folder, String::Create(chosen));
    return Url::FromPath(folder);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
