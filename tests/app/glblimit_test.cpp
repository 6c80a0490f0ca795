// Files whose words and whose JSON tell different lengths, as the saver leaves them when a length has more than 32 bits; and which
// documents are too small for that.

#include "app/glblimit.h"

#include <fstream>

#include <gtest/gtest.h>

#include "host/scenefile/scenefile.h"
#include "tests/app/process.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

using app::GlbLook;

constexpr uint32_t kJson = GlbBuilder::kJson;
constexpr uint32_t kBin = GlbBuilder::kBin;

/// A file as the saver writes it: its length counts the header of a second chunk that is not there, too.
struct LookCase
{
  const char* name;
  std::string json;  // padded by the test
  uint32_t length;   // of the file, as its header tells, less the length of the JSON
  GlbBuilder rest;   // behind the first chunk
  GlbLook look;
};

std::string Declare(const std::string& byteLength)
{
  return R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":)" + byteLength + "}]}";
}

std::string Word(uint32_t word)
{
  return std::string(reinterpret_cast<const char*>(&word), sizeof(word));
}

class GlbLimit : public testing::TestWithParam<LookCase>
{};

TEST_P(GlbLimit, LooksAtAllLengths)
{
  const std::string json = GetParam().json + std::string((4 - GetParam().json.size() % 4) % 4, ' ');
  const uint32_t jsonLength = static_cast<uint32_t>(json.size());
  const Bytes rest = GetParam().rest.File();
  const TestFolder folder;
  const std::string path = folder.Write("a.glb", "glTF" + Word(2) + Word(GetParam().length + jsonLength) + Word(jsonLength) +
                                                   Word(kJson) + json + std::string(rest.begin() + 12, rest.end()));
  EXPECT_EQ(app::LookAtGlb(path), GetParam().look);
}

const LookCase kLookCases[] = {
  {"NoBinaryData", R"({"asset":{"version":"2.0"}})", 28, GlbBuilder(), GlbLook::kFits},
  {"BinaryData", Declare("8"), 36, GlbBuilder().Bin(Bytes(8)), GlbLook::kFits},
  {"PaddedBinaryData", Declare("5"), 36, GlbBuilder().Bin(Bytes(8)), GlbLook::kFits},
  // 2 to the 32 and 8 more: the words keep the 8.
  {"BufferBeyondTheWords", Declare("4294967304"), 36, GlbBuilder().Bin(Bytes(8)), GlbLook::kTooLarge},
  // The buffer fits, with its padding it does not.
  {"PaddingBeyondTheWords", Declare("4294967295"), 28, GlbBuilder().Bin({}), GlbLook::kTooLarge},
  // The buffer fits, the file does not: 4294967292 + 28 and the JSON.
  {"FileBeyondTheWords", Declare("4294967292"), 24, GlbBuilder().ChunkOfLength(kBin, 4294967292, Bytes(8)), GlbLook::kTooLarge},
  {"LengthBeyondTheWords", Declare("8"), 32, GlbBuilder().Bin(Bytes(8)), GlbLook::kTooLarge},
  {"ChunkWithoutBuffer", R"({"asset":{}})", 28, GlbBuilder().Bin(Bytes(8)), GlbLook::kTooLarge},
  {"TwoBuffers", R"({"buffers":[{"byteLength":8},{"byteLength":0}]})", 36, GlbBuilder().Bin(Bytes(8)), GlbLook::kTooLarge},
  // JSON that is longer than its word tells breaks off.
  {"JsonThatBreaksOff", R"({"buffers":[{"byteLength":8)", 36, GlbBuilder().Bin(Bytes(8)), GlbLook::kTooLarge},
  {"NoJson", "", 28, GlbBuilder(), GlbLook::kTooLarge},
};
INSTANTIATE_TEST_SUITE_P(Rows, GlbLimit, testing::ValuesIn(kLookCases), RowName());

