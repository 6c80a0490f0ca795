#pragma once

// SweepAllocations: work without the first memory that it asks for, then without the second, and so on.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/failingmemory.h"

namespace q7z::test
{

/// Lets the first, second, ... request of work fail until it runs through; check is told each time whether one failed.
template <typename Work, typename Check>
void SweepAllocations(const Work& work, const Check& check)
{
  for (Int failAt = 1, failed = 1; failed > 0 && !testing::Test::HasFatalFailure(); ++failAt)
  {
    SCOPED_TRACE("request " + std::to_string(failAt));
    FailAllocation(failAt);
    work();
    failed = StopFailingAllocations();
    check(failed > 0);
    EXPECT_TRUE(failed > 0 || failAt > 1) << "the work asks for no memory";
  }
}

/// The same of work that tells whether it succeeded, which it does when no request failed. checkFailed looks at what a failure left.
template <typename Work, typename CheckFailed>
void SweepUntilSuccess(const Work& work, const CheckFailed& checkFailed)
{
  Bool succeeded = false;
  SweepAllocations([&] { succeeded = work(); },
                   [&](Bool failed)
                   {
                     EXPECT_EQ(succeeded, !failed);
                     if (failed)
                       checkFailed();
                   });
}
template <typename Work>
void SweepUntilSuccess(const Work& work)
{
  SweepUntilSuccess(work, [] {});
}

}  // namespace q7z::test
