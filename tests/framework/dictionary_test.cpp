// Dictionaries: order, repeated names, copy on write, at sizes on both sides of where an index is kept.

#include <gtest/gtest.h>

#include <vector>

#include "framework/data.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

std::string NameOf(Int number)
{
  return "member" + std::to_string(number);
}

DataKey KeyOf(Int number)
{
  return DataKey(Make(NameOf(number)));
}

/// Members "name=value" in order, values being whole numbers.
std::string Listed(const DataDictionary& dictionary)
{
  std::string text;
  for (const DataMember& member : dictionary)
    text += Text(member.key.GetName()) + "=" + std::to_string(member.value.GetInt().GetValue()) + " ";
  return text;
}

DataDictionary MakeNumbered(Int count)
{
  std::vector<DataMember> members;
  for (Int i = 0; i < count; ++i)
    members.push_back({KeyOf(i), Data(i)});
  return DataDictionary::Create(members.data(), count).GetValue();
}

class DictionarySizes : public testing::TestWithParam<Int>
{};
INSTANTIATE_TEST_SUITE_P(Counts, DictionarySizes, testing::Values(0, 1, 15, 16, 17, 33, 100), testing::PrintToStringParamName());

TEST_P(DictionarySizes, FindsWhatItHoldsAndNothingElse)
{
  const DataDictionary dictionary = MakeNumbered(GetParam());
  ASSERT_EQ(dictionary.GetCount(), GetParam());
  for (Int i = 0; i < GetParam(); ++i)
  {
    const Data* const value = dictionary.Find(KeyOf(i));
    ASSERT_NE(value, nullptr) << i;
    EXPECT_EQ(value->GetInt().GetValue(), i);
  }
  EXPECT_EQ(dictionary.Find("missing"), nullptr);
  EXPECT_EQ(dictionary.Find(""), nullptr);
}

TEST_P(DictionarySizes, SetOneByOneEqualsMadeAtOnce)
{
  DataDictionary dictionary;
  for (Int i = 0; i < GetParam(); ++i)
    ASSERT_FALSE(dictionary.Set(KeyOf(i), Data(i)).HasError());
  EXPECT_EQ(Listed(dictionary), Listed(MakeNumbered(GetParam())));
  EXPECT_TRUE(Data(dictionary) == Data(MakeNumbered(GetParam())));
}

TEST_P(DictionarySizes, SetKeepsThePlaceOfAnOlderValue)
{
  DataDictionary dictionary = MakeNumbered(GetParam());
  std::string expected;
  for (Int i = 0; i < GetParam(); ++i)
  {
    ASSERT_FALSE(dictionary.Set(KeyOf(i), Data(i + 1000)).HasError());
    expected += NameOf(i) + "=" + std::to_string(i + 1000) + " ";
  }
  EXPECT_EQ(Listed(dictionary), expected);
}

TEST_P(DictionarySizes, EraseClosesTheGap)
{
  DataDictionary dictionary = MakeNumbered(GetParam());
  const DataDictionary before = dictionary;
  std::string expected;
  for (Int i = 0; i < GetParam(); ++i)
  {
    if (i % 3 == 0)
    {
      EXPECT_TRUE(dictionary.Erase(KeyOf(i)));
      continue;
    }
    expected += NameOf(i) + "=" + std::to_string(i) + " ";
  }
  EXPECT_EQ(Listed(dictionary), expected);
  for (Int i = 0; i < GetParam(); ++i)
    EXPECT_EQ(dictionary.Find(KeyOf(i)) != nullptr, i % 3 != 0) << i;
  EXPECT_FALSE(dictionary.Erase("missing"));
  EXPECT_EQ(before.GetCount(), GetParam());
}

TEST_P(DictionarySizes, LastOfARepeatedNameCountsInThePlaceOfTheFirst)
{
  std::vector<DataMember> members;
  std::string expected;
  for (Int i = 0; i < GetParam(); ++i)
    members.push_back({KeyOf(i), Data(i)});
  for (Int round = 1; round <= 2; ++round)
    for (Int i = GetParam() - 1; i >= 0; i -= 2)
      members.push_back({KeyOf(i), Data(i + 100 * round)});
  for (Int i = 0; i < GetParam(); ++i)
    expected += NameOf(i) + "=" + std::to_string((GetParam() - 1 - i) % 2 ? i : i + 200) + " ";
  const DataDictionary dictionary = DataDictionary::Create(members.data(), std::ssize(members)).GetValue();
  EXPECT_EQ(Listed(dictionary), expected);
  for (Int i = 0; i < GetParam(); ++i)
    EXPECT_NE(dictionary.Find(KeyOf(i)), nullptr) << i;
}

