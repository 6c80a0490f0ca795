// Values: conversions, equality, sharing, and the arena of a document; and dictionaries at sizes on both sides of where an index is
// kept.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <tuple>
#include <vector>

#include "framework/data.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

Data MakeArray(const std::vector<Data>& values)
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

// Arrays of numbers lie in memory in ways of their own, which nobody sees.
TEST(Data, ArraysKeepTheirElements)
{
  const Data single(1.0f / 3.0f);
  const std::vector<Data> rows[] = {
    {},
    {Data(Int(INT64_MIN)), Data(Int(7))},
    {Data(0.1), Data(kInfinity), Data(-0.0)},
    {single},
    {single, single, single, single, single, Data(2.0f)},
    {single, single, single, single, single, single, Data(2.0f)},
    {Data(Int(1)), Data(1.0)},
    {Data(1.0), single},
    {single, Data(1.0)},
    {single, Data(Int(1))},
    {Data(true), Data(false)},
    {Data(), Data(MakeString("text")), MakeArray({single})},
  };
  for (const std::vector<Data>& row : rows)
  {
    BaseArray<Data> elements;
    for (const Data& value : row)
      EXPECT_FALSE(elements.Append(value).HasError());
    Data original = Data::CreateArray(std::move(elements)).GetValue();
    Data copy;
    copy = original;
    EXPECT_EQ(copy, original);
    const Data moved(std::move(original));
    EXPECT_EQ(copy, moved);
    const DataArrayView view = moved.GetArray().GetValue();
    ASSERT_EQ(view.GetCount(), static_cast<Int>(row.size()));
    EXPECT_TRUE(std::equal(row.begin(), row.end(), view.begin(), [](const Data& a, const Data& b)
                           { return a == b && a.IsSinglePrecision() == b.IsSinglePrecision(); }));
    for (const std::vector<Data>& other : rows)
      EXPECT_EQ(copy == MakeArray(other), row == other);
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
  Byte* end = nullptr;
  for (const Int size : {1, 7, 8, 9, 4000, 5000, 0, 1 << 20, (8 << 20) + 1, 3})
  {
    Byte* const block = static_cast<Byte*>(arena->Allocate(size));
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 8, 0u) << size;
    EXPECT_TRUE(block >= end || block + size < end) << size;
    end = block + size;
  }
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

// Dictionaries.

using Numbers = std::vector<std::pair<Int, Int>>;

DataKey KeyOf(Int number)
{
  return DataKey(MakeString("member" + std::to_string(number)));
}

/// Members "name=value" in order, values being whole numbers.
std::string Listed(const DataDictionary& dictionary)
{
  std::string text;
  for (const DataMember& member : dictionary)
    text += Text(member.key.GetName()) + "=" + std::to_string(member.value.GetInt().GetValue()) + " ";
  return text;
}
std::string Listed(const Numbers& numbers)
{
  std::string text;
  for (const auto& [number, value] : numbers)
    text += "member" + std::to_string(number) + "=" + std::to_string(value) + " ";
  return text;
}

DataDictionary MakeNumbered(Int count, DataArena* arena = nullptr)
{
  std::vector<DataMember> members;
  members.reserve(static_cast<size_t>(count));
  for (Int i = 0; i < count; ++i)
    members.push_back({KeyOf(i), Data(i)});
  return DataDictionary::Create(members.data(), count, arena).GetValue();
}

// The same random writes to a dictionary and to a list of pairs; copies that were taken on the way stay as they were.
TEST(DataDictionary, BehavesLikeAListOfPairs)
{
  for (const Int size : {2, 16, 17, 100})
  {
    SCOPED_TRACE(size);
    std::mt19937 random(7);
    DataDictionary dictionary = MakeNumbered(size / 2);
    Numbers list;
    for (Int i = 0; i < size / 2; ++i)
      list.emplace_back(i, i);
    DataDictionary copy;
    std::string copied;
    for (Int step = 0; step < 600; ++step)
    {
      const Int number = random() % size;
      const auto found = std::find_if(list.begin(), list.end(), [&](const auto& pair) { return pair.first == number; });
      const Data* const kept = dictionary.Find(KeyOf(number));
      ASSERT_EQ(kept ? kept->GetInt().GetValue() : -1, found == list.end() ? -1 : found->second) << step;
      if (random() % 3)
      {
        ASSERT_FALSE(dictionary.Set(KeyOf(number), Data(step)).HasError());
        found == list.end() ? void(list.emplace_back(number, step)) : void(found->second = step);
      }
      else
      {
        ASSERT_EQ(dictionary.Erase(KeyOf(number)), found != list.end()) << step;
        if (found != list.end())
          list.erase(found);
      }
      ASSERT_EQ(Listed(copy), copied) << step;
      if (step % 7 == 0)
      {
        copy = dictionary;
        copied = Listed(copy);
      }
    }
    EXPECT_EQ(Listed(dictionary), Listed(list));
    EXPECT_EQ(dictionary.Find(""), nullptr);
  }
}

constexpr Int kSizes[] = {1, 15, 16, 17, 100};

// Names that come more than once, all with one hash.
TEST(DataDictionary, LastOfARepeatedNameCountsInThePlaceOfTheFirst)
{
  for (const Int size : kSizes)
  {
    const auto key = [](Int number) { return DataKey(KeyOf(number).GetName(), 7); };
    std::vector<DataMember> members;
    members.reserve(static_cast<size_t>(2 * size + 2));
    Numbers expected;
    for (Int i = 0; i < size; ++i)
      members.push_back({key(i), Data(i)});
    for (Int round = 1; round <= 2; ++round)
      for (Int i = size - 1; i >= 0; i -= 2)
        members.push_back({key(i), Data(i + 100 * round)});
    for (Int i = 0; i < size; ++i)
      expected.emplace_back(i, (size - 1 - i) % 2 ? i : i + 200);
    const DataDictionary dictionary = DataDictionary::Create(members.data(), std::ssize(members)).GetValue();
    EXPECT_EQ(Listed(dictionary), Listed(expected));
    for (Int i = 0; i < size; ++i)
      EXPECT_NE(dictionary.Find(key(i)), nullptr) << i;
    EXPECT_EQ(dictionary.Find(key(size)), nullptr);
  }
}

TEST(DataDictionary, FailedWriteChangesNothing)
{
  for (const Int size : kSizes)
  {
    const DataDictionary original = MakeNumbered(size);
    DataDictionary shared = original;
    const DataKey first = KeyOf(0);
    FailAllocation(1, 1000);
    const Result<void> set = shared.Set("new", Data(Int(-1)));
    const Bool erased = shared.Erase(first);
    EXPECT_EQ(StopFailingAllocations(), 2);
    EXPECT_TRUE(IsOutOfMemory(set));
    EXPECT_FALSE(erased);
    EXPECT_EQ(Listed(shared), Listed(original));
    EXPECT_EQ(shared.GetCount(), size);
  }
}

TEST(DataDictionary, TakesItselfAndItsOwnKeys)
{
  DataDictionary dictionary = MakeNumbered(3);
  {
    const DataDictionary shared = dictionary;
    ASSERT_FALSE(dictionary.Set(dictionary.begin()[1].key, Data(Int(10))).HasError());
  }
  EXPECT_TRUE(dictionary.Erase(dictionary.begin()[0].key));
  ASSERT_FALSE(dictionary.Set("past", Data(dictionary)).HasError());
  EXPECT_EQ(Listed(dictionary.Find("past")->GetDictionary().GetValue()), "member1=10 member2=2 ");
}

TEST(DataDictionary, WriteToAParsedOneLeavesItsArena)
{
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
  DataDictionary dictionary = MakeNumbered(2, arena);
  arena->Release();
  ASSERT_FALSE(dictionary.Set(KeyOf(0), Data(Int(3))).HasError());
  ASSERT_FALSE(dictionary.Set(KeyOf(2), Data(Int(4))).HasError());
  EXPECT_EQ(Listed(dictionary), "member0=3 member1=1 member2=4 ");
}

}  // namespace
}  // namespace q7z::test
