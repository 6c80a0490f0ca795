#pragma once

// Files of the classic API on POSIX descriptors, the URL service, and what a load may read. Only regular files are opened.

#include <set>
#include <string>

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

/// Which files may be read: the input, and what lies in its folder or below, decided on resolved paths.
class FilePolicy
{
public:
  /// Restricts reading to input's folder; an empty path lifts the restriction. warnings may be null; not owned.
  void SetInput(const std::string& input, bool allowOutside, FileWarnings* warnings);
  bool MayRead(const std::string& path);

private:
  std::string _folder;  // resolved, with a slash at the end; empty for no restriction
  FileWarnings* _warnings = nullptr;
  std::set<std::string> _refused;  // each is told once
};

class HeadlessFileTable final : public HostFileTable
{
public:
  explicit HeadlessFileTable(FilePolicy& policy) noexcept : _policy(policy) {}

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
  FilePolicy& _policy;
};

class HeadlessUrlService final : public HostUrlService
{
public:
  /// The folder in which `tex` is made.
  void SetBaseFolder(const std::string& folder) { _baseFolder = folder; }

  HostFileSystemType GetType(const Url& url) noexcept override;
  Result<void> Write(const Url& url, const Byte* bytes, Int byteCount) noexcept override;
  Result<void> CreateFolder(const Url& url) noexcept override;
  Result<Url> GetBaseFolder() noexcept override;

private:
  std::string _baseFolder;
};

}  // namespace q7z
