// Typed reads of accessors: every conversion, every bound, and reading at once against reading one by one.

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/records.h"
#include "tests/support/rowname.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

using testing::ElementsAre;

namespace
{

constexpr const char* kBeyondCount = "Illegal state: Condition (idx >= 0 && idx < _count) not fulfilled. ";
constexpr UInt32 kNoNumber = 4294967295u;

std::string AccessorJson(UInt32 componentType, Bool normalized, const std::string& type, Int count)
{
  return R"("componentType":)" + std::to_string(componentType) + R"(,"normalized":)" + (normalized ? "true" : "false") +
         R"(,"type":")" + type + R"(","count":)" + std::to_string(count);
}

GltfAccessor& Bind(GltfData& data, Int32 index = 0)
{
  const Result<GltfAccessor*> accessor = GetAccessor(data, index, false);
  EXPECT_EQ(ErrorText(accessor), "");
  return *accessor.GetValue();
}

Bytes LittleEndian(uint64_t value, int byteCount)
{
  Bytes bytes;
  for (int i = 0; i < byteCount; ++i)
    bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
  return bytes;
}

}  // namespace

/// One component as a float and as an unsigned integer. bits is the component as stored.
struct ConversionRow
{
  const char* name;
  UInt32 componentType;
  Bool normalized;
  uint32_t bits;
  Float asFloat;
  UInt32 asInteger;
};

class Conversion : public testing::TestWithParam<ConversionRow>
{};

TEST_P(Conversion, GivesTheNumber)
{
  const ConversionRow& row = GetParam();
  const int size = row.componentType < 5122 ? 1 : row.componentType < 5125 ? 2 : 4;
  GltfData data = ReadAccessor(AccessorJson(row.componentType, row.normalized, "SCALAR", 1), LittleEndian(row.bits, size));
  const GltfAccessor& accessor = Bind(data);
  EXPECT_THAT(accessor.GetFloat(0).GetValue(), testing::NanSensitiveDoubleEq(row.asFloat));
  EXPECT_EQ(accessor.GetUInt32(0).GetValue(), row.asInteger);
}

const ConversionRow kConversions[] = {
  {"UnsignedByte", 5121, false, 200, 200.0, 200},
  {"UnsignedByteFifth", 5121, true, 51, 0.2, 0},
  // A positive signed value turns negative, and the smallest one passes 1.
  {"SignedByteLargest", 5120, true, 127, -1.0, kNoNumber},
  {"SignedByteMinusOne", 5120, true, 0xff, 0.007874015748031496, 0},
  {"SignedByteSmallest", 5120, true, 0x80, 1.0078740157480315, 1},
  {"SignedShortMinusTwo", 5122, false, 0xfffe, -2.0, 4294967294u},
  {"SignedShortSmallest", 5122, false, 0x8000, -32768.0, 4294934528u},
  {"SignedShortNormalizedLargest", 5122, true, 32767, -1.0, kNoNumber},
  {"SignedShortNormalizedLimit", 5122, true, 0x8001, 1.0, 1},
  {"SignedShortNormalizedSmallest", 5122, true, 0x8000, 1.0000305185094759, 1},
  {"UnsignedShort", 5123, false, 65535, 65535.0, 65535},
  {"UnsignedInt", 5125, false, 0xffffffff, 4294967295.0, 4294967295u},
  {"UnsignedIntNeverNormalized", 5125, true, 7, 7.0, 7},
  {"Float", 5126, false, std::bit_cast<uint32_t>(2.75f), 2.75, 2},
  {"FloatBeyondSigned", 5126, false, std::bit_cast<uint32_t>(3e9f), 3e9, 3000000000u},
  // No integer of its own, so none that is an index.
  {"FloatTooLarge", 5126, false, std::bit_cast<uint32_t>(4294967296.0f), 4294967296.0, kNoNumber},
  {"FloatTooSmall", 5126, false, std::bit_cast<uint32_t>(-3e9f), -3e9, kNoNumber},
  {"NotANumber", 5126, false, 0x7fc00000, std::numeric_limits<Float>::quiet_NaN(), kNoNumber},
  {"FloatInfinite", 5126, false, 0x7f800000, std::numeric_limits<Float>::infinity(), kNoNumber},
};
INSTANTIATE_TEST_SUITE_P(Rows, Conversion, testing::ValuesIn(kConversions), RowName());

