#pragma once

// Parallel loops on oneTBB, for any thread. The workers start with the first loop, so that a run without one pays nothing.

#include <memory>
#include <mutex>

#include "host/services/parallelloop.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessJobs final : public HostJobs
{
public:
  /// @param threads  0 for one a core.
  explicit HeadlessJobs(int threads = 0) noexcept;
  ~HeadlessJobs();

  Result<void> ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept override;

private:
  ParallelLoop& FindOrMakeLoop();

  int _threads;
  std::mutex _mutex;
  std::unique_ptr<ParallelLoop> _loop;  // made under _mutex
};

}  // namespace q7z