TEST_P(DictionarySizes, EqualHashesAreToldApartByName)
{
  const auto key = [](Int number) { return DataKey(Make(NameOf(number)), 7); };
  std::vector<DataMember> members;
  for (Int i = 0; i < 2 * GetParam(); ++i)
    members.push_back({key(i % GetParam()), Data(i)});
  DataDictionary dictionary = DataDictionary::Create(members.data(), std::ssize(members)).GetValue();
  ASSERT_EQ(dictionary.GetCount(), GetParam());
  for (Int i = 0; i < GetParam(); ++i)
    EXPECT_EQ(dictionary.Find(key(i))->GetInt().GetValue(), i + GetParam());
  EXPECT_EQ(dictionary.Find(key(GetParam())), nullptr);
}

TEST_P(DictionarySizes, WriteThroughOneHandleLeavesTheOther)
{
  DataDictionary original = MakeNumbered(GetParam());
  ASSERT_FALSE(original.Set("last", Data(Int(0))).HasError());  // leaves room for more
  const std::string before = Listed(original);
  DataDictionary other = original;
  ASSERT_FALSE(other.Set("new", Data(Int(-1))).HasError());
  EXPECT_EQ(Listed(original), before);
  EXPECT_EQ(Listed(other), before + "new=-1 ");
  other = original;
  ASSERT_FALSE(other.Set("last", Data(Int(-1))).HasError());
  EXPECT_EQ(Listed(original), before);
  EXPECT_EQ(other.Find("last")->GetInt().GetValue(), -1);
  other = original;
  EXPECT_TRUE(other.Erase("last"));
  EXPECT_EQ(Listed(original), before);
  EXPECT_EQ(other.GetCount(), GetParam());
}

TEST_P(DictionarySizes, FailedWriteChangesNothing)
{
  const DataDictionary original = MakeNumbered(GetParam());
  const std::string before = Listed(original);
  DataDictionary shared = original;
  const DataKey first = KeyOf(0);
  FailAllocation(1, 1000);
  const Result<void> set = shared.Set("new", Data(Int(-1)));
  const Bool erased = shared.Erase(first);
  EXPECT_EQ(StopFailingAllocations(), GetParam() == 0 ? 1 : 2);
  EXPECT_TRUE(IsOutOfMemory(set));
  EXPECT_FALSE(erased);
  EXPECT_EQ(Listed(shared), before);
  EXPECT_EQ(Listed(original), before);
}

TEST(DataDictionary, CanHoldItsOwnPast)
{
  DataDictionary dictionary = MakeNumbered(2);
  ASSERT_FALSE(dictionary.Set("past", Data(dictionary)).HasError());
  EXPECT_EQ(dictionary.GetCount(), 3);
  EXPECT_EQ(Listed(dictionary.Find("past")->GetDictionary().GetValue()), "member0=0 member1=1 ");
}

TEST(DataDictionary, TakesAKeyOutOfItself)
{
  DataDictionary dictionary = MakeNumbered(3);
  {
    const DataDictionary shared = dictionary;
    ASSERT_FALSE(dictionary.Set(dictionary.begin()[1].key, Data(Int(10))).HasError());
  }
  EXPECT_EQ(Listed(dictionary), "member0=0 member1=10 member2=2 ");
  EXPECT_TRUE(dictionary.Erase(dictionary.begin()[0].key));
  EXPECT_EQ(Listed(dictionary), "member1=10 member2=2 ");
}

TEST(DataDictionary, WriteToAParsedOneLeavesItsArena)
{
  DataArena* const arena = DataArena::Create();
  ASSERT_NE(arena, nullptr);
  DataMember members[] = {{"a", Data(Int(1))}, {"b", Data(Int(2))}};
  DataDictionary dictionary = DataDictionary::Create(members, 2, arena).GetValue();
  arena->Release();
  ASSERT_FALSE(dictionary.Set("a", Data(Int(3))).HasError());
  ASSERT_FALSE(dictionary.Set("c", Data(Int(4))).HasError());
  EXPECT_EQ(Listed(dictionary), "a=3 b=2 c=4 ");
}

TEST(DataKey, ConstantEqualsTheKeyOfTheSameText)
{
  constexpr DataKey constant("meshes");
  EXPECT_TRUE(constant == DataKey(Make("meshes")));
  EXPECT_FALSE(constant == DataKey(Make("meshe")));
}

}  // namespace
}  // namespace q7z::test
