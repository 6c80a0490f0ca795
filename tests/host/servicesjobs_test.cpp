// The background job as a user sees it, and parallel loops.

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "framework/check.h"
#include "host/services/headlessjob.h"
#include "host/services/headlessjobs.h"
#include "tests/host/servicesupport.h"

namespace q7z::test
{

namespace
{

TEST(Job, WeighsItsStages)
{
  std::vector<std::pair<double, std::string>> reports;
  HeadlessJob job([&](double overall, const std::string& stage) { reports.emplace_back(overall, stage); });
  job.SetProgress(-1, 1);  // stages that it does not have
  job.SetProgress(0, 1);
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
  job.SetProgress(job.AddStage(0.75, "Beyond the whole"_s), 1);
  EXPECT_EQ(job.GetProgress(), 1);
}

TEST(Job, ProgressStaysWithinItsStage)
{
  const std::pair<double, double> rows[] = {{-1, 0}, {0.5, 0.25}, {2, 0.5}, {kInfinity, 0.5}, {kNan, 0}};
  for (const auto& [value, overall] : rows)
  {
    HeadlessJob job;
    job.SetProgress(job.AddStage(0.5, "Stage"_s), value);
    EXPECT_EQ(job.GetProgress(), overall) << value;
  }
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

TEST(Jobs, VisitEachOnceInRangesOfTheGrain)
{
  const std::tuple<Int, Int, int> rows[] = {// Count, grain and threads.
                                            {0, 16, 0},   {-5, 16, 0},    {1, 16, 0},  {17, 16, 0},        {100, 0, 0},
                                            {100, -1, 0}, {10000, 16, 1}, {999, 7, 2}, {100, INT64_MAX, 0}};
  for (const auto& [count, grain, threads] : rows)
  {
    SCOPED_TRACE(std::to_string(count) + " by " + std::to_string(grain) + " on " + std::to_string(threads));
    std::vector<std::atomic<int>> visits(static_cast<size_t>(count > 0 ? count : 0));
    const Int most = std::max<Int>(grain, 1);
    auto body = [&](Int first, Int end) -> Result<void>
    {
      EXPECT_LE(end - first, most);
      for (Int i = first; i < end; ++i)
        ++visits[static_cast<size_t>(i)];
      return {};
    };
    HeadlessJobs jobs(threads);
    EXPECT_FALSE(ParallelFor(jobs, count, grain, body).HasError());
    for (const std::atomic<int>& visit : visits)
      ASSERT_EQ(visit, 1);
  }
}

TEST(Jobs, StopAtTheFirstError)
{
  HeadlessJobs jobs(1);  // one thread: which range comes first is certain, and nothing runs beside it
  std::atomic<int> calls{0};
  auto body = [&](Int, Int) -> Result<void>
  {
    ++calls;
    return MAKE_ERROR(ErrorClass::kUnexpected, "broken"_s);
  };
  EXPECT_EQ(ErrorText(ParallelFor(jobs, 1000, 1, body)), "broken");
  EXPECT_EQ(calls, 1);
  // Of several errors at once one is handed over, and the next loop starts afresh.
  HeadlessJobs many;
  EXPECT_EQ(ErrorText(ParallelFor(many, 1000, 1, body)), "broken");
  auto good = [](Int, Int) -> Result<void> { return {}; };
  EXPECT_FALSE(ParallelFor(many, 1000, 1, good).HasError());
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
