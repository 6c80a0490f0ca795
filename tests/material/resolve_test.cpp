// What materials refer to: in which order it is looked up, and what is missing.

#include <gtest/gtest.h>

#include "tests/document/documentload.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

// Textures 0 and 1 are whole, 2 lacks its sampler, 3 its image, 4 to 7 lead to images that are not whole.
constexpr const char* kTextures =
  R"("textures":[{"source":0},{"source":1,"sampler":0},{"source":0,"sampler":9},{"source":9},{"source":2},{"source":3},
                 {"source":4},{"source":5}],
     "samplers":[{"magFilter":9728}],
     "images":[{"uri":"a.png"},{"bufferView":0,"mimeType":"image/png"},{},{"bufferView":9},{"bufferView":1},
               {"bufferView":9,"uri":"a.png"}],
     "buffers":[{"byteLength":4}],"bufferViews":[{"buffer":0,"byteLength":4},{"buffer":9,"byteLength":4}])";

constexpr const char* kNoTexture = "Illegal state: Condition _texture not fulfilled. ";
constexpr const char* kNoSampler = "Illegal state: Condition _sampler not fulfilled. ";
constexpr const char* kNoSource = "Illegal state: Condition _source not fulfilled. ";

struct ResolveRow
{
  const char* name;
  const char* material;
  const char* message;
};

const ResolveRow kResolveRows[] = {
  {"NoIndex", R"({"normalTexture":{"index":-1}})", ""},
  {"NegativeTexture", R"({"normalTexture":{"index":-2}})", kNoTexture},
  {"MissingImage", R"({"normalTexture":{"index":3}})", kNoSource},
  {"ImageOfNothing", R"({"normalTexture":{"index":4}})",
   "Illegal state: Condition IsBase64() && _data.IsPopulated() || GetURIString().IsPopulated() not fulfilled. "},
  {"MissingBuffer", R"({"normalTexture":{"index":6}})", "Illegal state: Condition buff not fulfilled. "},
  {"ViewWinsOverUri", R"({"normalTexture":{"index":7}})", "Illegal state: Condition _bufferView not fulfilled. "},
  // Of two references that cannot be resolved the first tells.
  {"BaseColorFirst", R"({"pbrMetallicRoughness":{"metallicRoughnessTexture":{"index":8},"baseColorTexture":{"index":2}}})",
   kNoSampler},
  {"MetallicRoughnessSecond", R"({"normalTexture":{"index":8},"pbrMetallicRoughness":{"metallicRoughnessTexture":{"index":2}}})",
   kNoSampler},
  {"NormalThird", R"({"occlusionTexture":{"index":8},"normalTexture":{"index":2}})", kNoSampler},
  {"OcclusionFourth", R"({"emissiveTexture":{"index":8},"occlusionTexture":{"index":2}})", kNoSampler},
  {"EmissiveLast", R"({"emissiveTexture":{"index":3},"occlusionTexture":{"index":0}})", kNoSource},
};

class MaterialReferences : public testing::TestWithParam<ResolveRow>
{};

TEST_P(MaterialReferences, AreFoundOrTold)
{
  const DocumentHost host;
  GltfData data = ReadRecords(R"({"materials":[)" + std::string(GetParam().material) + "]," + kTextures + "}");
  ASSERT_TRUE(data.materials.Contains(0));
  EXPECT_EQ(ErrorText(data.materials.Find(0)->ResolveMaterial(&data)), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Rows, MaterialReferences, testing::ValuesIn(kResolveRows), RowName());

TEST(MaterialReferences, LeadToImageAndSampler)
{
  const DocumentHost host;
  GltfData data =
    ReadRecords(R"({"materials":[{"normalTexture":{"index":0},"emissiveTexture":{"index":1}}],)" + std::string(kTextures) + "}");
  GltfMaterial& material = *data.materials.Find(0);
  ASSERT_EQ(ErrorText(material.ResolveMaterial(&data)), "");
  EXPECT_EQ(material.normalTexture.GetImage().GetValue(), data.images.Find(0));
  EXPECT_EQ(material.emissiveTexture.GetImage().GetValue(), data.images.Find(1));
  EXPECT_EQ(data.textures.Find(0)->GetSampler(), data.samplers.Find(-1));
  EXPECT_EQ(data.textures.Find(1)->GetSampler(), data.samplers.Find(0));
  EXPECT_EQ(data.images.Find(1)->GetViewByteLength(), 4);
}

TEST(MaterialReferences, AreSavedWhereThereIsAnImage)
{
  DocumentHost host;
  GltfData data = ReadRecords(R"({"materials":[{"normalTexture":{"index":1},"occlusionTexture":{"index":-1},
                                                "emissiveTexture":{"index":3}}],)" +
                                std::string(kTextures) + "}",
                              {1, 2, 3, 4});
  GltfMaterial& material = *data.materials.Find(0);
  const Url url = PathUrl(host.folder / "x.png");
  EXPECT_EQ(ErrorText(material.baseColorTexture.SaveImageData(url)), "Illegal state: Condition IsInitialized() not fulfilled. ");
  EXPECT_EQ(ErrorText(material.occlusionTexture.SaveImageData(url)), "");
  EXPECT_EQ(ErrorText(material.normalTexture.SaveImageData(url)), kNoTexture);  // not resolved yet
  EXPECT_EQ(ErrorText(material.ResolveMaterial(&data)), kNoSource);
  EXPECT_EQ(ErrorText(material.emissiveTexture.SaveImageData(url)), "Illegal state: Condition IsValid() not fulfilled. ");
  EXPECT_TRUE(host.folder.List().empty());
  ASSERT_EQ(ErrorText(data.images.Find(1)->CopyFromBufferView()), "");
  EXPECT_EQ(ErrorText(material.normalTexture.SaveImageData(url)), "");
  EXPECT_EQ(host.folder.Read("x.png"), "\x01\x02\x03\x04");
}

}  // namespace
}  // namespace q7z::test
