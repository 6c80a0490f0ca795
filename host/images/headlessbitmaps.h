#pragma once

// HeadlessBitmaps: the bitmaps of the headless host, 8 bits a channel, with or without alpha. Rows of one bitmap may be read and
// written by several threads, each row by one at a time; all else needs the bitmap for itself.

#include "host/images/imagefiles.h"
#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessBitmaps final : public HostBitmapTable
{
public:
  HeadlessBitmaps(ImageFiles& files, HostJobs& jobs) noexcept : _files(files), _jobs(jobs) {}

  HostBitmap* Alloc() noexcept override;
  void Free(HostBitmap* bitmap) noexcept override;
  /// Black. Only 24 bits a pixel, in a size within the limits.
  Bool Init(HostBitmap* bitmap, Int32 width, Int32 height, Int32 bitsPerPixel) noexcept override;
  /// The format is told by the file's content. On failure the bitmap is as it was.
  Bool Load(HostBitmap* bitmap, const HostFilename& name) noexcept override;
  /// 0 before Init or Load.
  Int32 GetWidth(const HostBitmap* bitmap) noexcept override;
  Int32 GetHeight(const HostBitmap* bitmap) noexcept override;
  Bool ScaleInto(const HostBitmap* bitmap, HostBitmap* target) noexcept override;
  Bool HasAlpha(const HostBitmap* bitmap) noexcept override;
  /// 255 all over. False when there is one already, and without memory.
  Bool AddAlpha(HostBitmap* bitmap) noexcept override;
  void RemoveAlpha(HostBitmap* bitmap) noexcept override;
  /// False for a row out of range, and with alpha where there is none.
  Bool ReadRow(const HostBitmap* bitmap, Int32 row, Byte* target, Bool withAlpha) noexcept override;
  /// The same; without alpha an alpha channel keeps its values.
  Bool WriteRow(HostBitmap* bitmap, Int32 row, const Byte* source, Bool withAlpha) noexcept override;
  /// Lives as long as the bitmap and shows its pixels as they are then; null for an empty one.
  HostImage* GetImage(HostBitmap* bitmap) noexcept override;

private:
  ImageFiles& _files;
  HostJobs& _jobs;
};

}  // namespace q7z
