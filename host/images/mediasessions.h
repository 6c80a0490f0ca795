#pragma once

// HeadlessMediaSessions: encoding of images in memory, for any thread. Images are tagged as linear already, so that the colour
// step leaves code values as they are.

#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessMediaSessions final : public HostMediaSessions
{
public:
  /// @return an error for an id that is none of the two.
  Result<BaseArray<Byte>> Encode(const Char* sessionId, HostImage* image) noexcept override;
  /// The image itself for the linear profile, an error for any other.
  Result<HostImage*> ConvertColorProfile(HostImage* image, const Char* profileId) noexcept override;
  UInt GetHash(const HostImage* image) noexcept override;
  Int GetByteCount(const HostImage* image) noexcept override;
};

}  // namespace q7z
