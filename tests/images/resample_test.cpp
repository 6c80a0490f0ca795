// Images in other sizes, against values worked out by hand from the cubic of Catmull and Rom.

#include <gtest/gtest.h>

#include "host/images/resample.h"
#include "host/services/headlessjobs.h"
#include "tests/images/imagebuilders.h"

namespace q7z::test
{

namespace
{

struct ResampleRow
{
  const char* name;
  const char* source;
  Int32 width;
  Int32 height;
  Int32 channels;
  const char* expected;
};

// At a distance of 1/4, 3/4 and 5/4 samples the cubic is 0.8671875, 0.2265625 and -0.0703125.
const ResampleRow kResampled[] = {
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
  for (const ResampleRow& row : kResampled)
  {
    const std::shared_ptr<PixelImage> target = PixelImage::Create(row.width, row.height, row.channels);
    ASSERT_FALSE(Resample(*ImageOf(row.source), *target, nullptr).HasError());
    EXPECT_EQ(PixelText(*target), row.expected) << row.name;
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
