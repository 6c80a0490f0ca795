#pragma once

// ParallelLoop: the threads behind the host's jobs. Its source is built without the thread sanitizer, which cannot see how the
// library below it hands work from thread to thread; whoever calls it writes the order down in atomics of his own.

#include <memory>

#include "framework/types.h"

namespace q7z
{

/// A set of worker threads, made on first use.
class ParallelLoop
{
public:
  /// @param threads  how many take part in a loop, the caller among them; 0 for one a processor. Throws without memory.
  explicit ParallelLoop(int threads);
  ~ParallelLoop();

  using RangeFunction = void (*)(void* context, Int first, Int end);
  /// Calls function for ranges of at most grain (1 or more) that together are [0, count), and waits for all. Loops may nest and
  /// come from several threads. Throws without memory; function does not throw.
  void Run(Int count, Int grain, RangeFunction function, void* context);

private:
  struct Arena;
  std::unique_ptr<Arena> _arena;
};

}  // namespace q7z
