// Dictionaries: order, repeated names, copy on write, at sizes on both sides of where an index is kept.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "framework/data.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

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
