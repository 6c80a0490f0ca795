// The saver as the host sees it: defaults, enabling, the suffix, status values, progress, and the bytes of the binary form.

#include <cstring>

#include <gtest/gtest.h>

#include "plugin/export/gltfexport.h"
#include "plugin/export/gltfexportparameters.h"
#include "tests/support/savedfile.h"

namespace q7z::test
{
namespace
{

constexpr const char* kSavedTriangle =
  R"("objects": [{"id": 1, "type": 5100, "name": "T", "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2]}])";

class Saver : public testing::Test
{
protected:
  HostNode* Node() { return ToHost(&_node); }
  HostContainer& Options() { return *Node()->GetContainer(); }

  TestHost _host;
  HeadlessNode _node{1041129};
  GltfSceneSaver _saver;
};

TEST_F(Saver, StartsWithItsDefaults)
{
  ASSERT_TRUE(_saver.Init(Node()));
  EXPECT_EQ(*Options().Find(1003), HostValue(HostUnitScale{1, 2}));
  const ExportOptions options = ReadExportOptions(Options());
  EXPECT_TRUE(options.exportNormals && options.exportUvs && options.exportTextures && options.exportTransformAnimation);
  EXPECT_TRUE(options.exportMorphs && options.useCurrentFrame && options.exportCameras && options.shareMeshes && options.flipZ);
  EXPECT_FALSE(options.doubleSidedMaterials || options.exportSkins || options.bakeAnimation);
  EXPECT_EQ(options.textureWidth, 1024);
  EXPECT_EQ(options.textureHeight, 1024);
  EXPECT_EQ(options.textureResizeMode, 1009);
  EXPECT_EQ(options.exportFrame, 0);
  EXPECT_EQ(options.fileFormat, 1028);
  EXPECT_EQ(options.exportScale, 0.01);
}

TEST_F(Saver, ReadsMissingParametersAsDefaults)
{
  const ExportOptions options = ReadExportOptions(Options());
  EXPECT_EQ(options.exportScale, 1.0);
  EXPECT_FALSE(options.doubleSidedMaterials);
  EXPECT_EQ(options.textureResizeMode, 1009);
  EXPECT_TRUE(options.shareMeshes);
}

TEST(SaverEnabling, FollowsTheOtherParameters)
{
  const struct
  {
    Parameters parameters;
    Int32 parameter;
    Bool enabled;
  } rows[] = {{{}, 1023, true},
              {{{1022, true}}, 1023, false},
              {{{1022, false}}, 1023, true},
              {{}, 1020, false},
              {{{1014, true}}, 1020, true},
              {{{1015, true}}, 1020, true},
              {{{1019, true}}, 1020, true},
              {{{1014, false}, {1015, false}, {1019, false}}, 1020, false},
              {{}, 1001, true}};
  const TestHost host;
  for (const auto& row : rows)
  {
    HeadlessNode node(1041129);
    for (const auto& [id, value] : row.parameters)
      ASSERT_TRUE(ToHost(&node)->GetContainer()->Set(id, value));
    EXPECT_EQ(GltfSceneSaver().GetEnabling(ToHost(&node), HostDescId(row.parameter)), row.enabled) << row.parameter;
  }
}

TEST_F(Saver, AnswersTheSuffixOfTheChosenForm)
{
  String suffix;
  HostSuffixRecord record{&suffix, 0};
  EXPECT_TRUE(_saver.Message(Node(), 1058891, &record));
  EXPECT_EQ(suffix, "gltf"_s);
  EXPECT_EQ(record.isAnswered, 1);
  ASSERT_TRUE(Options().Set(1027, HostValue(1029)));
  EXPECT_TRUE(_saver.Message(Node(), 1058891, &record));
  EXPECT_EQ(suffix, "glb"_s);
  HostSuffixRecord withoutText;
  EXPECT_TRUE(_saver.Message(Node(), 1058891, &withoutText));
  EXPECT_EQ(withoutText.isAnswered, 1);
  EXPECT_TRUE(_saver.Message(Node(), 1, nullptr));
}

uint32_t WordOf(const std::string& bytes, size_t offset)
{
  uint32_t word = 0;
  std::memcpy(&word, bytes.data() + offset, sizeof(word));
  return word;
}

TEST(SaverBinary, HasItsChunks)
{
  // Of a triangle three indices of two bytes, two blanks, three positions.
  for (const size_t binaryBytes : {size_t(0), size_t(6 + 2 + 36)})
  {
    const SavedFile file(SceneText(binaryBytes ? kSavedTriangle : R"("name": "nothing")"),
                         {{kFileFormatParameter, HostValue(kGlbFormat)}});
    ASSERT_EQ(file.Report().error, "");
    const std::string& bytes = file.Bytes();
    ASSERT_GE(bytes.size(), 20u);
    EXPECT_EQ(bytes.substr(0, 4), "glTF");
    EXPECT_EQ(WordOf(bytes, 4), 2u);
    const uint32_t jsonLength = WordOf(bytes, 12);
    EXPECT_EQ(bytes.substr(16, 4), "JSON");
    EXPECT_EQ(jsonLength % 4, 0u);
    // Without binary data the length still counts the header of its chunk.
    EXPECT_EQ(WordOf(bytes, 8), 28 + jsonLength + binaryBytes);
    ASSERT_EQ(bytes.size(), 20 + jsonLength + (binaryBytes ? 8 + binaryBytes : 0));
    if (binaryBytes)
    {
      EXPECT_EQ(WordOf(bytes, 20 + jsonLength), binaryBytes);
      EXPECT_EQ(bytes.substr(24 + jsonLength, 4), std::string("BIN\0", 4));
      EXPECT_EQ(bytes.substr(28 + jsonLength + 6, 2), "  ");
    }
    EXPECT_EQ(file.At("buffers/0/uri"), "-");
    EXPECT_EQ(file.At("buffers/0/byteLength"), binaryBytes ? std::to_string(binaryBytes) : "-");
  }
}

TEST_F(Saver, WritesNothingWithoutItsFlagOrWhenAJobWasCancelled)
{
  const HeadlessOwner<HeadlessDocument> document = ReadScene(SceneText(kSavedTriangle));
  const TestFolder folder;
  SaveRequest request;
  request.path = folder / "a.gltf";
  const Int32 flags = request.flags;
  request.flags = 2;
  EXPECT_TRUE(_host.Host().Save(request, *document).Succeeded());
  HeadlessJob job;
  job.Cancel();
  request.flags = flags;
  request.job = &job;  // the save runs on a thread
  EXPECT_EQ(_host.Host().Save(request, *document).returnValue, -8);
  EXPECT_TRUE(folder.List().empty());
  // The next save knows nothing of it.
  HeadlessJob another;
  request.job = &another;
  EXPECT_TRUE(_host.Host().Save(request, *document).Succeeded());
  EXPECT_EQ(folder.List(), std::vector<std::string>{"a.gltf"});
}

}  // namespace
}  // namespace q7z::test
