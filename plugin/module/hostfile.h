#pragma once

// Files of the classic API: opened by name, read and written at a position.

#include <memory>

#include "plugin/module/hosttables.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

enum class FILEOPEN : Int32
{
  READ,
  WRITE,   ///< makes the file or empties it
  APPEND,  ///< makes the file or goes on at its end
};

enum class FILEDIALOG : Int32
{
  NONE,        ///< never a dialog
  ANY,         ///< a dialog for every failure
  IGNOREOPEN,  ///< a dialog for every failure but a failed open
};

enum class BYTEORDER : Int32
{
  V_MOTOROLA,
  V_INTEL,  ///< little-endian
};

// Four-character codes of the file's type and creator.
inline constexpr UInt32 kFileType = 0x51375A43;     // 'Q7ZC'
inline constexpr UInt32 kFileCreator = 0x51375A31;  // 'Q7Z1'

class HostFileTable
{
public:
  /// Null without memory. The caller frees it, which also closes it.
  virtual HostFile* Alloc() noexcept = 0;
  virtual void Free(HostFile* file) noexcept = 0;
  virtual Bool Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG dialog, BYTEORDER order, UInt32 type,
                    UInt32 creator) noexcept = 0;
  /// @return false when what was written could not be kept.
  virtual Bool Close(HostFile* file) noexcept = 0;
  /// Forward, relative to the position. Beyond the end succeeds; reading there is short. @return false for a negative distance.
  virtual Bool Seek(HostFile* file, Int distance) noexcept = 0;
  virtual Int GetPosition(const HostFile* file) noexcept = 0;
  virtual Int GetLength(const HostFile* file) noexcept = 0;
  /// Reads up to byteCount bytes from the position into target and moves the position behind them.
  /// @return the bytes read, fewer than byteCount only at the end of the file; -1 if the device failed.
  virtual Int ReadBytes(HostFile* file, void* target, Int byteCount) noexcept = 0;
  /// @return whether all bytes were written.
  virtual Bool WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept = 0;
  virtual Bool ReadUInt32(HostFile* file, UInt32* value) noexcept = 0;
  virtual Bool Exists(const HostFilename& name) noexcept = 0;

protected:
  ~HostFileTable() = default;
};

class HostFile
{
public:
  Bool Open(const HostFilename& name, FILEOPEN mode = FILEOPEN::READ, FILEDIALOG dialog = FILEDIALOG::IGNOREOPEN,
            BYTEORDER order = BYTEORDER::V_MOTOROLA, UInt32 type = kFileType, UInt32 creator = kFileCreator) noexcept
  {
    return g_hostTables->file->Open(this, name, mode, dialog, order, type, creator);
  }
  Bool Close() noexcept { return g_hostTables->file->Close(this); }
  Bool Seek(Int distance) noexcept { return g_hostTables->file->Seek(this, distance); }
  Int GetPosition() const noexcept { return g_hostTables->file->GetPosition(this); }
  Int GetLength() const noexcept { return g_hostTables->file->GetLength(this); }
  Int ReadBytes(void* target, Int byteCount) noexcept { return g_hostTables->file->ReadBytes(this, target, byteCount); }
  Bool WriteBytes(const void* source, Int byteCount) noexcept { return g_hostTables->file->WriteBytes(this, source, byteCount); }
  Bool ReadUInt32(UInt32* value) noexcept { return g_hostTables->file->ReadUInt32(this, value); }

protected:
  HostFile() noexcept = default;
  ~HostFile() = default;
};

inline HostFile* HostFileAlloc() noexcept { return g_hostTables->file->Alloc(); }
inline void HostFileFree(HostFile* file) noexcept
{
  if (file)
    g_hostTables->file->Free(file);
}
inline Bool GeFExist(const HostFilename& name) noexcept { return g_hostTables->file->Exists(name); }

struct HostFileDeleter
{
  void operator()(HostFile* file) const noexcept { HostFileFree(file); }
};
using HostFileOwner = std::unique_ptr<HostFile, HostFileDeleter>;

}  // namespace q7z
