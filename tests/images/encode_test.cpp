// Encoding, and the media sessions through which the plug-in reaches it. What is encoded is read back with the host's decoder, which
// has tests of its own.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "host/images/decode.h"
#include "host/images/encode.h"
#include "host/images/headlessimage.h"
#include "host/images/mediasessions.h"
#include "tests/host/servicesupport.h"
#include "tests/images/imagebuilders.h"
#include "tests/support/sweep.h"

namespace q7z::test
{

namespace
{

std::shared_ptr<PixelImage> Ramp(Int32 width, Int32 height, Int32 channels)
{
  std::shared_ptr<PixelImage> image = PixelImage::Create(width, height, channels);
  for (Int32 y = 0; y < height; ++y)
  {
    for (Int i = 0; i < image->GetRowBytes(); ++i)
      image->GetRow(y)[i] = static_cast<Byte>(i / channels + y * (1 + i % channels));
  }
  return image;
}

TEST(EncodedPng, KeepsEveryPixelAndIsTheSameTwice)
{
  for (const auto& image : {ImageOf("1,2,3"), Ramp(300, 1, 3), Ramp(1, 300, 4), Ramp(257, 65, 3), NoiseImage(70, 130, 4)})
  {
    const BaseArray<Byte> file = EncodePng(*image).GetValue();
    const Result<std::shared_ptr<PixelImage>> back = DecodeImage(file.begin(), file.GetCount());
    ASSERT_FALSE(back.HasError()) << ErrorText(back);
    EXPECT_TRUE(PixelText(*back.GetValue()) == PixelText(*image)) << image->GetWidth();
    const BaseArray<Byte> again = EncodePng(*image).GetValue();
    EXPECT_TRUE(std::equal(file.begin(), file.end(), again.begin(), again.end()));
  }
}

TEST(EncodedJpeg, IsNearToThePixelsAndHasNoAlpha)
{
  const std::shared_ptr<PixelImage> image = PixelImage::Create(33, 17, 4);
  for (Int i = 0; i < image->GetByteCount(); ++i)
    image->GetRow(0)[i] = static_cast<Byte>(60 * (i % 4) + 10);
  const BaseArray<Byte> file = EncodeJpeg(*image).GetValue();
  const std::shared_ptr<PixelImage> back = DecodeImage(file.begin(), file.GetCount()).GetValue();
  ASSERT_EQ(back->GetChannels(), 3);
  ASSERT_EQ(back->GetWidth(), 33);
  ASSERT_EQ(back->GetHeight(), 17);
  for (Int i = 0; i < back->GetByteCount(); ++i)
    ASSERT_NEAR(back->GetRow(0)[i], 60 * (i % 3) + 10, 2) << i;
}

TEST(MediaSessions, EncodeByTheSessionsIdAndLeaveLinearValues)
{
  PlainImage image("1,2,3");
  HostImage* const host = ToHost(static_cast<HeadlessImage*>(&image));
  HeadlessMediaSessions sessions;
  const auto formatOf = [&](const char* id)
  {
    const Result<BaseArray<Byte>> file = sessions.Encode(id, host);
    return file.HasError() ? ImageFormat::kUnknown : GetImageFormat(file.GetValue().begin(), file.GetValue().GetCount());
  };
  EXPECT_EQ(formatOf("net.tarno.mediasession.png.export"), ImageFormat::kPng);
  EXPECT_EQ(formatOf("net.tarno.mediasession.jpg.export"), ImageFormat::kJpeg);
  EXPECT_EQ(ErrorText(sessions.Encode("net.tarno.mediasession.gif.export", host)),
            "There is no media session 'net.tarno.mediasession.gif.export'.");
  const Result<HostImage*> converted = sessions.ConvertColorProfile(host, "net.tarno.image.colorprofile.linear_rgb");
  ASSERT_FALSE(converted.HasError());
  EXPECT_EQ(PixelText(*ToHeadless(converted.GetValue())->GetPixels().GetValue()), "1,2,3");
  EXPECT_EQ(ErrorText(sessions.ConvertColorProfile(host, "net.other")), "There is no colour profile 'net.other'.");
}

TEST(MediaSessions, TellImagesApartBySizeAndPixels)
{
  HeadlessMediaSessions sessions;
  std::set<UInt> hashes;
  for (const char* const text : {"1,2,3", "1,2,4", "1,2,3 4,5,6", "1,2,3 / 4,5,6", "1,2,3,4 5,6,7,8", "1,2,3 4,5,6 7,8,9 5,6,7"})
  {
    PlainImage image(text);
    PlainImage same(text);
    const UInt hash = sessions.GetHash(ToHost(static_cast<HeadlessImage*>(&image)));
    EXPECT_EQ(hash, sessions.GetHash(ToHost(static_cast<HeadlessImage*>(&same))));
    EXPECT_TRUE(hashes.insert(hash).second) << text;
  }
  PlainImage image("1,2,3,4 5,6,7,8");
  EXPECT_EQ(sessions.GetByteCount(ToHost(static_cast<HeadlessImage*>(&image))), 8);
}

TEST(MediaSessions, SayWhenMemoryRunsOut)
{
  PlainImage image(NoiseImage(50, 50, 3));
  HostImage* const host = ToHost(static_cast<HeadlessImage*>(&image));
  HeadlessMediaSessions sessions;
  for (const char* const id : {HostMediaSessions::kPngExport, HostMediaSessions::kJpegExport})
  {
    Result<BaseArray<Byte>> file = BaseArray<Byte>();
    SweepAllocations([&] { file = sessions.Encode(id, host); }, [&](bool failed) { EXPECT_EQ(IsOutOfMemory(file), failed); });
  }
}

}  // namespace

}  // namespace q7z::test
