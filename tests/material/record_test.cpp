// Materials and images as they are read: defaults, members of the wrong kind, what is refused, and which references are missing.

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
  {"ColorIsAText", R"({"pbrMetallicRoughness":{"baseColorFactor":"white"}})", "an array expected, a text found."},
  {"EmissionOfAText", R"({"emissiveFactor":[1,1,"1"]})", "a whole number expected, a text found."},
  {"IndexIsAText", R"({"normalTexture":{"index":"0"}})", "a whole number expected, a text found."},
  {"TwoEmissions", R"({"emissiveFactor":[1,1]})", "Illegal state: Condition emissiveFactorArr.GetCount() == 3 not fulfilled. "},
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

TEST(ImageRecord, DecodesItsUriUnlessItHoldsAnImage)
{
  const std::pair<const char*, const char*> rows[] = {{"a%2520b.png", "a%20b.png"},
                                                      {"data:image/png;base64,%41AAA", "data:image/png;base64,%41AAA"},
                                                      {"data:text/plain,%41", "data:text/plain,A"}};
  const DocumentHost host;
  for (const auto& [uri, decoded] : rows)
  {
    GltfImage image;
    ASSERT_EQ(ErrorText(image.ReadFromJson(ParseObject(R"({"uri":")" + std::string(uri) + "\"}"))), "");
    EXPECT_EQ(Text(image.GetURIString()), decoded);
  }
}

// References.

// Textures 0 and 1 are whole, 2 lacks its sampler, 3 its image, 4 to 7 lead to images that are not whole. 8 is empty, and 9 lacks
// its source, so that there is none.
constexpr const char* kTextures =
  R"("textures":[{"source":0},{"source":1,"sampler":0},{"source":0,"sampler":9},{"source":9},{"source":2},{"source":3},
                 {"source":4},{"source":5},{},{"sampler":0}],
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
  {"TextureWithoutSource", R"({"normalTexture":{"index":9}})", kNoTexture},
  {"EmptyTexture", R"({"normalTexture":{"index":8}})", kNoSource},
  {"MissingImage", R"({"normalTexture":{"index":3}})", kNoSource},
  {"ImageOfNothing", R"({"normalTexture":{"index":4}})",
   "Illegal state: Condition IsBase64() && _data.IsPopulated() || GetURIString().IsPopulated() not fulfilled. "},
  {"MissingBuffer", R"({"normalTexture":{"index":6}})", "Illegal state: Condition buff not fulfilled. "},
  {"ViewWinsOverUri", R"({"normalTexture":{"index":7}})", "Illegal state: Condition _bufferView not fulfilled. "},
  // Of two references that cannot be resolved the first tells.
  {"BaseColorFirst", R"({"pbrMetallicRoughness":{"metallicRoughnessTexture":{"index":9},"baseColorTexture":{"index":2}}})",
   kNoSampler},
  {"MetallicRoughnessSecond", R"({"normalTexture":{"index":9},"pbrMetallicRoughness":{"metallicRoughnessTexture":{"index":2}}})",
   kNoSampler},
  {"NormalThird", R"({"occlusionTexture":{"index":9},"normalTexture":{"index":2}})", kNoSampler},
  {"OcclusionFourth", R"({"emissiveTexture":{"index":9},"occlusionTexture":{"index":2}})", kNoSampler},
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
