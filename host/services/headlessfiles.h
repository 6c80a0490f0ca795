#pragma once

// Files of the classic API, the URL service, and what a load or save may read. Each belongs to one HeadlessHost. Files may be used
// from several threads, one file by one thread at a time; the policy changes between loads and saves only, and warns from the thread
// that asks.

#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/services/filereading.h"
#include "plugin/module/hostfile.h"

namespace q7z
{

/// Where a refused side file is told.
class FileWarnings
{
public:
  virtual void AddWarning(const std::string& text) = 0;

protected:
  ~FileWarnings() = default;
};

/// Which files may be read during a load or save: the input, and what lies in its folder or below, decided on resolved paths. All
/// without one.
class FilePolicy
{
public:
  /// From now on side files lie in input's folder or below. An input that is not there leaves nothing to read.
  /// @param warnings  told of each refused file once; may be null; not owned.
  void Restrict(const std::string& input, FileWarnings* warnings);
  /// What lies in this folder or below may be read, too, until the policy is lifted. Empty for none.
  void Allow(const std::string& folder);
  void Lift() noexcept;

  /// How a path is told: from the input's folder or an allowed one's, so that the text does not depend on where these lie.
  std::string GetShortName(const std::string& path) const;

  /// @return the path to open, or an empty text when the file is not there or may not be read.
  std::string FindReadable(const std::string& path);

private:
  bool IsInside(const std::string& resolved) const;
  void Warn(const std::string& path);

  bool _restricted = false;
  std::string _namedFolder;                                   // as the input's path spells it, with a slash at the end
  std::string _folder;                                        // resolved, with a slash at the end
  std::string _input;                                         // resolved
  std::vector<std::pair<std::string, std::string>> _allowed;  // as named and resolved, with a slash at the end
  FileWarnings* _warnings = nullptr;
  std::mutex _mutex;
  std::set<std::string> _refused;  // resolved; behind _mutex
};

class HeadlessFileTable final : public HostFileTable
{
public:
  explicit HeadlessFileTable(FilePolicy& policy) noexcept : _policy(policy) {}

  /// Why a file could last not be written, once; empty when none failed.
  std::string TakeWriteFailure() noexcept { return std::exchange(_writeFailure, std::string()); }

  HostFile* Alloc() noexcept override;
  void Free(HostFile* file) noexcept override;
  Bool Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG dialog, BYTEORDER order, UInt32 type,
            UInt32 creator) noexcept override;
  Bool Close(HostFile* file) noexcept override;
  Bool Seek(HostFile* file, Int distance) noexcept override;
  Int GetPosition(const HostFile* file) noexcept override;
  Int GetLength(const HostFile* file) noexcept override;
  Int ReadBytes(HostFile* file, void* target, Int byteCount) noexcept override;
  Bool WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept override;
  Bool ReadUInt32(HostFile* file, UInt32* value) noexcept override;
  Bool Exists(const HostFilename& name) noexcept override;

private:
  void NoteWriteFailure() noexcept;

  FilePolicy& _policy;
  std::string _writeFailure;
};

class HeadlessUrlService final : public HostUrlService
{
public:
  HeadlessUrlService() noexcept = default;
  HeadlessUrlService(const HeadlessUrlService&) = delete;
  HeadlessUrlService& operator=(const HeadlessUrlService&) = delete;
  /// The temporary folder goes with all that is in it.
  ~HeadlessUrlService();

  /// The folder in which `tex` is made; empty for a temporary one, which is made when it is asked for.
  void SetBaseFolder(const std::string& folder) { _baseFolder = folder; }
  const std::string& GetTemporaryFolder() const noexcept { return _temporaryFolder; }

  /// The folder `tex` in the base folder that was last asked for; empty when there was none.
  std::string GetTexFolder() const;

  /// Why a file could last not be written, once; empty when none failed.
  std::string TakeWriteFailure() noexcept { return std::exchange(_writeFailure, std::string()); }

  HostFileSystemType GetType(const Url& url) noexcept override;
  Result<void> Write(const Url& url, const Byte* bytes, Int byteCount) noexcept override;
  Result<void> CreateFolder(const Url& url) noexcept override;
  Result<Url> GetBaseFolder() noexcept override;

private:
  std::string _baseFolder;
  std::string _temporaryFolder;  // ours; empty until it is needed
  std::string _writeFailure;
};

}  // namespace q7z
