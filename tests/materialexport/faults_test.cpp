// What fails while classic materials are exported: loads end the save, encoders leave their texture out, and nothing is left over.

#include "plugin/material/gltfmaterialexport.h"
#include "plugin/module/hosttag.h"
#include "tests/materialexport/materialfixture.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

std::string WithTextures(const std::string& color)
{
  return R"("channels": {)" + Channel(0, color) + ", " + Channel(7, "alpha.png") + ", " + Channel(3) + ", " +
         Channel(1, "emissive.png") +
         R"(}, "layers": [{"id": 1000, "shaders": {"40": {"parameters": {"1002": "rough.png"}},
                                                 "44": {"parameters": {"1002": "metal.png"}}}}])";
}

class MaterialFaults : public MaterialExportTest
{
protected:
  MaterialFaults()
  {
    for (const char* const name : {"color.png", "alpha.png", "rough.png", "metal.png", "emissive.png"})
      _bitmaps.files[name] = ImageOf(std::to_string(name[0]) + ",0,0 / " + std::to_string(name[0]) + ",0,0");
  }
};

TEST_F(MaterialFaults, TheFirstMissingFileEndsTheSave)
{
  _bitmaps.files.clear();
  for (int round = 0; round < 20; ++round)
  {
    ASSERT_THAT(Save({WithTextures("first.png")}), testing::HasSubstr("Illegal state: Condition bmp not fulfilled., caused by: "
                                                                      "The image 'first.png' could not be loaded"));
    EXPECT_EQ(_status, -6);
  }
}

TEST_F(MaterialFaults, ReflectanceWithoutALayerEndsTheSave)
{
  for (const int channel : {3, 8})
  {
    EXPECT_THAT(Save({R"("channels": {)" + Channel(channel) + "}"}),
                testing::HasSubstr("Illegal state: Condition reflection_layer not fulfilled."));
    EXPECT_EQ(_status, -6);
  }
}

// The second material counts on the first one's image.
TEST_F(MaterialFaults, AnEncoderLeavesOutWhatWouldShareItsImage)
{
  _sessions.failing = {"png 1x2 all 99,0,0"};
  const std::string both = R"("channels": {)" + Channel(0, "color.png") + ", " + Channel(1, "color.png") + "}";
  ASSERT_EQ(Save({both, both}), "");
  EXPECT_EQ(Count("materials"), 2);
  for (const char* const name : {"images", "textures", "samplers", "materials/0/emissiveTexture", "materials/1/emissiveTexture",
                                 "materials/1/pbrMetallicRoughness/baseColorTexture"})
    EXPECT_EQ(At(name), "-") << name;
}

TEST_F(MaterialFaults, AHostWithoutEncodersLeavesAllTexturesOut)
{
  _host.Host().ReplaceService(HostMediaSessions::kId, nullptr);
  ASSERT_EQ(Save({WithTextures("color.png")}), "");
  EXPECT_EQ(At("images"), "-");
  EXPECT_EQ(At("materials/0/alphaMode"), "\"BLEND\"");
}

TEST_F(MaterialFaults, AHostWithoutJobsMakesTheSameImages)
{
  ASSERT_EQ(Save({WithTextures("color.png")}), "");
  const std::string images = At("images");
  _host.Host().ReplaceService(HostJobs::kId, nullptr);
  ASSERT_EQ(Save({WithTextures("color.png")}), "");
  EXPECT_EQ(At("images"), images);
  EXPECT_EQ(Count("images"), 3);
}

// The messages of the bitmap work reach the diagnostic output alone.
TEST_F(MaterialFaults, EveryBitmapCallCanFail)
{
  int failAt = 1;
  for (;; ++failAt)
  {
    _bitmaps.failAt = failAt;
    _bitmaps.callCount = 0;
    const std::string error = Save({WithTextures("color.png")});
    EXPECT_EQ(_bitmaps.liveCount, 0) << "call " << failAt;
    if (_bitmaps.callCount < failAt)
      break;
    // A load that fails ends the save, an encoder leaves its texture out.
    if (error.empty())
      EXPECT_EQ(Count("images"), 2) << "call " << failAt;
    else
      EXPECT_TRUE(_status == -6 || _status == -7) << "call " << failAt << ": " << error;
  }
  EXPECT_EQ(Count("images"), 3);
  EXPECT_GT(failAt, 30);
  for (const char* const message :
       {"Could not Alloc Bitmap.", "Could not Init Bitmap.", "Could not Init Merge Bitmap.", "Could not Init Alpha Bitmap."})
  {
    EXPECT_THAT(_host.Diagnostics(),
                testing::Contains(testing::HasSubstr("A texture could not be encoded: " + std::string(message))));
  }
}

class MaterialMemory : public MaterialFaults, public testing::WithParamInterface<Int>
{};

// On the descriptor itself: the host's part of a save has memory of its own to ask for.
TEST_P(MaterialMemory, RunsOutAtEveryRequest)
{
  _host.Host().ReplaceService(HostJobs::kId, nullptr);  // workers ask for memory whenever they like
  const HeadlessOwner<HeadlessDocument> document = ReadScene(TrianglesWith({WithTextures("color.png")}));
  const HostTextureTag* const tag = FindTextureTag(ToHost(document.get())->GetFirstObject());
  int failures = 0;
  for (Int failAt = 1;; ++failAt)
  {
    Bool failed = false;
    Int missing = 0;
    {
      DupDetect dupdetect;
      MaterialDescriptor material;
      FailAllocation(failAt, GetParam());
      const Result<void> result = material.Export(tag, true, MaterialIndexMap(), &dupdetect, true, DataDictionary());
      failed = result.HasError();
      const Bool fired = StopFailingAllocations() > 0;
      for (const TextureKind kind : {kBaseColorKind, kMetallicRoughnessKind, kEmissiveKind})
        missing += !material.GetTexture(kind).GetValue()->hasImage;
      // What a failed save leaves out does not matter; else it is a texture or a line of the diagnostic output.
      if (!fired)
      {
        EXPECT_TRUE(!failed && missing == 0);
        break;
      }
    }
    ++failures;
    ASSERT_EQ(_bitmaps.liveCount, 0) << "allocation " << failAt;
  }
  EXPECT_GT(failures, 10);
}

INSTANTIATE_TEST_SUITE_P(OneAndAllFollowing, MaterialMemory, testing::Values(Int(1), Int(1) << 40),
                         [](const auto& row) { return row.param == 1 ? "One" : "AllFollowing"; });

}  // namespace
}  // namespace q7z::test
