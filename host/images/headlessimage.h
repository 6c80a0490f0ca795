#pragma once

// HeadlessImage: what stands behind a HostImage. A bitmap's image shows the bitmap's pixels as they are; an image of a material
// exchange comes from a file and may be without its pixels until they are asked for again.

#include <memory>

#include "framework/result.h"
#include "host/images/pixelimage.h"
#include "plugin/module/hostfwd.h"

namespace q7z
{

class HeadlessImage
{
public:
  HeadlessImage() noexcept = default;
  HeadlessImage(const HeadlessImage&) = delete;
  HeadlessImage& operator=(const HeadlessImage&) = delete;

  /// Never null. From any thread.
  virtual Result<std::shared_ptr<const PixelImage>> GetPixels() noexcept = 0;
  /// Of size and pixels.
  virtual UInt GetHash() const noexcept = 0;
  /// The bytes of the pixels, whether they are there or not.
  virtual Int GetByteCount() const noexcept = 0;

protected:
  ~HeadlessImage() = default;
};

/// A hash of size and pixels.
UInt HashPixels(const PixelImage& image) noexcept;

inline HeadlessImage* ToHeadless(HostImage* image) noexcept
{
  return reinterpret_cast<HeadlessImage*>(image);
}
inline const HeadlessImage* ToHeadless(const HostImage* image) noexcept
{
  return reinterpret_cast<const HeadlessImage*>(image);
}
inline HostImage* ToHost(HeadlessImage* image) noexcept
{
  return reinterpret_cast<HostImage*>(image);
}

}  // namespace q7z
