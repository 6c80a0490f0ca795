// Arrays and the memory they come from: failed growth, impossible counts, large blocks.

#include <gtest/gtest.h>

#include <vector>

#include "framework/basearray.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

std::vector<Int> Content(const BaseArray<Int>& array)
{
  return std::vector<Int>(array.begin(), array.end());
}

TEST(BaseArray, AppendedElementMayLieInTheArray)
{
  BaseArray<String> array;
  ASSERT_FALSE(array.Append(MakeString("first")).HasError());
  while (array.GetCount() < 100)
    ASSERT_FALSE(array.Append(array[0]).HasError());
  ASSERT_FALSE(array.CopyFrom(array).HasError());
  array.Erase(0);
  array.Erase(-1);
  array.Erase(99);
  ASSERT_EQ(array.GetCount(), 99);
  EXPECT_EQ(Text(array.GetLast()), "first");
}

TEST(BaseArray, EveryGrowingCallReportsFailureAndKeepsTheElements)
{
  const Int more[] = {7, 8, 9};
  BaseArray<Int> other;
  ASSERT_FALSE(other.AppendCopies(more, 3).HasError());
  const auto failing = [&](auto call)
  {
    BaseArray<Int> array;
    EXPECT_FALSE(array.Append(1).HasError());
    while (array.GetCount() < array.GetCapacity())
      EXPECT_FALSE(array.Append(2).HasError());
    const std::vector<Int> before = Content(array);
    FailAllocation(1);
    const Result<void> result = call(array, array.GetCapacity() + 1);
    EXPECT_EQ(StopFailingAllocations(), 1);
    EXPECT_EQ(Content(array), before);
    return IsOutOfMemory(result);
  };
  EXPECT_TRUE(failing([](auto& array, Int) { return array.Append(3); }));
  EXPECT_TRUE(failing([](auto& array, Int count) { return array.Reserve(count); }));
  EXPECT_TRUE(failing([](auto& array, Int count) { return array.Resize(count); }));
  EXPECT_TRUE(failing([](auto& array, Int count) { return array.ResizeForOverwrite(count); }));
  EXPECT_TRUE(failing([&](auto& array, Int) { return array.CopyFrom(other); }));
  EXPECT_TRUE(failing([&](auto& array, Int) { return array.AppendCopies(more, 3); }));
}

TEST(BaseArray, CountsThatCannotBe)
{
  const Int value = 1;
  BaseArray<Int> array;
  ASSERT_FALSE(array.Append(value).HasError());
  EXPECT_TRUE(IsOutOfMemory(array.Resize(INT64_MAX)));
  EXPECT_TRUE(IsOutOfMemory(array.Reserve(INT64_MAX / 8)));
  EXPECT_TRUE(IsOutOfMemory(array.ResizeForOverwrite(INT64_MAX / 8 + 1)));
  EXPECT_TRUE(IsOutOfMemory(array.AppendCopies(&value, INT64_MAX)));
  EXPECT_FALSE(array.Reserve(-1).HasError());
  EXPECT_FALSE(array.AppendCopies(nullptr, -1).HasError());
  EXPECT_EQ(Content(array), std::vector<Int>{1});
  EXPECT_FALSE(array.Resize(-1).HasError());
  EXPECT_EQ(array.GetFirst(), nullptr);
  ASSERT_FALSE(array.Resize(1).HasError());  // the memory held 1
  EXPECT_EQ(Content(array), std::vector<Int>{0});
}

TEST(BaseArray, LargeArraysStandOnLargePages)
{
  BaseArray<Byte> array;
  ASSERT_FALSE(array.Resize(kLargeBlockBytes).HasError());
  EXPECT_EQ(reinterpret_cast<uintptr_t>(array.GetFirst()) % (2 << 20), 0u);
  array.GetLast() = 1;
  ASSERT_FALSE(array.Resize(kLargeBlockBytes + 1).HasError());
  EXPECT_EQ(array[kLargeBlockBytes - 1], 1);
}

TEST(Memory, AnswersWithNullWhatItCannotHave)
{
  for (const Int size : {Int(-1), INT64_MIN, INT64_MAX})
    EXPECT_EQ(AllocateMemory(size), nullptr) << size;
  void* const nothing = AllocateMemory(0);
  EXPECT_NE(nothing, nullptr);
  FreeMemory(nothing, 0);
  FreeMemory(nullptr, kLargeBlockBytes);
  FailAllocation(1, 2);
  EXPECT_EQ(AllocateMemory(kLargeBlockBytes - 1), nullptr);
  EXPECT_EQ(AllocateMemory(kLargeBlockBytes), nullptr);
  EXPECT_EQ(StopFailingAllocations(), 2);
}

}  // namespace
}  // namespace q7z::test
