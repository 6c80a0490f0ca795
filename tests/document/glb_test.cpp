// The chunk walk of a GLB, from its bytes to the records and the first buffer.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/documenthost.h"
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

/// Whether the first bytes of a file are accepted as a GLB header.
struct HeaderRow
{
  const char* name;
  Bytes probe;
  Bool accepted;
};

class GlbHeader : public testing::TestWithParam<HeaderRow>
{};

TEST_P(GlbHeader, IsRecognised)
{
  const Bytes exact(GetParam().probe);  // a block of exactly that size
  EXPECT_EQ(IsGlbHeader(exact.data(), static_cast<Int32>(exact.size())), GetParam().accepted);
}

INSTANTIATE_TEST_SUITE_P(Rows, GlbHeader,
                         testing::Values(HeaderRow{"Smallest", {'g', 'l', 'T', 'F', 2, 0, 0, 0, 13, 0, 0, 0}, true},
                                         HeaderRow{"Large", {'g', 'l', 'T', 'F', 2, 0, 0, 0, 0, 0, 0, 0xff, 1}, true},
                                         HeaderRow{"LengthOfTheHeader", {'g', 'l', 'T', 'F', 2, 0, 0, 0, 12, 0, 0, 0}, false},
                                         HeaderRow{"VersionOne", {'g', 'l', 'T', 'F', 1, 0, 0, 0, 13, 0, 0, 0}, false},
                                         HeaderRow{"VersionThree", {'g', 'l', 'T', 'F', 3, 0, 0, 0, 13, 0, 0, 0}, false},
                                         HeaderRow{"OtherMagic", {'G', 'L', 'T', 'F', 2, 0, 0, 0, 13, 0, 0, 0}, false},
                                         HeaderRow{"OneByteShort", {'g', 'l', 'T', 'F', 2, 0, 0, 0, 13, 0, 0}, false},
                                         HeaderRow{"Empty", {}, false}),
                         RowName());

/// The bytes behind the header, and what the load says or the first buffer holds.
struct WalkRow
{
  const char* name;
  GlbBuilder file;
  const char* message;
  Bytes buffer;
};

class GlbWalk : public testing::TestWithParam<WalkRow>
{};

TEST_P(GlbWalk, GivesTheBufferOrAMessage)
{
  DocumentHost host;
  DocumentLoad load = DocumentLoad::Glb();
  EXPECT_EQ(load.RunBytes(host, GetParam().file.File()), GetParam().message);
  EXPECT_EQ(host.files.liveFiles, 0);
  if (const GltfBuffer* const buffer = load.GetData().buffers.Find(0))
    EXPECT_THAT(ToVector(buffer->GetBytes()), ElementsAreArray(GetParam().buffer));
  else
    EXPECT_NE(*GetParam().message, '\0');
}

