// The chunk walk of a GLB, from its bytes to the records and the first buffer.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/documentload.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

using testing::ElementsAreArray;

namespace
{

constexpr const char* kNoLength = "Illegal state: Condition glbFile->ReadUInt32(&chunkLength) not fulfilled. ";
constexpr const char* kNoType = "Illegal state: Condition glbFile->ReadUInt32(&chunkType) not fulfilled. ";
constexpr const char* kNoData =
  "Illegal state: Condition glbFile->ReadBytes(gltfChunkBytes.GetFirst(), chunkLength) == chunkLength not fulfilled. ";
constexpr const char* kWrongOrder =
  "Illegal state: Condition (firstChunk && isGltfChunk) || (!firstChunk && !isGltfChunk) not fulfilled. ";
constexpr const char* kNothing = "Illegal state: Condition jsonGLTF.IsPopulated() not fulfilled. ";

constexpr uint32_t kUnknownChunk = 0x21212121;

// 32 bytes, so that nothing is padded.
constexpr const char* kJson = R"({"buffers":[{"byteLength":8 }] })";

}  // namespace

/// The bytes behind the header, and what the load says or the first buffer holds.
struct WalkRow
{
  const char* name;
  GlbBuilder file;
  const char* message;
  Bytes buffer = {};
};

class GlbWalk : public testing::TestWithParam<WalkRow>
{};

TEST_P(GlbWalk, GivesTheBufferOrAMessage)
{
  DocumentLoad load;
  EXPECT_THAT(load.RunGlb(GetParam().file.File()), testing::StartsWith(GetParam().message));
  if (const GltfBuffer* const buffer = load.GetData().buffers.Find(0))
    EXPECT_THAT(ToVector(buffer->GetBytes()), ElementsAreArray(GetParam().buffer));
  else
    EXPECT_NE(*GetParam().message, '\0');
}

GlbBuilder File()
{
  return GlbBuilder().Json(kJson);
}

const WalkRow kWalks[] = {
  {"JsonAlone", File(), ""},
  {"EmptyBin", File().Bin({}), ""},
  {"ManyBins", File().Bin({1, 2}).Raw({99, 99}).Bin({}).Bin({3, 4, 5, 6}).Bin({7}), "", {1, 2, 3, 4, 5, 6, 7}},
  {"UnknownBetweenBins", File().Chunk(kUnknownChunk, {9, 9, 9, 9}).Bin({1, 2, 3, 4}), "", {1, 2, 3, 4}},
  // The padding is the remainder of the length by four: one byte for five, three for seven.
  {"LengthOfFive", File().Bin({1, 2, 3, 4, 5}).Raw({99}).Bin({6, 7, 8, 9}), "", {1, 2, 3, 4, 5, 6, 7, 8, 9}},
  {"LengthOfSeven", File().Bin({1, 2, 3, 4, 5, 6, 7}).Raw({99, 99, 99}).Bin({8}), "", {1, 2, 3, 4, 5, 6, 7, 8}},
  {"UnknownOfLengthFive", File().Chunk(kUnknownChunk, {9, 9, 9, 9, 9}).Raw({99}).Bin({1, 2, 3, 4}), "", {1, 2, 3, 4}},
  {"UnpaddedJson", GlbBuilder().Json(std::string(kJson) + " ").Raw({99}).Bin({1, 2, 3, 4}), "", {1, 2, 3, 4}},
  {"OverLongUnknown", File().Bin({1, 2, 3, 4}).ChunkOfLength(kUnknownChunk, 0xffffffff, {9}), "", {1, 2, 3, 4}},
  {"NoChunk", GlbBuilder(), kNothing},
  {"EmptyObject", GlbBuilder().Json("{}  "), kNothing},
  {"SecondJson", File().Json(kJson), kWrongOrder},
  {"BinFirst", GlbBuilder().Bin({1, 2, 3, 4}).Json(kJson), kWrongOrder},
  {"UnknownFirst", GlbBuilder().Chunk(kUnknownChunk, {}).Json(kJson), kWrongOrder},
  // The walk ends with the parse error before it meets the wrong chunk behind.
  {"NoJsonThenJson", GlbBuilder().Json("{]  ").Json(kJson), "The JSON text is broken: "},
  {"EmptyJson", GlbBuilder().Json(""), "The JSON text is broken: "},
};
INSTANTIATE_TEST_SUITE_P(Rows, GlbWalk, testing::ValuesIn(kWalks), RowName());