TEST(SignedBytes, ReadAsWideAsTheirTargetWithinTheElement)
{
  // Two elements; the second must not show in the first.
  GltfData data = ReadAccessor(AccessorJson(5120, false, "VEC4", 2), {1, 2, 3, 4, 0xf1, 0xf2, 0xf3, 0xf4});
  const GltfAccessor& accessor = Bind(data);
  EXPECT_THAT(accessor.GetUInt32x4(0).GetValue().values, ElementsAre(0x04030201u, 0x040302u, 0x0403u, 0x04u));
  EXPECT_THAT(accessor.GetUInt32x4(1).GetValue().values, ElementsAre(0xf4f3f2f1u, 0xf4f3f2u, 0xf4f3u, 0xf4u));
  const Vector4 floats = accessor.GetVector4(0).GetValue();
  EXPECT_EQ(std::bit_cast<uint64_t>(floats.x), 0x04030201u);
  EXPECT_EQ(std::bit_cast<uint64_t>(floats.y), 0x040302u);
  EXPECT_EQ(std::bit_cast<uint64_t>(floats.z), 0x0403u);
  EXPECT_EQ(std::bit_cast<uint64_t>(floats.w), 0x04u);
}

TEST(SignedBytes, AreTheBitsOfA64BitFloat)
{
  // 1.0 is 0x3ff0000000000000; the next component begins one byte further and has the zero behind the element on top.
  GltfData data = ReadAccessor(AccessorJson(5120, false, "MAT3", 1), {0, 0, 0, 0, 0, 0, 0xf0, 0x3f, 0});
  const Vector2 value = Bind(data).GetVector2(0).GetValue();
  EXPECT_EQ(value.x, 1.0);
  EXPECT_EQ(std::bit_cast<uint64_t>(value.y), 0x003ff00000000000u);
}

TEST(TypedReads, WantAsManyComponentsAsTheyRead)
{
  GltfData data = ReadAccessor(AccessorJson(5126, false, "VEC2", 2), Bytes(16, 0));
  const GltfAccessor& accessor = Bind(data);
  constexpr const char* kTooFew = "Illegal state: Condition count <= GetComponentCount() not fulfilled. ";
  EXPECT_EQ(ErrorText(accessor.GetVector2(0)), "");
  EXPECT_EQ(ErrorText(accessor.GetVector3(0)), kTooFew);
  EXPECT_EQ(ErrorText(accessor.GetVector4(0)), kTooFew);
  EXPECT_EQ(ErrorText(accessor.GetUInt32x4(0)), kTooFew);
  EXPECT_EQ(ErrorText(accessor.GetMatrix(0)), kTooFew);
}

TEST(TypedReads, StayBelowTheCount)
{
  GltfData data = ReadAccessor(AccessorJson(5121, false, "SCALAR", 3), {1, 2, 3, 4});
  const GltfAccessor& accessor = Bind(data);
  for (const Int idx : {Int(-1), Int(3), INT64_MAX, INT64_MIN})
  {
    EXPECT_EQ(ErrorText(accessor.GetFloat(idx)), kBeyondCount) << idx;
    EXPECT_EQ(ErrorText(accessor.GetUInt32(idx)), kBeyondCount) << idx;
    EXPECT_EQ(ErrorText(accessor.GetMatrix(idx)), kBeyondCount) << idx;
  }
  EXPECT_EQ(accessor.GetFloat(2).GetValue(), 3.0);
}

TEST(TypedReads, FailWhereTheBytesEnd)
{
  GltfData data = ReadAccessor(AccessorJson(5126, false, "VEC3", 1000000000), Bytes(24, 0));
  const GltfAccessor& accessor = Bind(data);
  EXPECT_EQ(ErrorText(accessor.GetVector3(1)), "");
  EXPECT_EQ(ErrorText(accessor.GetVector3(2)),
            "Illegal state: Condition (offset >= 0 && offset < _byteLength - byteCount + 1) not fulfilled. ");
  EXPECT_EQ(ErrorText(accessor.GetVector3(13)),
            "Illegal state: Condition (idx >= 0 && idx < _byteLength - byteCount + 1) not fulfilled. ");
  GltfElements elements;
  EXPECT_FALSE(accessor.GetElements(elements));
}