INSTANTIATE_TEST_SUITE_P(
  Rows, GlbWalk,
  testing::
    Values(WalkRow{"JsonAndBin", GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5, 6, 7, 8}), "", {1, 2, 3, 4, 5, 6, 7, 8}},
           WalkRow{"JsonAlone", GlbBuilder().Json(kJson), "", {}}, WalkRow{"EmptyBin", GlbBuilder().Json(kJson).Bin({}), "", {}},
           WalkRow{"TwoBins", GlbBuilder().Json(kJson).Bin({1, 2, 3, 4}).Bin({5, 6, 7, 8}), "", {1, 2, 3, 4, 5, 6, 7, 8}},
           WalkRow{"ManyBins",
                   GlbBuilder().Json(kJson).Bin({1, 2, 3, 4}).Bin({}).Bin({5, 6, 7, 8}).Bin({9, 9, 9, 9}).Bin({8, 8, 8, 8}),
                   "",
                   {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9, 8, 8, 8, 8}},
           WalkRow{"UnknownBetweenBins",
                   GlbBuilder()
                     .Json(kJson)
                     .Chunk(kUnknownChunk, {9, 9, 9, 9})
                     .Bin({1, 2, 3, 4})
                     .Chunk(kUnknownChunk, {8, 8, 8, 8})
                     .Bin({5, 6, 7, 8}),
                   "",
                   {1, 2, 3, 4, 5, 6, 7, 8}},
           // The padding is the remainder of the length by four: one byte for five, three for seven.
           WalkRow{"LengthOfFive",
                   GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5}).Raw({99}).Bin({6, 7, 8, 9}),
                   "",
                   {1, 2, 3, 4, 5, 6, 7, 8, 9}},
           WalkRow{"LengthOfSix",
                   GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5, 6}).Raw({99, 99}).Bin({7, 8, 9, 9}),
                   "",
                   {1, 2, 3, 4, 5, 6, 7, 8, 9, 9}},
           WalkRow{"LengthOfSeven",
                   GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5, 6, 7}).Raw({99, 99, 99}).Bin({8, 9, 9, 9}),
                   "",
                   {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9}},
           WalkRow{"UnpaddedAtTheEnd",
                   GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5, 6, 7, 8, 9}),
                   "",
                   {1, 2, 3, 4, 5, 6, 7, 8, 9}},
           WalkRow{"UnknownOfLengthFive",
                   GlbBuilder().Json(kJson).Chunk(kUnknownChunk, {9, 9, 9, 9, 9}).Raw({99}).Bin({1, 2, 3, 4}),
                   "",
                   {1, 2, 3, 4}},
           WalkRow{"UnpaddedJson", GlbBuilder().Json(std::string(kJson) + " ").Raw({99}).Bin({1, 2, 3, 4}), "", {1, 2, 3, 4}},
           WalkRow{"OverLongUnknown",
                   GlbBuilder().Json(kJson).Bin({1, 2, 3, 4}).ChunkOfLength(kUnknownChunk, 0xffffffff, {9}),
                   "",
                   {1, 2, 3, 4}},
           WalkRow{"NoChunk", GlbBuilder(), kNothing, {}}, WalkRow{"EmptyObject", GlbBuilder().Json("{}  "), kNothing, {}},
           WalkRow{"SecondJson", GlbBuilder().Json(kJson).Json(kJson), kWrongOrder, {}},
           WalkRow{"BinFirst", GlbBuilder().Bin({1, 2, 3, 4}).Json(kJson), kWrongOrder, {}},
           WalkRow{"UnknownFirst", GlbBuilder().Chunk(kUnknownChunk, {}).Json(kJson), kWrongOrder, {}},
           WalkRow{"NoJson", GlbBuilder().Json("{]  "), "no JSON", {}},
           // The walk ends with the parse error before it meets the wrong chunk behind.
           WalkRow{"NoJsonThenJson", GlbBuilder().Json("{]  ").Json(kJson), "no JSON", {}},
           WalkRow{"EmptyJson", GlbBuilder().Json(""), "no JSON", {}},
           WalkRow{"OverLongJson", GlbBuilder().ChunkOfLength(GlbBuilder::kJson, 0xffffffff, ToBytes(kJson)), kNoData, {}},
           WalkRow{"OverLongBin", GlbBuilder().Json(kJson).ChunkOfLength(GlbBuilder::kBin, 0xffffffff, {1}), kNoData, {}},
           WalkRow{"BinOneTooLong", GlbBuilder().Json(kJson).ChunkOfLength(GlbBuilder::kBin, 5, {1, 2, 3, 4}), kNoData, {}}),
  RowName());

TEST(GlbWalk, TellsWhereTheFileWasCut)
{
  // 12 bytes of header, 8 and 32 of the JSON chunk, 8 and 8 of the binary one.
  const Bytes whole = GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5, 6, 7, 8}).File();
  ASSERT_EQ(whole.size(), 68u);
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
    DocumentHost host;
    DocumentLoad load = DocumentLoad::Glb();
    EXPECT_EQ(load.RunBytes(host, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), expected) << size;
    EXPECT_EQ(host.files.liveFiles, 0) << size;
  }
}