TEST(GlbLimitFile, IsLookedAtAsFarAsItReaches)
{
  const TestFolder folder;
  EXPECT_EQ(app::LookAtGlb(folder / "none"), GlbLook::kUnreadable);
  const std::string header = "glTF" + Word(2) + Word(128) + Word(100) + Word(kJson);
  EXPECT_EQ(app::LookAtGlb(folder.Write("cut.glb", header.substr(0, 19))), GlbLook::kTooLarge);
  EXPECT_EQ(app::LookAtGlb(folder.Write("headers.glb", header + std::string(99, ' '))), GlbLook::kTooLarge);
}

struct BoundCase
{
  const char* name;
  const char* members;  // of the scene document
  bool isFarBelow;
};

class GlbBound : public testing::TestWithParam<BoundCase>
{};

TEST_P(GlbBound, IsKnownForPlainDocuments)
{
  const std::string text = R"({"format": "q7z scene", "version": 1, )" + std::string(GetParam().members) + "}";
  const Result<HeadlessOwner<HeadlessDocument>> document = ReadSceneDocument(text, "");
  ASSERT_FALSE(document.HasError()) << document.GetError().GetMessage().GetView();
  EXPECT_EQ(app::IsFarBelowGlbLimit(*document.GetValue()), GetParam().isFarBelow);
}

#define TRIANGLE R"("type": 5100, "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2])"
const BoundCase kBoundCases[] = {
  {"Empty", R"("name": "")", true},
  {"MeshWithData", R"("objects": [{"id": 1, "type": 5140, "children": [{"id": 2, )" TRIANGLE R"(, "tags": [
      {"id": 3, "type": 5612, "on": true, "limit": true, "angle": 1.0},
      {"id": 4, "type": 5673, "polygons": [[0,0]]}]}, {"id": 5, "type": 5103}]}])",
   true},
  {"Instance", R"("objects": [{"id": 1, )" TRIANGLE R"(}, {"id": 2, "type": 5126, "reference": 1}])", true},
  {"InstanceOfNothing", R"("objects": [{"id": 1, "type": 5126}])", false},
  {"InstanceOfGroup", R"("objects": [{"id": 1, )" TRIANGLE R"(, "children": [{"id": 2, "type": 5140}]},
      {"id": 3, "type": 5126, "reference": 1}])",
   false},
  {"InstanceOfInstance", R"("objects": [{"id": 1, )" TRIANGLE R"(}, {"id": 2, "type": 5126, "reference": 1},
      {"id": 3, "type": 5126, "reference": 2}])",
   false},
  {"Material", R"("materials": [{"id": 1, "type": 5703, "name": "M", "channels": {}}])", false},
  {"Texture", R"("objects": [{"id": 1, )" TRIANGLE R"(, "tags": [{"id": 2, "type": 5616, "material": null}]}])", false},
  {"Morphs", R"("objects": [{"id": 1, )" TRIANGLE R"(, "tags": [{"id": 2, "type": 1024237, "morphs": []}]}])", false},
  {"AnimationBelow",
   R"("objects": [{"id": 1, "type": 5140, "children": [{"id": 2, "type": 5140, "tracks": [{"id": [[903,23,0],[1000,19,0]],
      "keys": []}]}]}])",
   false},
  {"Takes", R"("takes": [{"name": "Main", "main": true, "current": true}, {"name": "Other"}])", false},
};
#undef TRIANGLE
INSTANTIATE_TEST_SUITE_P(Rows, GlbBound, testing::ValuesIn(kBoundCases), RowName());

// A polygon takes up to 312 bytes, so that 11,000,000 of them are more than the three quarters of 4 GiB that count as far below.
TEST(GlbBoundOfPolygons, EndsAtThreeQuarters)
{
  HeadlessOwner<HeadlessDocument> document(HeadlessDocument::Create());
  HeadlessPolygonObject* const mesh = HeadlessPolygonObject::Create(0, 1000000);
  document->InsertObjectLast(mesh);
  for (int count = 2; count <= 11; ++count)
  {
    EXPECT_TRUE(app::IsFarBelowGlbLimit(*document)) << count;
    HeadlessObject* const instance = HeadlessObject::Create(kInstanceObjectType);
    EXPECT_TRUE(instance->SetReference(mesh));
    document->InsertObjectLast(instance);
  }
  EXPECT_FALSE(app::IsFarBelowGlbLimit(*document));
}

}  // namespace
}  // namespace q7z::test
