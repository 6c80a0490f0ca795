// Decoding of PNG and JPEG files made by hand: every kind of pixel, what is refused and how, and that nothing is paid for a claim.
// Then encoding, read back by the decoder, and the media sessions through which the plug-in reaches it.

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

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

/// Decodes from a buffer of exactly the file's size, so that a sanitizer sees the first stray read.
Result<std::shared_ptr<PixelImage>> Decode(const Bytes& file)
{
  const auto exact = std::make_unique<Byte[]>(file.size());
  std::copy(file.begin(), file.end(), exact.get());
  return DecodeImage(exact.get(), static_cast<Int>(file.size()));
}

// Colour types: 0 gray, 2 RGB, 3 palette, 4 gray with alpha, 6 RGB with alpha.
const std::tuple<const char*, Bytes, const char*> kPixels[] = {
  {"PngRgb", PngBuilder({2, 2}).Rows({0, 1, 2, 3, 4, 5, 6, 0, 7, 8, 9, 10, 11, 12}).Build(), "1,2,3 4,5,6 / 7,8,9 10,11,12"},
  {"PngRgba", PngBuilder({1, 1, 8, 6}).Rows({0, 1, 2, 3, 4}).Build(), "1,2,3,4"},
  {"PngGray", PngBuilder({2, 1, 8, 0}).Rows({0, 7, 200}).Build(), "7,7,7 200,200,200"},
  {"PngGrayAlpha", PngBuilder({1, 1, 8, 4}).Rows({0, 7, 9}).Build(), "7,7,7,9"},
  {"PngGray1", PngBuilder({3, 1, 1, 0}).Rows({0, 0b10100000}).Build(), "255,255,255 0,0,0 255,255,255"},
  {"PngGray16", PngBuilder({1, 1, 16, 0}).Rows({0, 0x12, 0x34}).Build(), "18,18,18"},
  {"PngPalette", PngBuilder({2, 1, 8, 3}).Chunk("PLTE", {1, 2, 3, 4, 5, 6}).Rows({0, 1, 0}).Build(), "4,5,6 1,2,3"},
  {"PngPaletteWithAlpha", PngBuilder({2, 1, 8, 3}).Chunk("PLTE", {1, 2, 3, 4, 5, 6}).Chunk("tRNS", {77}).Rows({0, 0, 1}).Build(),
   "1,2,3,77 4,5,6,255"},
  {"PngTransparentGray", PngBuilder({2, 1, 8, 0}).Chunk("tRNS", {0, 7}).Rows({0, 7, 8}).Build(), "7,7,7,0 8,8,8,255"},
  {"PngTransparentRgb", PngBuilder({2, 1}).Chunk("tRNS", {0, 1, 0, 2, 0, 3}).Rows({0, 1, 2, 3, 1, 2, 4}).Build(),
   "1,2,3,0 1,2,4,255"},
  // Of the seven passes the first, the sixth and the last have pixels.
  {"PngInterlaced", PngBuilder({2, 2, 8, 0, 1}).Rows({0, 1, 0, 2, 0, 3, 4}).Build(), "1,1,1 2,2,2 / 3,3,3 4,4,4"},
  {"JpegGray", MakeJpeg(1, 1, {200}), "200,200,200"},
  // R = 76 + 1.402 (255 - 128), G = 76 - 0.344 (85 - 128) - 0.714 (255 - 128), B = 76 + 1.772 (85 - 128), cut to 0 to 255.
  {"JpegColor", MakeJpeg(1, 1, {76, 85, 255}), "254,0,0"},
  {"JpegRgb", MakeJpeg(2, 1, {10, 20, 30}, 0), "10,20,30 10,20,30"},
  // The paper's share of each ink times that of black: 127 · 204 / 255, 255 · 204 / 255, 0.
  {"JpegInks", MakeJpeg(1, 1, {128, 0, 255, 51}), "102,204,0"},
  {"JpegInksInverted", MakeJpeg(1, 1, {127, 255, 0, 204}, 0), "102,204,0"},
  // 255 - 55 of each colour, times 204 / 255.
  {"JpegInksAsBrightness", MakeJpeg(1, 1, {55, 128, 128, 204}, 2), "160,160,160"},
  {"JpegProgressive", MakeJpeg(1, 2, {9}, -1, 3), "9,9,9 / 9,9,9"},
};

TEST(DecodedPixels, AreThoseOfTheFileOrNoneWhereItIsCutOff)
{
  for (const auto& [name, file, pixels] : kPixels)
  {
    // Behind the last pixel a PNG file has the checksum of their chunk and an empty chunk, whose loss takes nothing away.
    const std::size_t neededBytes = file[0] == 0x89 ? file.size() - 4 - 12 : file.size();
    for (std::size_t size = 0; size <= file.size(); ++size)
    {
      const Result<std::shared_ptr<PixelImage>> image = Decode(Bytes(file.data(), file.data() + size));
      ASSERT_EQ(image.HasError(), size < neededBytes) << name << " cut at " << size << ": " << ErrorText(image);
      EXPECT_EQ(image.HasError() ? pixels : PixelText(*image.GetValue()), pixels) << name;
    }
  }
}

