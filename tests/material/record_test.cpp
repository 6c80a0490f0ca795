// Materials, textures, samplers and images as they are read: defaults, members of the wrong kind, and what is refused.

#include <sstream>

#include <gtest/gtest.h>

#include "tests/document/documentload.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

std::string Write(const GltfTextureInfo& texture)
{
  if (!texture.IsInitialized())
    return "none";
  return std::to_string(texture.GetIndex()) + ":" + std::to_string(texture.GetTexCoord());
}

std::string Write(const GltfMaterial& m)
{
  std::ostringstream out;
  out << "base " << m.baseColorFactor.x << ' ' << m.baseColorFactor.y << ' ' << m.baseColorFactor.z << ' ' << m.baseColorFactor.w
      << ' ' << Write(m.baseColorTexture) << ", metal " << m.metallicFactor << ", rough " << m.roughnessFactor << ' '
      << Write(m.metallicRoughnessTexture) << ", normal " << m.normalScale << ' ' << Write(m.normalTexture) << ", occlusion "
      << m.occlusionStrength << ' ' << Write(m.occlusionTexture) << ", emissive " << m.emissiveFactor.x << ' '
      << m.emissiveFactor.y << ' ' << m.emissiveFactor.z << ' ' << Write(m.emissiveTexture) << ", " << Text(m.alphaMode) << ' '
      << m.alphaCutoff << (m.doubleSided ? " double" : "") << ", '" << Text(m.name) << "'";
  return out.str();
}

constexpr const char* kDefaults =
  "base 1 1 1 1 none, metal 1, rough 1 none, normal 1 none, occlusion 1 none, emissive 0 0 0 none, OPAQUE 0.5, ''";

struct MaterialRow
{
  const char* name;
  const char* json;
  const char* expected;  // the record, or the message of what is wrong
};

const MaterialRow kMaterialRows[] = {
  {"Empty", "{}", kDefaults},
  {"EverythingSet",
   R"({"name":"Wood","pbrMetallicRoughness":{"baseColorFactor":[0.25,0.5,0.75,0.125],"baseColorTexture":{"index":3},
       "metallicFactor":0.5,"roughnessFactor":0,"metallicRoughnessTexture":{"index":4,"texCoord":1}},
       "normalTexture":{"index":5,"scale":2.5},"occlusionTexture":{"index":6,"strength":0.5},"emissiveTexture":{"index":7},
       "emissiveFactor":[1,0,1],"alphaMode":"MASK","alphaCutoff":0.25,"doubleSided":true})",
   "base 0.25 0.5 0.75 0.125 3:0, metal 0.5, rough 0 4:1, normal 2.5 5:0, occlusion 0.5 6:0, emissive 1 0 1 7:0, MASK 0.25 "
   "double, 'Wood'"},
  {"EmissionLosesItsFraction", R"({"emissiveFactor":[0.5,1.9,2]})",
   "base 1 1 1 1 none, metal 1, rough 1 none, normal 1 none, occlusion 1 none, emissive 0 1 2 none, OPAQUE 0.5, ''"},
  {"AnyAlphaMode", R"({"alphaMode":"glass"})",
   "base 1 1 1 1 none, metal 1, rough 1 none, normal 1 none, occlusion 1 none, emissive 0 0 0 none, glass 0.5, ''"},
  {"ScaleOfAnIndexLessReference", R"({"normalTexture":{"index":-1,"scale":3}})",
   "base 1 1 1 1 none, metal 1, rough 1 none, normal 3 -1:0, occlusion 1 none, emissive 0 0 0 none, OPAQUE 0.5, ''"},
  {"NumbersOfTheWrongKind",
   R"({"pbrMetallicRoughness":{"metallicFactor":"1","roughnessFactor":null},"alphaCutoff":[],"doubleSided":1,"alphaMode":5,
       "name":{}})",
   kDefaults},
  {"ObjectsOfTheWrongKind", R"({"pbrMetallicRoughness":[],"normalTexture":5,"occlusionTexture":null,"emissiveTexture":"a"})",
   kDefaults},
  {"ThreeColors", R"({"pbrMetallicRoughness":{"baseColorFactor":[1,1,1]}})",
   "Illegal state: Condition baseColorFactorArr.GetCount() == 4 not fulfilled. "},
  {"TwoEmissions", R"({"emissiveFactor":[1,1]})", "Illegal state: Condition emissiveFactorArr.GetCount() == 3 not fulfilled. "},
  {"BaseColorTextureWithoutIndex", R"({"pbrMetallicRoughness":{"baseColorTexture":{}}})",
   "The required member index is missing."},
  {"EmissiveTextureWithoutIndex", R"({"emissiveTexture":{}})", "The required member index is missing."},
};

class MaterialRecord : public testing::TestWithParam<MaterialRow>
{};