TEST(NonIndexedAccessor, GivesTheIndexInEveryComponent)
{
  GltfData data = ReadRecords("{}");
  const GltfAccessor& accessor = *GetAccessor(data, -1, true).GetValue();
  EXPECT_EQ(accessor.GetCount(), 0);
  EXPECT_TRUE(accessor.IsOfType({"SCALAR"_s}));
  EXPECT_EQ(accessor.GetUInt32(7).GetValue(), 7u);
  EXPECT_EQ(accessor.GetFloat(7).GetValue(), 7.0);
  EXPECT_EQ(accessor.GetVector3(7).GetValue(), (Vector{7, 7, 7}));
  EXPECT_THAT(accessor.GetUInt32x4(7).GetValue().values, ElementsAre(7u, 7u, 7u, 7u));
  EXPECT_EQ(ErrorText(accessor.GetMatrix(7)), "Illegal state: Condition !IsNonIndexed() not fulfilled. ");
}

/// What reading the record of an accessor gives: its element's bytes, or nothing when it is dropped.
struct RecordRow
{
  const char* name;
  const char* json;
  const char* message;
  Int componentCount;
  Int elementBytes;
};

class AccessorRecord : public testing::TestWithParam<RecordRow>
{};

TEST_P(AccessorRecord, IsReadOrRefused)
{
  const TestHost host;  // has the texts
  GltfAccessor accessor;
  EXPECT_EQ(ErrorText(accessor.ReadFromJson(ParseObject(GetParam().json))), GetParam().message);
  if (*GetParam().message)
    return;
  EXPECT_EQ(accessor.GetComponentCount(), GetParam().componentCount);
  BaseArray<Byte> bytes;
  EXPECT_TRUE(accessor.GetElementBytes(0, bytes).HasError());  // no view
  EXPECT_EQ(bytes.GetCount(), GetParam().elementBytes);
}

constexpr const char* kUnsupported = "This is not supported.";
constexpr const char* kInvalidType = "Illegal state: Condition componentCount && componentTypeSize not fulfilled. ";

const RecordRow kRecords[] = {
  {"Scalar", R"({"componentType":5120,"count":1,"type":"SCALAR"})", "", 1, 1},
  {"Mat2WithoutColumnPadding", R"({"componentType":5121,"count":1,"type":"MAT2"})", "", 4, 4},
  {"Mat3WithoutColumnPadding", R"({"componentType":5123,"count":1,"type":"MAT3"})", "", 9, 18},
  {"UnsignedInt", R"({"componentType":5125,"count":0,"type":"SCALAR"})", "", 1, 4},
  {"SignedInt", R"({"componentType":5124,"count":1,"type":"SCALAR"})", kInvalidType, 0, 0},
  {"TypeBeyond32Bits", R"({"componentType":4294972422,"count":1,"type":"SCALAR"})", kInvalidType, 0, 0},
  {"LowerCaseType", R"({"componentType":5126,"count":1,"type":"vec3"})", kInvalidType, 0, 0},
  {"NoComponentType", R"({"count":1,"type":"SCALAR"})", "The required member componentType is missing.", 0, 0},
  {"Sparse", R"({"componentType":5126,"count":1,"type":"SCALAR","sparse":{}})", kUnsupported, 0, 0},
};
INSTANTIATE_TEST_SUITE_P(Rows, AccessorRecord, testing::ValuesIn(kRecords), RowName());

/// Looking an accessor up in a document with these accessors, views and buffers.
struct LookupRow
{
  const char* name;
  const char* bufferView;  // of accessor 0
  const char* views;
  const char* buffers;
  Int32 index;
  Bool nonIndexedAllowed;
  const char* message;
};

class AccessorLookup : public testing::TestWithParam<LookupRow>
{};

TEST_P(AccessorLookup, BindsOrFails)
{
  const LookupRow& row = GetParam();
  GltfData data = ReadRecords(std::string(R"({"accessors":[{"componentType":5121,"count":2,"type":"SCALAR")") + row.bufferView +
                                R"(}],"bufferViews":[)" + row.views + R"(],"buffers":[)" + row.buffers + "]}",
                              {8, 9});
  for (int repeat = 0; repeat < 2; ++repeat)
  {
    const Result<GltfAccessor*> accessor = GetAccessor(data, row.index, row.nonIndexedAllowed);
    EXPECT_EQ(ErrorText(accessor), row.message);
    if (!accessor.HasError() && row.index == 0)
    {
      EXPECT_EQ(accessor.GetValue()->GetUInt32(1).GetValue(), 9u);
    }
  }
}

