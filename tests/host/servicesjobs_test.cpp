// The background job as a user sees it, and parallel loops.

#include <atomic>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <thread>
#include <vector>

#include "framework/check.h"
#include "host/services/headlessjob.h"
#include "host/services/headlessjobs.h"
#include "tests/host/servicesupport.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

TEST(Job, WeighsItsStages)
{
  std::vector<std::pair<double, std::string>> reports;
  HeadlessJob job([&](double overall, const std::string& stage) { reports.emplace_back(overall, stage); });
  EXPECT_EQ(job.GetProgress(), 0);
  const Int32 first = job.AddStage(0.25, "Reading"_s);
  job.SetProgress(first, 0.5);
  job.SetProgress(first, 1);
  const Int32 second = job.AddStage(0.75, "Building"_s);
  job.SetProgress(second, 0.5);
  job.SetProgress(first, 1);  // a stage that is over may say so again
  job.SetProgress(second, 1);
  const std::vector<std::pair<double, std::string>> expected = {{0.125, "Reading"},
                                                                {0.25, "Reading"},
                                                                {0.625, "Building"},
                                                                {0.625, "Reading"},
                                                                {1, "Building"}};
  EXPECT_EQ(reports, expected);
  EXPECT_EQ(job.GetProgress(), 1);
}

struct ProgressRow
{
  const char* name;
  double value;
  double overall;
};

const ProgressRow kProgress[] = {
  {"Negative", -1, 0},
  {"Half", 0.5, 0.25},
  {"Above", 2, 0.5},
  {"LargestNumber", std::numeric_limits<double>::max(), 0.5},
  {"Infinity", std::numeric_limits<double>::infinity(), 0.5},
  {"NotANumber", std::numeric_limits<double>::quiet_NaN(), 0},
};

class JobProgress : public testing::TestWithParam<ProgressRow>
{};

TEST_P(JobProgress, StaysWithinItsStage)
{
  HeadlessJob job;
  job.SetProgress(job.AddStage(0.5, "Stage"_s), GetParam().value);
  EXPECT_EQ(job.GetProgress(), GetParam().overall);
}

INSTANTIATE_TEST_SUITE_P(Rows, JobProgress, testing::ValuesIn(kProgress), RowName());

TEST(Job, NeverGoesBeyondTheWhole)
{
  HeadlessJob job;
  job.SetProgress(job.AddStage(0.75, "One"_s), 1);
  job.SetProgress(job.AddStage(0.75, "Two"_s), 1);
  EXPECT_EQ(job.GetProgress(), 1);
}

TEST(Job, IgnoresStagesItDoesNotHave)
{
  HeadlessJob job([](double, const std::string&) { FAIL(); });
  job.SetProgress(-1, 1);
  job.SetProgress(0, 1);
  EXPECT_EQ(job.GetProgress(), 0);
}

TEST(Job, GoesOnWhenNobodyCanDraw)
{
  int calls = 0;
  HeadlessJob job(
    [&](double, const std::string&)
    {
      ++calls;
      throw std::runtime_error("no terminal");
    });
  const Int32 stage = job.AddStage(1, "Stage"_s);
  job.SetProgress(stage, 0.5);
  job.SetProgress(stage, 1);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(job.GetProgress(), 1);
}

TEST(Job, IsCancelledFromAnywhere)
{
  HeadlessJob job;
  EXPECT_FALSE(job.IsCancelled());
  std::thread([&] { job.Cancel(); }).join();
  EXPECT_TRUE(job.IsCancelled());
}

TEST(Job, KeepsMessagesInOrder)
{
  HeadlessJob job;
  job.AddMessage(HostMessageClass::kInformation, "one"_s);
  job.AddMessage(HostMessageClass::kWarning, "two"_s);
  job.AddMessage(HostMessageClass::kInformation, "one"_s);
  ASSERT_EQ(job.GetMessages().size(), 3u);
  EXPECT_EQ(job.GetMessages()[0].text, "one");
  EXPECT_EQ(job.GetMessages()[1].text, "two");
  EXPECT_EQ(job.GetMessages()[1].messageClass, HostMessageClass::kWarning);
  EXPECT_EQ(job.GetMessages()[2].messageClass, HostMessageClass::kInformation);
  EXPECT_FALSE(job.HasLostMessages());
}

