// Values: conversions, equality, arrays, sharing, and the arena of a document.

#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "framework/data.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

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
  const char* name;
  Data value;
  const char* asBool;
  const char* asInt;
  const char* asFloat;
  const char* asString;
};
const ConversionCase kConversionCases[] = {
  {"Nil", Data(), "a boolean expected, nothing found.", "a whole number expected, nothing found.",
   "a number expected, nothing found.", "a text expected, nothing found."},
  {"Bool", Data(true), "1", "a whole number expected, a boolean found.", "a number expected, a boolean found.",
   "a text expected, a boolean found."},
  {"Int", Data(Int(-7)), "a boolean expected, a whole number found.", "-7", "-7.000000",
   "a text expected, a whole number found."},
  {"Int32", Data(Int32(-7)), "a boolean expected, a whole number found.", "-7", "-7.000000",
   "a text expected, a whole number found."},
  {"UInt32", Data(UInt32(4294967295)), "a boolean expected, a whole number found.", "4294967295", "4294967295.000000",
   "a text expected, a whole number found."},
  {"Float", Data(2.5), "a boolean expected, a number found.", "2", "2.500000", "a text expected, a number found."},
  {"Float32", Data(0.5f), "a boolean expected, a number found.", "0", "0.500000", "a text expected, a number found."},
  {"String", Data("1"_s), "a boolean expected, a text found.", "a whole number expected, a text found.",
   "a number expected, a text found.", "1"},
  {"Array", Data::CreateArray(BaseArray<Data>()).GetValue(), "a boolean expected, an array found.",
   "a whole number expected, an array found.", "a number expected, an array found.", "a text expected, an array found."},
  {"Dictionary", Data(DataDictionary()), "a boolean expected, an object found.", "a whole number expected, an object found.",
   "a number expected, an object found.", "a text expected, an object found."},
};

TEST(Data, ConvertsNumbersAndNothingElse)
{
  for (const ConversionCase& row : kConversionCases)
  {
    EXPECT_EQ(Shown(row.value.GetBool()), row.asBool) << row.name;
    EXPECT_EQ(Shown(row.value.GetInt()), row.asInt) << row.name;
    EXPECT_EQ(Shown(row.value.GetFloat()), row.asFloat) << row.name;
    EXPECT_EQ(Shown(row.value.GetString()), row.asString) << row.name;
    EXPECT_EQ(row.value.GetArray().HasError(), row.value.GetKind() != DataKind::kArray) << row.name;
    EXPECT_EQ(row.value.GetDictionary().HasError(), row.value.GetKind() != DataKind::kDictionary) << row.name;
  }
  EXPECT_EQ(Data().GetInt().GetError().GetClass(), ErrorClass::kIllegalArgument);
}

struct TruncationCase
{
  Float value;
  std::optional<Int> whole;
};
const TruncationCase kTruncationCases[] = {
  {2.9, 2},
  {-2.9, -2},
  {-0.5, 0},
  {9223372036854774784.0, 9223372036854774784},  // the largest float below 2^63
  {9223372036854775808.0, std::nullopt},
  {-9223372036854775808.0, INT64_MIN},
  {-9223372036854777856.0, std::nullopt},  // the next one below -2^63
  {1e300, std::nullopt},
  {kInfinity, std::nullopt},
  {-kInfinity, std::nullopt},
  {kNan, std::nullopt},
};

TEST(Data, FloatBecomesIntByTruncationWhenItFits)
{
  for (const TruncationCase& row : kTruncationCases)
  {
    const Result<Int> whole = Data(row.value).GetInt();
    EXPECT_EQ(whole.HasError(), !row.whole) << row.value;
    EXPECT_EQ(row.whole.value_or(0), whole.HasError() ? 0 : whole.GetValue()) << row.value;
  }
}

TEST(Data, RemembersSinglePrecision)
{
  const Data single(0.1f);
  EXPECT_TRUE(single.IsSinglePrecision());
  EXPECT_TRUE(Data(single).IsSinglePrecision());
  EXPECT_EQ(single.GetFloat().GetValue(), 0.100000001490116119384765625);
  EXPECT_FALSE(Data(0.1).IsSinglePrecision());
}

Data MakeArray(std::initializer_list<Data> values)
{
  BaseArray<Data> elements;
  for (const Data& value : values)
    DropError(elements.Append(value));  // the tests of growth are elsewhere
  return Data::CreateArray(std::move(elements)).GetValue();
}

DataDictionary MakeDictionary(std::initializer_list<std::pair<const char*, Data>> members)
{
  DataDictionary dictionary;
  for (const auto& [name, value] : members)
    DropError(dictionary.Set(DataKey(Make(name)), value));  // as above
  return dictionary;
}

