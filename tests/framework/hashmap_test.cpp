// Maps: the order of the walk, erasing, equal hashes, and what happens without memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "framework/hashmap.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

/// A key whose hash says little, so that probes run into each other.
struct DullKey
{
  Int number = 0;
  friend Bool operator==(const DullKey&, const DullKey&) = default;
};
UInt HashOf(const DullKey& key) noexcept
{
  return static_cast<UInt>(key.number % 3);
}

Int NumberOf(Int key)
{
  return key;
}
Int NumberOf(const DullKey& key)
{
  return key.number;
}

/// "key=value" in the order of the walk.
template <typename K, typename V>
std::string Walked(const HashMap<K, V>& map)
{
  std::string text;
  for (const auto& entry : map)
    text += std::to_string(NumberOf(entry.GetKey())) + "=" + std::to_string(entry.GetValue()) + " ";
  return text;
}

HashMap<Int, Int> MakeMap(std::initializer_list<Int> keys)
{
  HashMap<Int, Int> map;
  for (const Int key : keys)
    DropError(map.Set(key, key * 10));  // the sweep below fails it
  return map;
}

TEST(HashMap, WalksInTheOrderOfInsertion)
{
  HashMap<Int, Int> map = MakeMap({5, -1, 3});
  EXPECT_EQ(Walked(map), "5=50 -1=-10 3=30 ");
  EXPECT_EQ(*map.Set(5, 7).GetValue(), 7);
  EXPECT_EQ(Walked(map), "5=7 -1=-10 3=30 ");
  EXPECT_EQ(map.GetCount(), 3);
}

TEST(HashMap, ErasedKeyComesBackAtTheEnd)
{
  HashMap<Int, Int> map = MakeMap({1, 2, 3});
  EXPECT_TRUE(map.Erase(1));
  EXPECT_FALSE(map.Erase(1));
  EXPECT_FALSE(map.Contains(1));
  EXPECT_EQ(Walked(map), "2=20 3=30 ");
  ASSERT_FALSE(map.Set(1, 11).HasError());
  EXPECT_EQ(Walked(map), "2=20 3=30 1=11 ");
  EXPECT_TRUE(map.Erase(1));
  EXPECT_TRUE(map.Erase(3));
  EXPECT_TRUE(map.Erase(2));
  EXPECT_EQ(Walked(map), "");
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_TRUE(map.begin() == map.end());
}

TEST(HashMap, EmptyMapHoldsNothing)
{
  HashMap<Int, Int> map;
  EXPECT_EQ(map.Find(0), nullptr);
  EXPECT_FALSE(map.Erase(0));
  EXPECT_TRUE(map.begin() == map.end());
}

TEST(HashMap, InsertRefusesAKeyThatIsThere)
{
  HashMap<Int, Int> map = MakeMap({1});
  const Result<Int*> again = map.Insert(1, 2);
  ASSERT_TRUE(again.HasError());
  EXPECT_EQ(again.GetError().GetClass(), ErrorClass::kIllegalState);
  EXPECT_EQ(Walked(map), "1=10 ");
  EXPECT_FALSE(map.Insert(2, 5).HasError());
}

TEST(HashMap, FindOrInsertMakesAnEmptyValueOnce)
{
  HashMap<String, BaseArray<Int>> map;
  for (int i = 0; i < 3; ++i)
  {
    const Result<BaseArray<Int>*> list = map.FindOrInsert(Make("list"));
    ASSERT_FALSE(list.HasError());
    ASSERT_FALSE(list.GetValue()->Append(i).HasError());
  }
  EXPECT_EQ(map.GetCount(), 1);
  EXPECT_EQ(map.Find("list"_s)->GetCount(), 3);
}