struct LoopRow
{
  const char* name;
  Int count;
  Int grain;
  int threads;
};

const LoopRow kLoops[] = {
  {"Nothing", 0, 16, 0},
  {"Negative", -5, 16, 0},
  {"One", 1, 16, 0},
  {"OneRange", 16, 16, 0},
  {"OneMore", 17, 16, 0},
  {"Many", 10000, 16, 0},
  {"NoGrain", 100, 0, 0},
  {"NegativeGrain", 100, -1, 0},
  {"OneThread", 10000, 16, 1},
  {"TwoThreads", 999, 7, 2},
  {"LargeGrain", 100, INT64_MAX, 0},
};

class ParallelLoop : public testing::TestWithParam<LoopRow>
{};

TEST_P(ParallelLoop, VisitsEachOnceInRangesOfTheGrain)
{
  const auto& [name, count, grain, threads] = GetParam();
  std::vector<std::atomic<int>> visits(static_cast<size_t>(count > 0 ? count : 0));
  std::atomic<Int> longest{0};
  auto body = [&](Int first, Int end) -> Result<void>
  {
    for (Int i = first; i < end; ++i)
      ++visits[static_cast<size_t>(i)];
    for (Int seen = longest; end - first > seen && !longest.compare_exchange_weak(seen, end - first);)
      continue;
    return {};
  };
  HeadlessJobs jobs(threads);
  EXPECT_FALSE(ParallelFor(jobs, count, grain, body).HasError());
  for (const std::atomic<int>& visit : visits)
    ASSERT_EQ(visit, 1);
  EXPECT_LE(longest, std::max<Int>(grain, 1));
}

INSTANTIATE_TEST_SUITE_P(Rows, ParallelLoop, testing::ValuesIn(kLoops), RowName());

TEST(Jobs, StopAtTheFirstError)
{
  HeadlessJobs jobs(1);  // one thread: which range comes first is certain, and nothing runs beside it
  std::atomic<int> calls{0};
  auto body = [&](Int, Int) -> Result<void>
  {
    ++calls;
    return MAKE_ERROR(ErrorClass::kUnexpected, "broken"_s);
  };
  const Result<void> result = ParallelFor(jobs, 1000, 1, body);
  EXPECT_EQ(MessageOf(result), "broken");
  EXPECT_EQ(calls, 1);
}

TEST(Jobs, HandOverOneOfSeveralErrors)
{
  HeadlessJobs jobs;
  auto body = [&](Int first, Int) -> Result<void>
  {
    if (first < 500)
      return {};
    return first % 2 ? MAKE_ERROR(ErrorClass::kIo, "odd"_s) : MAKE_ERROR(ErrorClass::kIo, "even"_s);
  };
  const Result<void> result = ParallelFor(jobs, 1000, 1, body);
  ASSERT_TRUE(result.HasError());
  EXPECT_TRUE(MessageOf(result) == "odd" || MessageOf(result) == "even") << MessageOf(result);
  // The next loop starts afresh.
  auto good = [](Int, Int) -> Result<void> { return {}; };
  EXPECT_FALSE(ParallelFor(jobs, 1000, 1, good).HasError());
}

TEST(Jobs, NestAndRunFromSeveralThreads)
{
  HeadlessJobs jobs;
  std::atomic<int> visits{0};
  auto inner = [&](Int first, Int end) -> Result<void>
  {
    visits += static_cast<int>(end - first);
    return {};
  };
  auto outer = [&](Int first, Int end) -> Result<void>
  {
    for (Int i = first; i < end; ++i)
      RETURN_IF_ERROR(ParallelFor(jobs, 10, 3, inner));
    return {};
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] { EXPECT_FALSE(ParallelFor(jobs, 20, 4, outer).HasError()); });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(visits, 4 * 20 * 10);
}

}  // namespace

}  // namespace q7z::test