TEST_P(MaterialRecord, IsReadOrRefused)
{
  GltfMaterial material;
  const std::string message = ErrorText(material.ReadFromJson(ParseObject(GetParam().json)));
  EXPECT_EQ(message.empty() ? Write(material) : message, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, MaterialRecord, testing::ValuesIn(kMaterialRows), RowName());

TEST(MaterialRecord, TextIsNoNumber)
{
  for (const char* const json :
       {R"({"pbrMetallicRoughness":{"baseColorFactor":[1,1,1,"1"]}})", R"({"pbrMetallicRoughness":{"baseColorFactor":"white"}})",
        R"({"emissiveFactor":[1,1,"1"]})", R"({"normalTexture":{"index":"0"}})"})
  {
    GltfMaterial material;
    EXPECT_TRUE(material.ReadFromJson(ParseObject(json)).HasError()) << json;
  }
}

TEST(TextureRecord, NeedsAnImageButNoSampler)
{
  GltfTexture texture;
  EXPECT_EQ(ErrorText(texture.ReadFromJson(ParseObject(R"({"sampler":2})"))), "The required member source is missing.");
  EXPECT_EQ(ErrorText(texture.ReadFromJson(ParseObject(R"({"source":4})"))), "");
  EXPECT_EQ(texture.GetSamplerIndex(), -1);
  EXPECT_EQ(texture.GetSourceIndex(), 4);
  EXPECT_FALSE(texture.IsValid());
}

TEST(SamplerRecord, HasDefaults)
{
  const std::pair<const char*, std::vector<Int32>> rows[] = {
    {R"({"magFilter":9728,"minFilter":9987,"wrapS":33071,"wrapT":33648})", {9728, 9987, 33071, 33648}},
    {R"({"magFilter":"9728","wrapS":4294977025,"wrapT":-2147483649})", {9729, 9729, 10497, 10497}},
  };
  for (const auto& [json, numbers] : rows)
  {
    GltfSampler sampler;
    ASSERT_EQ(ErrorText(sampler.ReadFromJson(ParseObject(json))), "");
    EXPECT_EQ((std::vector<Int32>{sampler.magFilter, sampler.minFilter, sampler.wrapS, sampler.wrapT}), numbers) << json;
  }
}

TEST(ImageRecord, HasDefaultsAndDecodesItsUriOnce)
{
  struct Row
  {
    const char* json;
    const char* uri;
    const char* mimeType;
    Int view;
  };
  const Row rows[] = {
    {"{}", "", "", -1},
    {R"({"uri":"a%20b.png","mimeType":"image/png","bufferView":3})", "a b.png", "image/png", 3},
    {R"({"uri":"a%2520b.png"})", "a%20b.png", "", -1},
    {R"({"uri":"data:image/png;base64,%41AAA"})", "data:image/png;base64,%41AAA", "", -1},
    {R"({"uri":"data:text/plain,%41"})", "data:text/plain,A", "", -1},
    {R"({"uri":7,"mimeType":7,"bufferView":"7"})", "", "", -1},
  };
  const DocumentHost host;
  for (const Row& row : rows)
  {
    GltfImage image;
    ASSERT_EQ(ErrorText(image.ReadFromJson(ParseObject(row.json))), "");
    EXPECT_EQ(Text(image.GetURIString()), row.uri);
    EXPECT_EQ(Text(image.GetMimeType()), row.mimeType);
    EXPECT_EQ(image.GetBufferViewIndex(), row.view);
    EXPECT_EQ(image.GetImageType(), 1104);
  }
}

TEST(MaterialRecords, BrokenOnesAreLeftOut)
{
  const DocumentHost host;
  const GltfData data = ReadRecords(R"({"materials":[{"name":"A"},{"emissiveFactor":[]},{"name":"C"}],
                                        "textures":[{},{"source":0}],"samplers":[{"magFilter":1}],"images":[{},{"name":"I"}]})");
  EXPECT_EQ(data.materials.GetCount(), 2);
  EXPECT_FALSE(data.materials.Contains(1));
  EXPECT_EQ(Text(data.materials.Find(2)->name), "C");
  EXPECT_EQ(data.textures.GetCount(), 1);
  EXPECT_TRUE(data.textures.Contains(1));
  EXPECT_EQ(data.samplers.Find(0)->magFilter, 1);
  EXPECT_EQ(data.samplers.Find(-1)->magFilter, 9729);
  EXPECT_EQ(Text(data.images.Find(1)->GetName()), "I");
}

TEST(MaterialRecords, AreReadOnRequestAlone)
{
  const DocumentHost host;
  ImportOptions options;
  ASSERT_EQ(ErrorText(options.Set(importkeys::kMaterials, Data(false))), "");
  const GltfData data = ReadRecords(R"({"materials":[{}],"textures":[{"source":0}],"samplers":[{}],"images":[{}]})", {}, options);
  EXPECT_EQ(data.materials.GetCount() + data.textures.GetCount() + data.images.GetCount(), 0);
  EXPECT_EQ(data.samplers.GetCount(), 1);  // the default one
}

}  // namespace
}  // namespace q7z::test