TEST(GlbWalk, MakesNoRoomForWhatAChunkMerelyClaims)
{
  for (const uint32_t type : {GlbBuilder::kJson, GlbBuilder::kBin})
  {
    DocumentHost host;
    DocumentLoad load = DocumentLoad::Glb();
    GlbBuilder builder;
    if (type == GlbBuilder::kBin)
      builder.Json(kJson);
    builder.ChunkOfLength(type, 0x7ffffff0, {1, 2, 3, 4});
    StopFailingAllocations();
    EXPECT_EQ(load.RunBytes(host, builder.File()), kNoData);
    EXPECT_LT(GetLargestAllocation(), 100000);
  }
}

TEST(GlbWalk, TakesOneBlockForOneBinaryChunk)
{
  constexpr Int kChunkBytes = 1000000;
  DocumentHost host;
  DocumentLoad load = DocumentLoad::Glb();
  host.files.contents["/models/a.glb"] = GlbBuilder().Json(kJson).Bin(Bytes(kChunkBytes, 7)).File();
  EXPECT_EQ(load.Run(), "");
  const BaseArray<Byte>& bytes = load.GetData().buffers.Find(0)->GetBytes();
  EXPECT_EQ(bytes.GetCount(), kChunkBytes);
  EXPECT_EQ(bytes.GetCapacity(), kChunkBytes);
  EXPECT_EQ(bytes[kChunkBytes - 1], 7);
}

TEST(GlbWalk, TellsFailuresOfTheFile)
{
  const struct
  {
    void (*fault)(DocumentHost& host);
    const char* message;
  } rows[] = {{[](DocumentHost& host) { host.files.refuseAlloc = true; }, "Out of memory. "},
              {[](DocumentHost& host) { host.files.refuseOpen = true; },
               "Illegal state: Condition glbFile->Open(glbFilename, FILEOPEN::READ, FILEDIALOG::IGNOREOPEN, BYTEORDER::V_INTEL) "
               "not fulfilled. "},
              {[](DocumentHost& host) { host.files.seeksUntilFailure = 0; },
               "Illegal state: Condition glbFile->Seek(12) not fulfilled. "},
              {[](DocumentHost& host) { host.files.failRead = true; }, kNoLength},
              {[](DocumentHost& host) { host.files.longestRead = 4; }, kNoData},
              {[](DocumentHost& host) { host.json.giveNothing = true; },
               "Illegal state: Condition jsonArray.IsPopulated() not fulfilled. "},
              {[](DocumentHost& host) { host.Withdraw<HostJson>(); }, "The host offers no JSON parser."}};
  for (const auto& row : rows)
  {
    DocumentHost host;
    row.fault(host);
    DocumentLoad load = DocumentLoad::Glb();
    EXPECT_EQ(load.RunBytes(host, GlbBuilder().Json(kJson).Bin({1, 2, 3, 4}).File()), row.message);
    EXPECT_EQ(host.files.liveFiles, 0) << row.message;
  }
}

/// A file whose seeks fail from the second on: the first is over the header.
TEST(GlbWalk, TellsWhichSeekFailed)
{
  const struct
  {
    GlbBuilder file;
    const char* message;
  } rows[] = {{GlbBuilder().Json(kJson).Chunk(kUnknownChunk, {9, 9, 9, 9}),
               "Illegal state: Condition glbFile->Seek(chunkLength) not fulfilled. "},
              {GlbBuilder().Json(kJson).Bin({1, 2, 3, 4, 5}).Raw({99}),
               "Illegal state: Condition glbFile->Seek(chunkLength % 4) not fulfilled. "}};
  for (const auto& row : rows)
  {
    DocumentHost host;
    host.files.seeksUntilFailure = 1;
    DocumentLoad load = DocumentLoad::Glb();
    EXPECT_EQ(load.RunBytes(host, row.file.File()), row.message);
  }
}

}  // namespace q7z::test