Bytes WithByte(Bytes file, std::size_t index, int value)
{
  file[index] = static_cast<std::uint8_t>(value);
  return file;
}

Bytes PngOfOne(const std::string& chunk, const Bytes& content)
{
  return PngBuilder({1, 1}).Chunk(chunk, content).Rows({0, 1, 2, 3}).Build();
}

Bytes Packed(std::string_view name, std::size_t byteCount)
{
  Bytes content = ToBytes(name);
  content.insert(content.end(), {0, 0});
  const Bytes run = LongRun(byteCount);
  content.insert(content.end(), run.begin(), run.end());
  return content;
}

/// The same blocks under a header that claims another size.
Bytes WithJpegSize(Bytes file, int width, int height)
{
  const Bytes frame = {0xFF, 0xC0};
  const auto start = std::search(file.begin(), file.end(), frame.begin(), frame.end()) + 5;  // marker, length, depth
  const int sides[] = {height >> 8, height & 255, width >> 8, width & 255};
  std::transform(std::begin(sides), std::end(sides), start, [](int side) { return static_cast<std::uint8_t>(side); });
  return file;
}

const Bytes kOnePixel = PngBuilder({1, 1}).Rows({0, 1, 2, 3}).Build();
constexpr std::size_t kMiB = std::size_t(1) << 20;

const std::pair<Bytes, const char*> kRefused[] = {
  {{}, "it is neither a PNG nor a JPEG image"},
  {PngBuilder({65501, 1}).Rows({0, 1}).Build(), "its header claims 65501 x 1 pixels, more than the limit"},
  {PngBuilder({0xFFFFFFFF, 0xFFFFFFFF}).Build(), "its header claims 4294967295 x 4294967295 pixels, more than the limit"},
  {WithByte(kOnePixel, 12, 'J'), "the PNG header is broken"},
  {WithByte(kOnePixel, 11, 14), "the PNG header is broken"},
  {PngBuilder({1, 1, 8, 5}).Rows({0, 1}).Build(), "the PNG header is broken"},
  {PngBuilder({1, 1, 0, 0}).Rows({0, 1}).Build(), "the PNG header is broken"},
  {ToBytes("GIF89a.............."), "it is neither a PNG nor a JPEG image"},
  {PngBuilder({60000, 60000}).Rows({0, 1}).Build(), "its header claims 60000 x 60000 pixels, more than the limit"},
  {PngBuilder({0, 1}).Rows({0}).Build(), "its header claims 0 x 1 pixels, more than the limit"},
  // One byte becomes 1032 at most: 68 bytes are not enough for 75,000.
  {PngBuilder({600, 125, 8, 0}).Rows({}).Build(), "its header claims 600 x 125 pixels, more than 68 bytes can hold"},
  {WithByte(kOnePixel, 48, 99), "the PNG file is broken: "},
  {PngBuilder({1, 2}).Rows({0, 1, 2, 3}).Build(), "the PNG file is broken: "},
  {PngBuilder({1, 1}).Chunk("IDAT", {1, 2, 3}).Build(), "the PNG file is broken: "},
  {PngOfOne("iCCP", Packed("a", 64 * kMiB)), "the PNG file is broken: "},
  {WithJpegSize(MakeJpeg(8, 8, {1}), 9000, 9000), "its header claims 9000 x 9000 pixels, more than "},
  {MakeJpeg(1, 1, {1, 2}), "the JPEG image is broken: Unsupported color conversion"},
  {MakeJpeg(1, 1, {1}, -1, 10000), "the JPEG image is broken: it has more than 64 scans"},
};

TEST(Refused, WithAReasonAndAtNoCost)
{
  for (const auto& [file, message] : kRefused)
  {
    StopFailingAllocations();
    const Result<std::shared_ptr<PixelImage>> image = DecodeImage(file.data(), static_cast<Int>(file.size()));
    EXPECT_LE(GetLargestAllocation(), 1000) << message;
    EXPECT_TRUE(ErrorText(image).starts_with(message)) << ErrorText(image) << ", not " << message;
    EXPECT_EQ(image.GetError().GetClass(), ErrorClass::kUnexpected);
  }
}

// Cameras and painters leave long texts behind. They are no reason to refuse a picture, as long as they cost nothing.
TEST(SkipsChunks, OfAnyLengthAtNoCost)
{
  for (const Bytes& file : {PngOfOne("tEXt", Bytes(5 * kMiB, 'a')), PngOfOne("heAp", Bytes(9 * kMiB, 'a'))})
  {
    StopFailingAllocations();
    const Result<std::shared_ptr<PixelImage>> image = DecodeImage(file.data(), static_cast<Int>(file.size()));
    EXPECT_LE(GetLargestAllocation(), 1000);
    ASSERT_FALSE(image.HasError()) << ErrorText(image);
    EXPECT_EQ(PixelText(*image.GetValue()), "1,2,3");
  }
}

// Encoding.

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
