// The host's bitmaps through the table that the plug-in sees, and images in other sizes, against values worked out by hand from the
// cubic of Catmull and Rom.

#include <gtest/gtest.h>

#include "host/images/headlessbitmaps.h"
#include "host/images/headlessimage.h"
#include "host/images/resample.h"
#include "host/services/headlessjobs.h"
#include "tests/host/servicesupport.h"
#include "tests/images/imagebuilders.h"
#include "tests/support/sweep.h"

namespace q7z::test
{
namespace
{

class Bitmaps : public testing::Test
{
protected:
  Bitmaps() { _files.SetWarnings(&_warnings); }
  ~Bitmaps() override
  {
    for (HostBitmap* const bitmap : _all)
      _bitmaps.Free(bitmap);
  }

  HostBitmap* Make()
  {
    _all.push_back(_bitmaps.Alloc());
    return _all.back();
  }
  /// A bitmap of these pixels, by way of a file.
  HostBitmap* MakeOf(const Bytes& file)
  {
    HostBitmap* const bitmap = Make();
    EXPECT_TRUE(Load(bitmap, "picture", file));
    return bitmap;
  }
  bool Load(HostBitmap* bitmap, const std::string& name, const Bytes& file)
  {
    const std::string path = _folder.Write(name, std::string(file.begin(), file.end()));
    return _bitmaps.Load(bitmap, HostFilename(MakeString(path)));
  }
  std::string TextOf(HostBitmap* bitmap)
  {
    HostImage* const image = _bitmaps.GetImage(bitmap);
    return image ? PixelText(*ToHeadless(image)->GetPixels().GetValue()) : "none";
  }