TEST(HashMap, HoldsOwners)
{
  HashMap<Int, std::unique_ptr<Int>> map;
  for (Int i = 0; i < 100; ++i)
    ASSERT_FALSE(map.Set(i, std::make_unique<Int>(i)).HasError());
  const HashMap<Int, std::unique_ptr<Int>> moved = std::move(map);
  EXPECT_EQ(**moved.Find(99), 99);
  EXPECT_EQ(map.GetCount(), 0);
}

/// The same random calls on a map and on a plain list of pairs.
template <typename K>
void CompareWithList(UInt32 start)
{
  SCOPED_TRACE(start);
  std::mt19937 random(start);
  HashMap<K, Int> map;
  std::vector<std::pair<Int, Int>> list;
  for (Int step = 0; step < 4000; ++step)
  {
    const Int number = random() % 60;
    const auto found = std::find_if(list.begin(), list.end(), [&](const auto& pair) { return pair.first == number; });
    if (random() % 2)
    {
      ASSERT_FALSE(map.Set(K{number}, step).HasError());
      if (found == list.end())
        list.emplace_back(number, step);
      else
        found->second = step;
    }
    else
    {
      ASSERT_EQ(map.Erase(K{number}), found != list.end()) << step;
      if (found != list.end())
        list.erase(found);
    }
    ASSERT_EQ(map.GetCount(), std::ssize(list)) << step;
  }
  std::string expected;
  for (const auto& [number, value] : list)
    expected += std::to_string(number) + "=" + std::to_string(value) + " ";
  EXPECT_EQ(Walked(map), expected);
  for (Int number = 0; number < 60; ++number)
    EXPECT_EQ(map.Contains(K{number}), std::any_of(list.begin(), list.end(), [&](const auto& p) { return p.first == number; }));
}

TEST(HashMap, BehavesLikeAListOfPairs)
{
  for (const UInt32 start : {1u, 2u, 3u})
  {
    CompareWithList<Int>(start);
    CompareWithList<DullKey>(start);
  }
}

TEST(HashMap, MapOfComingAndGoingKeysStaysSmall)
{
  HashMap<Int, Int> map = MakeMap({-100, -200});
  StopFailingAllocations();  // counts from here
  for (Int key = 0; key < 20000; ++key)
  {
    ASSERT_FALSE(map.Set(key, key).HasError());
    ASSERT_EQ(map.Erase(key - 5), key >= 5);
  }
  EXPECT_LT(CountAllocations(), 10);
  EXPECT_EQ(map.GetCount(), 7);
  EXPECT_EQ(map.begin()->GetKey(), -100);
}

TEST(HashMap, FailedGrowthLosesNothing)
{
  Int failed = 0;
  for (Int failAt = 1;; ++failAt)
  {
    HashMap<Int, Int> map;
    Bool isIn[40] = {};
    FailAllocation(failAt);
    for (Int key = 0; key < 40; ++key)
    {
      const Result<Int*> set = map.Set(key, key);
      EXPECT_EQ(set.HasError(), IsOutOfMemory(set));
      isIn[key] = !set.HasError();
    }
    const Int refused = StopFailingAllocations();
    std::string expected;
    for (Int key = 0; key < 40; ++key)
      expected += isIn[key] ? std::to_string(key) + "=" + std::to_string(key) + " " : "";
    EXPECT_EQ(map.GetCount(), 40 - refused) << failAt;
    EXPECT_EQ(Walked(map), expected) << failAt;
    if (refused == 0)
      break;
    ++failed;
  }
  EXPECT_GE(failed, 4);  // entries and slots grow more than once each
}

TEST(HashMap, ReservedRoomNeedsNoMoreMemory)
{
  HashMap<Int, Int> map;
  ASSERT_FALSE(map.Reserve(1000).HasError());
  FailAllocation(1, 1000);
  for (Int key = 0; key < 1000; ++key)
    EXPECT_FALSE(map.Set(key, key).HasError()) << key;
  EXPECT_EQ(StopFailingAllocations(), 0);
}

}  // namespace
}  // namespace q7z::test
