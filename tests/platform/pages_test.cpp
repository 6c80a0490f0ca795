// Memory whose pages another thread fetches: what is written stays, whoever comes first, and memory that is freed meanwhile is let go.

#include <gtest/gtest.h>

#include "framework/memory.h"
#include "host/platform/process.h"

namespace q7z::test
{
namespace
{

TEST(FetchedPages, KeepWhatIsWritten)
{
  constexpr Int kByteCount = Int(24) << 20;
  constexpr Int kStep = 1000;
  StartFetchingPages();
  ExpectAllocations(kByteCount, 4 * kByteCount);
  for (int round = 0; round < 4; ++round)
  {
    FreeMemory(AllocateMemory(kByteCount), kByteCount);
    Byte* const bytes = static_cast<Byte*>(AllocateMemory(kByteCount));
    ASSERT_TRUE(bytes);
    // From the end, so that the two meet.
    const auto expected = [&](Int i) { return static_cast<Byte>(i / kStep + round); };
    for (Int i = kByteCount - 1; i >= 0; i -= kStep)
      bytes[i] = expected(i);
    Int wrong = 0;
    for (Int i = kByteCount - 1; i >= 0; i -= kStep)
      wrong += bytes[i] != expected(i);
    EXPECT_EQ(wrong, 0);
    FreeMemory(bytes, kByteCount);
  }
}

}  // namespace
}  // namespace q7z::test
