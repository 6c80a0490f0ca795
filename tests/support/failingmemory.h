#pragma once

// Memory that runs out on request. A program that links this has the global operator new replaced in all its forms (plain, array,
// nothrow, aligned), which count the requests while a failure is armed and refuse the chosen ones: the throwing forms throw, the
// others return null. Nothing is refused until a test asks for it. Requests of all threads count.
//
//   for (Int failAt = 1;; ++failAt)  // a sweep: the first request fails, then the second, ... until none is left
//   {
//     FailAllocation(failAt);
//     const Bool failed = Work().HasError();
//     if (!StopFailingAllocations())
//       break;
//     EXPECT_TRUE(failed) << failAt;
//   }

#include "framework/types.h"

namespace q7z::test
{

/// The n-th request from now on fails, 1 being the next one, and so do the ones behind it until `count` have failed.
/// What was armed before is forgotten.
void FailAllocation(Int n, Int count = 1) noexcept;

/// Nothing fails any more. @return how many requests failed since FailAllocation.
Int StopFailingAllocations() noexcept;

/// The requests of all threads since FailAllocation or StopFailingAllocations, the refused ones too.
Int CountAllocations() noexcept;

/// The bytes of the largest of these requests.
Int GetLargestAllocation() noexcept;

}  // namespace q7z::test
