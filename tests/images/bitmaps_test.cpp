// The host's bitmaps through the table that the plug-in sees.

#include <gtest/gtest.h>

#include "host/images/headlessbitmaps.h"
#include "host/images/headlessimage.h"
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
  EXPECT_FALSE(Load(bitmap, "broken.png", BytesOf("no image at all")));
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
  const auto sweep = [](const auto& work)
  {
    bool succeeded = false;
    SweepAllocations([&] { succeeded = work(); }, [&](bool failed) { EXPECT_EQ(succeeded, !failed); });
  };
  HostBitmap* const other = Make();
  sweep([&] { return _bitmaps.Init(other, 3, 3, 24); });
  sweep([&] { return _bitmaps.Load(other, file); });
  sweep([&] { return _bitmaps.AddAlpha(bitmap); });
  EXPECT_TRUE(_warnings.texts.empty()) << "want of memory is no fault of a file";
}

}  // namespace

}  // namespace q7z::test