struct EqualityCase
{
  const char* name;
  Data a;
  Data b;
  bool equal;
};
const EqualityCase kEqualityCases[] = {
  {"Nil", Data(), Data(), true},
  {"NilAndFalse", Data(), Data(false), false},
  {"IntAndFloat", Data(Int(1)), Data(1.0), false},
  {"IntWidths", Data(Int32(1)), Data(Int(1)), true},
  {"SingleAndDouble", Data(0.5f), Data(0.5), true},
  {"NotANumber", Data(kNan), Data(kNan), false},
  {"Texts", Data("a"_s), Data(Make("a")), true},
  {"TextCase", Data("a"_s), Data("A"_s), false},
  {"Arrays", MakeArray({Data(Int(1)), Data("x"_s)}), MakeArray({Data(Int(1)), Data("x"_s)}), true},
  {"ArrayOrder", MakeArray({Data(Int(1)), Data(Int(2))}), MakeArray({Data(Int(2)), Data(Int(1))}), false},
  {"ArrayLength", MakeArray({Data(Int(1))}), MakeArray({Data(Int(1)), Data()}), false},
  {"EmptyArrays", MakeArray({}), MakeArray({}), true},
  {"EmptyArrayAndObject", MakeArray({}), Data(DataDictionary()), false},
  {"ObjectsInAnyOrder", MakeDictionary({{"a", 1.0}, {"b", true}}), MakeDictionary({{"b", true}, {"a", 1.0}}), true},
  {"ObjectNames", MakeDictionary({{"a", 1.0}}), MakeDictionary({{"b", 1.0}}), false},
  {"ObjectValues", MakeDictionary({{"a", 1.0}}), MakeDictionary({{"a", 2.0}}), false},
  {"ObjectMissesAMember", MakeDictionary({{"a", 1.0}}), MakeDictionary({{"a", 1.0}, {"b", 1.0}}), false},
  {"Nested", MakeArray({MakeDictionary({{"a", MakeArray({Data(Int(1))})}})}),
   MakeArray({MakeDictionary({{"a", MakeArray({Data(Int(1))})}})}), true},
  {"NestedDifference", MakeArray({MakeDictionary({{"a", MakeArray({Data(Int(1))})}})}),
   MakeArray({MakeDictionary({{"a", MakeArray({Data(Int(2))})}})}), false},
};

TEST(Data, EqualityIsStructural)
{
  for (const EqualityCase& row : kEqualityCases)
  {
    EXPECT_EQ(row.a == row.b, row.equal) << row.name;
    EXPECT_EQ(row.b == row.a, row.equal) << row.name;
  }
  DataDictionary emptied = MakeDictionary({{"a", 1.0}});
  EXPECT_TRUE(emptied.Erase("a"));
  EXPECT_TRUE(Data(emptied) == Data(DataDictionary()));
}

TEST(Data, ArrayHandsItsElementsOutInOrder)
{
  const Data array = MakeArray({Data(Int(3)), Data("x"_s), Data()});
  const DataArrayView view = array.GetArray().GetValue();
  ASSERT_EQ(view.GetCount(), 3);
  EXPECT_EQ(view[0].GetInt().GetValue(), 3);
  EXPECT_EQ(Text(view[1].GetString()), "x");
  EXPECT_TRUE(view[2].IsNil());
  EXPECT_EQ(view.end() - view.begin(), 3);
  EXPECT_TRUE(MakeArray({}).GetArray().GetValue().IsEmpty());
}

TEST(Data, ElementCanTakeThePlaceOfItsArray)
{
  Data value = MakeArray({MakeArray({Data(Make("inner"))})});
  value = value.GetArray().GetValue()[0];
  value = value.GetArray().GetValue()[0];
  EXPECT_EQ(Text(value.GetString()), "inner");
}

TEST(Data, MovedFromIsNil)
{
  for (const ConversionCase& row : kConversionCases)
  {
    Data source = row.value;
    const Data target = std::move(source);
    EXPECT_TRUE(source.IsNil()) << row.name;
    EXPECT_TRUE(target == row.value) << row.name;
  }
}

TEST(Data, DeepestDocumentGoesAtOnce)
{
  Data document;
  for (int depth = 0; depth < 1024; ++depth)
    document = depth % 2 ? MakeArray({document}) : Data(MakeDictionary({{"child", document}}));
  const Data copy = document;
  EXPECT_TRUE(copy == document);
}

TEST(Data, ArrayWithoutMemorySaysSo)
{
  BaseArray<Data> elements;
  ASSERT_FALSE(elements.Append(Data("kept"_s)).HasError());
  FailAllocation(1);
  const Result<Data> array = Data::CreateArray(elements.GetFirst(), 1, nullptr);
  EXPECT_EQ(StopFailingAllocations(), 1);
  EXPECT_TRUE(IsOutOfMemory(array));
  EXPECT_EQ(Text(elements[0].GetString()), "kept");
}

TEST(DataArena, DocumentLivesInFewAllocations)
{
  StopFailingAllocations();  // counts from here
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
  Data document;
  for (int i = 0; i < 1000; ++i)
  {
    DataMember members[] = {{"index", Data(Int(i))}, {"child", std::move(document)}};
    document = DataDictionary::Create(members, 2, arena).GetValue();
    if (i % 100 == 99)
      document = Data(Int(i));  // lets what was built so far go
  }
  EXPECT_LT(CountAllocations(), 12);
  arena->Release();
}

TEST(DataArena, LivesAsLongAsItsLastBlock)
{
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
  Data elements[] = {Data("first"_s), Data(Make("second"))};
  const Data array = Data::CreateArray(elements, 2, arena).GetValue();
  DataMember members[] = {{"array", array}};
  Data document = DataDictionary::Create(members, 1, arena).GetValue();
  arena->Release();
  const Data found = *document.GetDictionary().GetValue().Find("array");
  document = Data();
  EXPECT_EQ(Text(found.GetArray().GetValue()[1].GetString()), "second");
}

TEST(DataArena, GivesAlignedMemoryThatDoesNotOverlap)
{
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
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

TEST(DataArena, LargeRequestDoesNotEndTheChunkOfTheSmall)
{
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
  ASSERT_NE(arena->Allocate(100), nullptr);
  StopFailingAllocations();
  for (int i = 0; i < 10; ++i)
  {
    ASSERT_NE(arena->Allocate(1 << 20), nullptr);
    ASSERT_NE(arena->Allocate(100), nullptr);
  }
  EXPECT_EQ(CountAllocations(), 10);
  arena->Release();
}

TEST(DataArena, RefusesWhatItCannotHave)
{
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
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
