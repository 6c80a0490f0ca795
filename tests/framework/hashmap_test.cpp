// Maps: the order of the walk, erasing, equal hashes, and what happens without memory.

#include <gtest/gtest.h>

#include <algorithm>
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

using Pairs = std::vector<std::pair<Int, Int>>;

/// Keys and values in the order of the walk.
Pairs Walked(const HashMap<DullKey, Int>& map)
{
  Pairs pairs;
  for (const auto& entry : map)
    pairs.emplace_back(entry.GetKey().number, entry.GetValue());
  return pairs;
}

// The same random calls on a map and on a plain list of pairs.
TEST(HashMap, BehavesLikeAListOfPairs)
{
  for (const UInt32 start : {1u, 2u, 3u})
  {
    SCOPED_TRACE(start);
    std::mt19937 random(start);
    HashMap<DullKey, Int> map;
    Pairs list;
    for (Int step = 0; step < 4000; ++step)
    {
      const DullKey key{static_cast<Int>(random() % 60)};
      const auto found = std::find_if(list.begin(), list.end(), [&](const auto& pair) { return pair.first == key.number; });
      const Bool isIn = found != list.end();
      ASSERT_EQ(map.Contains(key), isIn) << step;
      if (random() % 2)
      {
        ASSERT_FALSE(map.Set(key, step).HasError());
        isIn ? void(found->second = step) : void(list.emplace_back(key.number, step));
      }
      else
      {
        ASSERT_EQ(map.Erase(key), isIn) << step;
        if (isIn)
          list.erase(found);
      }
      ASSERT_EQ(map.GetCount(), std::ssize(list)) << step;
    }
    EXPECT_EQ(Walked(map), list);
  }
}

TEST(HashMap, MapOfComingAndGoingKeysStaysSmall)
{
  HashMap<Int, Int> map;
  ASSERT_FALSE(map.Set(-100, 0).HasError());
  StopFailingAllocations();  // counts from here
  for (Int key = 0; key < 20000; ++key)
  {
    ASSERT_FALSE(map.Set(key, key).HasError());
    ASSERT_EQ(map.Erase(key - 5), key >= 5);
  }
  EXPECT_LT(CountAllocations(), 10);
  EXPECT_EQ(map.Insert(-100, 1).GetError().GetClass(), ErrorClass::kIllegalState) << "it is there";
  EXPECT_EQ(map.GetCount(), 6);
  EXPECT_EQ(map.begin()->GetKey(), -100);
}

TEST(HashMap, FailedGrowthLosesNothing)
{
  Int refused = 1;
  for (Int failAt = 1; refused > 0; ++failAt)
  {
    SCOPED_TRACE(failAt);
    HashMap<DullKey, Int> map;
    Pairs expected;
    expected.reserve(40);
    FailAllocation(failAt);
    for (Int key = 0; key < 40; ++key)
    {
      const Result<Int*> set = map.Set(DullKey{key}, key);
      EXPECT_EQ(set.HasError(), IsOutOfMemory(set));
      if (!set.HasError())
        expected.emplace_back(key, key);
    }
    refused = StopFailingAllocations();
    EXPECT_EQ(map.GetCount(), 40 - refused);
    EXPECT_EQ(Walked(map), expected);
    EXPECT_TRUE(refused > 0 || failAt > 4) << "entries and slots grow more than once each";
  }
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