constexpr const char* kView = R"({"buffer":0,"byteLength":2})";
constexpr const char* kBuffer = R"({"byteLength":2})";

const LookupRow kLookups[] = {
  {"Bound", R"(,"bufferView":0)", kView, kBuffer, 0, false, ""},
  {"NoSuchAccessor", R"(,"bufferView":0)", kView, kBuffer, 1, true, "Illegal state: Condition accessor not fulfilled. "},
  {"NonIndexed", R"(,"bufferView":0)", kView, kBuffer, -1, true, ""},
  {"NonIndexedUnwanted", R"(,"bufferView":0)", kView, kBuffer, -1, false,
   "Illegal state: Condition nonIndexedAllowed not fulfilled. "},
  {"NoView", "", kView, kBuffer, 0, false, "Illegal state: Condition bView not fulfilled. "},
  {"ViewMinusTwo", R"(,"bufferView":-2)", kView, kBuffer, 0, false,
   "Illegal state: Accessors without bufferView aren't supported yet"},
  {"NoSuchView", R"(,"bufferView":1)", kView, kBuffer, 0, false, "Illegal state: Condition bView not fulfilled. "},
  // An index is never cut to one that exists.
  {"ViewBeyond32Bits", R"(,"bufferView":4294967296)", kView, kBuffer, 0, false, "Illegal state: Condition bView not fulfilled. "},
  {"NoSuchBuffer", R"(,"bufferView":0)", R"({"buffer":1,"byteLength":2})", kBuffer, 0, false,
   "Illegal state: Condition buff not fulfilled. "},
  {"DroppedBuffer", R"(,"bufferView":0)", kView, "{}", 0, false, "Illegal state: Condition buff not fulfilled. "},
};
INSTANTIATE_TEST_SUITE_P(Rows, AccessorLookup, testing::ValuesIn(kLookups), RowName());

/// Every component type, normalised and not, packed and strided, over the same random bytes: what a loop over all elements reads must
/// be what single reads give.
class AllAtOnce : public testing::TestWithParam<UInt32>
{
protected:
  static void Compare(const GltfAccessor& accessor, Bool hasLoader)
  {
    const Bool isWide = accessor.GetComponentCount() >= 4;
    GltfElements elements;
    ASSERT_TRUE(accessor.GetElements(elements));
    const auto compareFloats = [&](auto load)
    {
      for (Int i = 0; i < elements.count; ++i)
      {
        const Byte* const element = elements.first + i * elements.stride;
        const Vector4 single = isWide ? accessor.GetVector4(i).GetValue() : Vector4{accessor.GetFloat(i).GetValue(), 0, 0, 0};
        ASSERT_EQ(std::bit_cast<uint64_t>(load(element, 0)), std::bit_cast<uint64_t>(single.x)) << i;
        ASSERT_TRUE(!isWide || std::bit_cast<uint64_t>(load(element, 3)) == std::bit_cast<uint64_t>(single.w)) << i;
      }
    };
    const auto compareIntegers = [&](auto load)
    {
      for (Int i = 0; i < elements.count; ++i)
      {
        const Byte* const element = elements.first + i * elements.stride;
        ASSERT_EQ(load(element, 0), accessor.GetUInt32(i).GetValue()) << i;
        ASSERT_TRUE(!isWide || load(element, 3) == accessor.GetUInt32x4(i).GetValue().values[3]) << i;
      }
    };
    EXPECT_EQ(WithFloatLoader(elements, compareFloats), hasLoader);
    EXPECT_EQ(WithIndexLoader(elements, compareIntegers), hasLoader);
  }
};

TEST_P(AllAtOnce, ReadsWhatSingleReadsGive)
{
  std::mt19937 random(20250917);
  Bytes bytes(2000);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
  for (const char* const type : {"SCALAR", "VEC3", "VEC4", "MAT4"})
  {
    for (const Bool normalized : {false, true})
    {
      for (const char* const view : {"", R"(,"byteStride":68)", R"(,"byteOffset":3,"byteStride":67)"})
      {
        SCOPED_TRACE(std::string(type) + (normalized ? " normalized " : " ") + view);
        GltfData data = ReadAccessor(AccessorJson(GetParam(), normalized, type, 20), bytes, view);
        Compare(Bind(data), GetParam() != 5120 || normalized);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(ComponentTypes, AllAtOnce, testing::Values(5120u, 5121u, 5122u, 5123u, 5125u, 5126u));

}  // namespace q7z::test