TEST(GlbWalk, TellsWhereTheFileWasCut)
{
  // 12 bytes of header, 8 and 32 of the JSON chunk, 8 and 8 of the binary one.
  const Bytes whole = File().Bin({1, 2, 3, 4, 5, 6, 7, 8}).File();
  ASSERT_EQ(whole.size(), 68u);
  DocumentLoad load;
  for (size_t size = 0; size <= whole.size(); ++size)
  {
    const char* const expected = size <= 12   ? kNothing
                                 : size < 16  ? kNoLength
                                 : size < 20  ? kNoType
                                 : size < 52  ? kNoData
                                 : size == 52 ? ""
                                 : size < 56  ? kNoLength
                                 : size < 60  ? kNoType
                                 : size < 68  ? kNoData
                                              : "";
    EXPECT_EQ(load.RunGlb(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), expected) << size;
  }
}

TEST(GlbWalk, MakesNoRoomForWhatAChunkMerelyClaims)
{
  const GlbBuilder files[] = {GlbBuilder().ChunkOfLength(GlbBuilder::kJson, 0x7ffffff0, ToBytes(kJson)),
                              File().ChunkOfLength(GlbBuilder::kBin, 0x7ffffff0, {1}),
                              File().ChunkOfLength(GlbBuilder::kBin, 5, {1, 2, 3, 4})};
  for (const GlbBuilder& file : files)
  {
    DocumentLoad load;
    StopFailingAllocations();
    EXPECT_EQ(load.RunGlb(file.File()), kNoData);
    EXPECT_LT(GetLargestAllocation(), 100000);
  }
}

TEST(GlbWalk, TakesOneBlockForOneBinaryChunk)
{
  constexpr Int kChunkBytes = 1000000;
  DocumentLoad load;
  EXPECT_EQ(load.RunGlb(File().Bin(Bytes(kChunkBytes, 7)).File()), "");
  const BaseArray<Byte>& bytes = load.GetData().buffers.Find(0)->GetBytes();
  EXPECT_EQ(bytes.GetCount(), kChunkBytes);
  EXPECT_EQ(bytes.GetCapacity(), kChunkBytes);
  EXPECT_EQ(bytes[kChunkBytes - 1], 7);
}

TEST(GlbWalk, TellsWhichCallOfTheFileFailed)
{
  const Bytes file = File().Bin({1, 2, 3, 4, 5}).Raw({99}).Chunk(kUnknownChunk, {9, 9, 9, 9}).File();
  const char* const messages[] =
    {"Out of memory. ",
     "Illegal state: Condition glbFile->Open(glbFilename, FILEOPEN::READ, FILEDIALOG::IGNOREOPEN, BYTEORDER::V_INTEL) not "
     "fulfilled. ",
     "Illegal state: Condition glbFile->Seek(12) not fulfilled. ",
     kNoLength,
     kNoType,
     kNoData,
     kNoLength,
     kNoType,
     kNoData,
     "Illegal state: Condition glbFile->Seek(chunkLength % 4) not fulfilled. ",
     kNoLength,
     kNoType,
     "Illegal state: Condition glbFile->Seek(chunkLength) not fulfilled. ",
     "",  // closing
     ""};
  DocumentLoad load;
  load.files.failsShort = true;
  for (const char* const message : messages)
  {
    ++load.files.failAt;
    EXPECT_EQ(load.RunGlb(file), message) << load.files.failAt;
  }
  load.host.Host().ReplaceService(HostJson::kId, nullptr);
  EXPECT_EQ(load.RunGlb(file), "The host offers no JSON parser.");
}

}  // namespace q7z::test
