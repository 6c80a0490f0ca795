#include "host/services/wholefile.h"

#include "host/platform/platform.h"

namespace q7z
{

WholeFile::~WholeFile()
{
  Discard();
}

std::string WholeFile::Open(const std::string& target)
{
  Discard();
  _named = target;
  _target = ResolvePath(target);
  if (_target.empty())
    _target = target;
  const HostFileSystemType type = GetFileSystemType(_target);
  if (type == HostFileSystemType::kFolder)
    return Describe("it is a folder");
  std::string temporary;
  _stream = type == HostFileSystemType::kOther ? OpenDeviceStream(_target) : OpenTemporaryStream(GetFolderOf(_target), temporary);
  if (!_stream)
    return Describe(GetSystemReason());
  _temporary = std::move(temporary);
  return "";
}

const std::string& WholeFile::HandOver() noexcept
{
  CloseStream();  // nothing was written to it
  return _temporary;
}

std::string WholeFile::Commit()
{
  if (_temporary.empty())
    return _stream ? FinishDevice(_stream) : "nothing was written";
  const bool isSynced = _stream ? SyncStream(_stream) && CloseStream() : SyncFile(_temporary);
  if (isSynced && PutInPlace(_temporary, _target))
  {
    _temporary.clear();
    return "";
  }
  const std::string reason = GetSystemReason();
  Discard();
  return Describe(reason);
}

std::string WholeFile::FinishDevice(std::FILE* stream)
{
  const bool sent = std::fflush(stream) == 0 && !std::ferror(stream);
  const std::string reason = sent ? "" : GetSystemReason();
  return CloseStream() && sent ? "" : Describe(sent ? GetSystemReason() : reason);
}

void WholeFile::Discard() noexcept
{
  CloseStream();
  if (!_temporary.empty())
    RemoveFile(_temporary);
  _temporary.clear();
}

/// @return false when what was written could not be kept. True without a stream.
bool WholeFile::CloseStream() noexcept
{
  std::FILE* const stream = _stream;
  _stream = nullptr;
  return !stream || std::fclose(stream) == 0;
}

std::string WholeFile::Describe(const std::string& reason)
{
  _reason = reason;
  return "cannot write \"" + _named + "\": " + reason;
}

}  // namespace q7z