  TestFolder _folder;
  FilePolicy _policy;
  RecordedWarnings _warnings;
  ImageFiles _files{_policy};
  HeadlessJobs _jobs{2};
  HeadlessBitmaps _bitmaps{_files, _jobs};
  std::vector<HostBitmap*> _all;
};

const Bytes kTwoPixels = PngBuilder({2, 1}).Rows({0, 1, 2, 3, 4, 5, 6}).Build();
const Bytes kOneSeenThrough = PngBuilder({1, 1, 8, 6}).Rows({0, 1, 2, 3, 77}).Build();

TEST_F(Bitmaps, AreEmptyUntilTheyHaveASizeAndThenBlack)
{
  HostBitmap* const bitmap = Make();
  Byte row[4] = {};
  EXPECT_FALSE(_bitmaps.HasAlpha(bitmap));
  EXPECT_FALSE(_bitmaps.AddAlpha(bitmap));
  EXPECT_FALSE(_bitmaps.ReadRow(bitmap, 0, row, false));
  EXPECT_FALSE(_bitmaps.WriteRow(bitmap, 0, row, false));
  EXPECT_EQ(TextOf(bitmap), "none");
  EXPECT_FALSE(_bitmaps.ScaleInto(MakeOf(kTwoPixels), bitmap));
  EXPECT_FALSE(_bitmaps.ScaleInto(bitmap, MakeOf(kTwoPixels)));
  ASSERT_TRUE(_bitmaps.Init(bitmap, 2, 1, 24));
  EXPECT_EQ(TextOf(bitmap), "0,0,0 0,0,0");
}

TEST_F(Bitmaps, RefuseSizesAndDepthsThatTheyCannotHave)
{
  HostBitmap* const bitmap = MakeOf(kTwoPixels);
  EXPECT_FALSE(_bitmaps.Init(bitmap, 0, 1, 24));
  EXPECT_FALSE(_bitmaps.Init(bitmap, 1, -1, 24));
  EXPECT_FALSE(_bitmaps.Init(bitmap, 65501, 1, 24));
  EXPECT_FALSE(_bitmaps.Init(bitmap, 60000, 60000, 24));
  EXPECT_FALSE(_bitmaps.Init(bitmap, 1, 1, 32));
  EXPECT_EQ(TextOf(bitmap), "1,2,3 4,5,6") << "what it held stays";
}

TEST_F(Bitmaps, KeepWhatTheyHoldWhenAFileIsBroken)
{
  HostBitmap* const bitmap = MakeOf(kTwoPixels);
  _policy.Restrict(_folder.Write("scene.gltf", ""), nullptr);
  EXPECT_FALSE(Load(bitmap, "broken.png", ToBytes("no image at all")));
  EXPECT_FALSE(_bitmaps.Load(bitmap, HostFilename(MakeString(_folder / "none.png"))));
  EXPECT_EQ(TextOf(bitmap), "1,2,3 4,5,6");
  EXPECT_EQ(_warnings.texts, (Warnings{"the image \"broken.png\" is left out: it is neither a PNG nor a JPEG image",
                                       "the image \"none.png\" is left out: there is no such file"}));
}

TEST_F(Bitmaps, ReadAndWriteRows)
{
  HostBitmap* const bitmap = MakeOf(kOneSeenThrough);
  Byte row[4] = {};
  EXPECT_TRUE(_bitmaps.ReadRow(bitmap, 0, row, true));
  EXPECT_EQ(row[3], 77);
  const Byte colors[] = {9, 8, 7};
  EXPECT_TRUE(_bitmaps.WriteRow(bitmap, 0, colors, false));
  EXPECT_EQ(TextOf(bitmap), "9,8,7,77") << "alpha stays";
  const Byte all[] = {1, 1, 1, 1};
  EXPECT_TRUE(_bitmaps.WriteRow(bitmap, 0, all, true));
  EXPECT_EQ(TextOf(bitmap), "1,1,1,1");
  EXPECT_FALSE(_bitmaps.ReadRow(bitmap, 1, row, false));
  EXPECT_FALSE(_bitmaps.WriteRow(bitmap, -1, all, false));
  _bitmaps.RemoveAlpha(bitmap);
  EXPECT_FALSE(_bitmaps.ReadRow(bitmap, 0, row, true));
  EXPECT_FALSE(_bitmaps.WriteRow(bitmap, 0, all, true));
}

TEST_F(Bitmaps, SayWhenMemoryRunsOut)
{
  HostBitmap* const bitmap = MakeOf(kTwoPixels);
  const HostFilename file(MakeString(_folder / "picture"));
  HostBitmap* const other = Make();
  SweepUntilSuccess([&] { return _bitmaps.Init(other, 3, 3, 24); });
  SweepUntilSuccess([&] { return _bitmaps.Load(other, file); });
  SweepUntilSuccess([&] { return _bitmaps.AddAlpha(bitmap); });
  EXPECT_TRUE(_warnings.texts.empty()) << "want of memory is no fault of a file";
}

// Other sizes.

// At a distance of 1/4, 3/4 and 5/4 samples the cubic is 0.8671875, 0.2265625 and -0.0703125.
const std::tuple<const char*, const char*, Int32, Int32, Int32, const char*> kResampled[] = {
  {"SameSizeIsACopy", "1,2,3 4,5,6 / 7,8,9 0,255,1", 2, 2, 3, "1,2,3 4,5,6 / 7,8,9 0,255,1"},
  {"SameSizeWithoutAlpha", "1,2,3,4 5,6,7,8", 2, 1, 3, "1,2,3 5,6,7"},
  // 255 · (0.2265625 - 0.0703125) / (2 · 0.8671875 + 0.2265625 - 0.0703125), and what is left of 255.
  {"HalfAsWide", "0,0,0 0,0,0 255,255,255 255,255,255", 2, 1, 3, "21,21,21 234,234,234"},
  {"HalfAsHigh", "0,0,0 / 0,0,0 / 255,255,255 / 255,255,255", 1, 2, 3, "21,21,21 / 234,234,234"},
  // The outer ones go below 0 and above 255; 255 · 0.2265625 / (0.2265625 + 0.8671875) and the rest.
  {"TwiceAsWide", "0,0,0 255,255,255", 4, 1, 3, "0,0,0 53,53,53 202,202,202 255,255,255"},
  {"AlphaIsLeftOut", "200,0,0,0 0,100,0,255", 1, 1, 3, "100,50,0"},
  {"AlphaIsANumberAlike", "200,0,0,0 0,0,0,255", 1, 1, 4, "100,0,0,128"},
};

TEST(Resampling, GivesTheTargetsSize)
{
  for (const auto& [name, source, width, height, channels, expected] : kResampled)
  {
    const std::shared_ptr<PixelImage> target = PixelImage::Create(width, height, channels);
    ASSERT_FALSE(Resample(*ImageOf(source), *target, nullptr).HasError());
    EXPECT_EQ(PixelText(*target), expected) << name;
  }
}

TEST(Resampling, LeavesPlainImagesPlain)
{
  const std::pair<int, int> sizes[] = {{1, 1}, {3, 7}, {16, 16}, {33, 5}, {100, 1}, {1, 257}};
  for (const auto& [width, height] : sizes)
  {
    const std::shared_ptr<PixelImage> source = PixelImage::Create(width, height, 4);
    std::fill_n(source->GetRow(0), source->GetByteCount(), Byte(201));
    for (const auto& [newWidth, newHeight] : sizes)
    {
      const std::shared_ptr<PixelImage> target = PixelImage::Create(newWidth, newHeight, 4);
      ASSERT_FALSE(Resample(*source, *target, nullptr).HasError());
      EXPECT_EQ(std::count(target->GetRow(0), target->GetRow(0) + target->GetByteCount(), Byte(201)), target->GetByteCount())
        << width << " x " << height << " to " << newWidth << " x " << newHeight;
    }
  }
}

TEST(Resampling, IsTheSameOnSeveralThreads)
{
  const std::shared_ptr<PixelImage> source = NoiseImage(211, 300, 4);
  const std::shared_ptr<PixelImage> alone = PixelImage::Create(97, 151, 4);
  const std::shared_ptr<PixelImage> together = PixelImage::Create(97, 151, 4);
  HeadlessJobs jobs(4);
  ASSERT_FALSE(Resample(*source, *alone, nullptr).HasError());
  ASSERT_FALSE(Resample(*source, *together, &jobs).HasError());
  EXPECT_EQ(PixelText(*alone), PixelText(*together));
}

}  // namespace
}  // namespace q7z::test
