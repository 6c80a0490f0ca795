#include "host/images/mediasessions.h"

#include <xxhash.h>

#include <string_view>

#include "framework/check.h"
#include "host/images/encode.h"
#include "host/images/headlessimage.h"

namespace q7z
{

namespace
{

constexpr std::string_view kLinearProfile = "net.tarno.image.colorprofile.linear_rgb";

Error MakeIdError(const String& format, const Char* id) noexcept
{
  const Result<String> message = String::Format(format, {String(id, static_cast<Int>(std::string_view(id).size()))});
  return message.HasError() ? message.GetError() : MAKE_ERROR(ErrorClass::kUnexpected, message.GetValue());
}

}  // namespace

UInt HashPixels(const PixelImage& image) noexcept
{
  const UInt size[] = {static_cast<UInt>(image.GetWidth()), static_cast<UInt>(image.GetHeight()),
                       static_cast<UInt>(image.GetChannels())};
  const XXH64_hash_t seed = XXH3_64bits(size, sizeof(size));
  return XXH3_64bits_withSeed(image.GetRow(0), static_cast<size_t>(image.GetByteCount()), seed);
}

Result<BaseArray<Byte>> HeadlessMediaSessions::Encode(const Char* sessionId, HostImage* image) noexcept
{
  CHECK_ARGUMENT(sessionId);
  CHECK_ARGUMENT(image);
  const std::string_view id = sessionId;
  if (id != kPngExport && id != kJpegExport)
    return MakeIdError("There is no media session '@'."_s, sessionId);
  ASSIGN_OR_RETURN(const std::shared_ptr<const PixelImage> pixels, ToHeadless(image)->GetPixels());
  return id == kPngExport ? EncodePng(*pixels) : EncodeJpeg(*pixels);
}

Result<HostImage*> HeadlessMediaSessions::ConvertColorProfile(HostImage* image, const Char* profileId) noexcept
{
  CHECK_ARGUMENT(image);
  CHECK_ARGUMENT(profileId);
  if (profileId != kLinearProfile)
    return MakeIdError("There is no colour profile '@'."_s, profileId);
  return image;
}

UInt HeadlessMediaSessions::GetHash(const HostImage* image) noexcept
{
  return ToHeadless(image)->GetHash();
}

Int HeadlessMediaSessions::GetByteCount(const HostImage* image) noexcept
{
  return ToHeadless(image)->GetByteCount();
}

}  // namespace q7z
