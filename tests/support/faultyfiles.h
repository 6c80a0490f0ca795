#pragma once

// FaultyFiles: the file table that it is put over, but for one call, which fails. Calls that only ask are not counted.

#include "plugin/module/hostfile.h"

namespace q7z::test
{

class FaultyFiles final : public HostFileTable
{
public:
  explicit FaultyFiles(HostFileTable* base) noexcept : _base(base) {}
  Int failAt = -1;  // counted from 0
  Int calls = 0;
  Int liveFiles = 0;
  Bool wasClosing = false;  // the call that failed
  Bool failsShort = false;  // a read that fails gives the first half of its bytes

  HostFile* Alloc() noexcept override
  {
    if (Fails())
      return nullptr;
    ++liveFiles;
    return _base->Alloc();
  }
  void Free(HostFile* file) noexcept override
  {
    --liveFiles;
    _base->Free(file);
  }
  Bool Open(HostFile* file, const HostFilename& name, FILEOPEN mode, FILEDIALOG dialog, BYTEORDER order, UInt32 type,
            UInt32 creator) noexcept override
  {
    return !Fails() && _base->Open(file, name, mode, dialog, order, type, creator);
  }
  Bool Close(HostFile* file) noexcept override
  {
    wasClosing = calls == failAt;
    return _base->Close(file) && !Fails();
  }
  Bool Seek(HostFile* file, Int distance) noexcept override { return !Fails() && _base->Seek(file, distance); }
  Int GetPosition(const HostFile* file) noexcept override { return _base->GetPosition(file); }
  Int GetLength(const HostFile* file) noexcept override { return _base->GetLength(file); }
  Int ReadBytes(HostFile* file, void* target, Int byteCount) noexcept override
  {
    if (!Fails())
      return _base->ReadBytes(file, target, byteCount);
    return failsShort ? _base->ReadBytes(file, target, byteCount / 2) : -1;
  }
  Bool WriteBytes(HostFile* file, const void* source, Int byteCount) noexcept override
  {
    return !Fails() && _base->WriteBytes(file, source, byteCount);
  }
  Bool ReadUInt32(HostFile* file, UInt32* value) noexcept override { return !Fails() && _base->ReadUInt32(file, value); }
  Bool Exists(const HostFilename& name) noexcept override { return _base->Exists(name); }

private:
  Bool Fails() noexcept { return calls++ == failAt; }
  HostFileTable* _base;
};

}  // namespace q7z::test
