// Values: conversions, equality, sharing, and the arena of a document.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <tuple>
#include <vector>

#include "framework/data.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

Data MakeArray(std::initializer_list<Data> values)
{
  BaseArray<Data> elements;
  for (const Data& value : values)
    EXPECT_FALSE(elements.Append(value).HasError());
  return Data::CreateArray(std::move(elements)).GetValue();
}

DataDictionary MakeDictionary(std::initializer_list<std::pair<const char*, Data>> members)
{
  DataDictionary dictionary;
  for (const auto& [name, value] : members)
    EXPECT_FALSE(dictionary.Set(DataKey(MakeString(name)), value).HasError());
  return dictionary;
}

/// What a conversion gave: its value, or the error's message.
template <typename T>
std::string Shown(const Result<T>& result)
{
  if (result.HasError())
    return ErrorText(result);
  if constexpr (std::is_same_v<T, String>)
    return Text(result.GetValue());
  else
    return std::to_string(result.GetValue());
}

struct ConversionCase
{
  const char* found;  // the word of the messages
  Data value;
  const char* asBool;  // null: refused
  const char* asInt;
  const char* asFloat;
  const char* asString;
};
const ConversionCase kConversionCases[] = {
  {"nothing", Data(), nullptr, nullptr, nullptr, nullptr},
  {"a boolean", Data(true), "1", nullptr, nullptr, nullptr},
  {"a whole number", Data(UInt32(4294967295)), nullptr, "4294967295", "4294967295.000000", nullptr},
  {"a number", Data(-2.5), nullptr, "-2", "-2.500000", nullptr},
  {"a number", Data(0.5f), nullptr, "0", "0.500000", nullptr},
  {"a text", Data("1"_s), nullptr, nullptr, nullptr, "1"},
  {"an array", MakeArray({}), nullptr, nullptr, nullptr, nullptr},
  {"an object", Data(DataDictionary()), nullptr, nullptr, nullptr, nullptr},
};

TEST(Data, ConvertsNumbersAndNothingElse)
{
  for (const ConversionCase& row : kConversionCases)
  {
    const auto expected = [&](const char* wanted, const char* value)
    { return value ? std::string(value) : std::string(wanted) + " expected, " + row.found + " found."; };
    EXPECT_EQ(Shown(row.value.GetBool()), expected("a boolean", row.asBool));
    EXPECT_EQ(Shown(row.value.GetInt()), expected("a whole number", row.asInt));
    EXPECT_EQ(Shown(row.value.GetFloat()), expected("a number", row.asFloat));
    EXPECT_EQ(Shown(row.value.GetString()), expected("a text", row.asString));
    EXPECT_EQ(row.value.GetArray().HasError(), row.value.GetKind() != DataKind::kArray) << row.found;
    EXPECT_EQ(row.value.GetDictionary().HasError(), row.value.GetKind() != DataKind::kDictionary) << row.found;
  }
  EXPECT_EQ(Data().GetInt().GetError().GetClass(), ErrorClass::kIllegalArgument);
}

TEST(Data, FloatBecomesIntByTruncationWhenItFits)
{
  const std::pair<Float, std::optional<Int>> rows[] = {
    {2.9, 2},
    {-2.9, -2},
    {9223372036854774784.0, 9223372036854774784},  // the largest float below 2^63
    {9223372036854775808.0, std::nullopt},
    {-9223372036854775808.0, INT64_MIN},
    {-9223372036854777856.0, std::nullopt},  // the next one below -2^63
    {kInfinity, std::nullopt},
    {kNan, std::nullopt},
  };
  for (const auto& [value, expected] : rows)
  {
    const Result<Int> whole = Data(value).GetInt();
    EXPECT_EQ(whole.HasError(), !expected) << value;
    EXPECT_EQ(expected.value_or(0), whole.HasError() ? 0 : whole.GetValue()) << value;
  }
}

TEST(Data, EqualityIsStructural)
{
  const std::tuple<Data, Data, bool> rows[] = {
    {Data(Int(1)), Data(1.0), false},
    {MakeArray({Data(Int(1)), Data(Int(2))}), MakeArray({Data(Int(2)), Data(Int(1))}), false},
    {MakeDictionary({{"a", 1.0}, {"b", true}}), MakeDictionary({{"b", true}, {"a", 1.0}}), true},
    {MakeDictionary({{"a", 1.0}}), MakeDictionary({{"a", 1.0}, {"b", 1.0}}), false},
    {MakeArray({MakeDictionary({{"a", true}})}), MakeArray({MakeDictionary({{"a", false}})}), false},
  };
  for (const auto& [a, b, equal] : rows)
  {
    EXPECT_EQ(a == b, equal);
    EXPECT_EQ(b == a, equal);
  }
}

TEST(Data, ElementCanTakeThePlaceOfItsArray)
{
  Data value = MakeArray({MakeArray({Data(MakeString("inner"))})});
  value = value.GetArray().GetValue()[0];
  value = value.GetArray().GetValue()[0];
  EXPECT_EQ(Text(value.GetString()), "inner");
}

class DataArenas : public testing::Test
{
protected:
  DataArenas() { EXPECT_NE(arena, nullptr); }
  DataArena* const arena = DataArena::Create();
};

TEST_F(DataArenas, GiveAlignedMemoryThatDoesNotOverlap)
{
  const Int sizes[] = {1, 7, 8, 9, 4000, 5000, 0, 1 << 20, (8 << 20) + 1, 3};
  std::vector<std::pair<Byte*, Int>> blocks;
  for (const Int size : sizes)
  {
    Byte* const block = static_cast<Byte*>(arena->Allocate(size));
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 8, 0u) << size;
    std::fill_n(block, size, static_cast<Byte>(blocks.size() + 1));
    blocks.emplace_back(block, size);
  }
  for (size_t i = 0; i < blocks.size(); ++i)
    EXPECT_EQ(std::count(blocks[i].first, blocks[i].first + blocks[i].second, static_cast<Byte>(i + 1)), blocks[i].second);
  arena->Release();
}

TEST_F(DataArenas, RefuseWhatTheyCannotHave)
{
  EXPECT_EQ(arena->Allocate(-1), nullptr);
  EXPECT_EQ(arena->Allocate(INT64_MAX), nullptr);
  FailAllocation(1, 3);
  EXPECT_EQ(arena->Allocate(8), nullptr);
  EXPECT_EQ(DataArena::Create(), nullptr);
  DataMember members[] = {{"a", Data("kept"_s)}};
  EXPECT_TRUE(IsOutOfMemory(DataDictionary::Create(members, 1, arena)));
  EXPECT_EQ(StopFailingAllocations(), 3);
  EXPECT_EQ(Text(members[0].value.GetString()), "kept");
  EXPECT_NE(arena->Allocate(8), nullptr);
  arena->Release();
}

}  // namespace
}  // namespace q7z::test
