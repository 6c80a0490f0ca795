#pragma once

// Interruption: the first SIGINT or SIGTERM cancels the running job, a second one ends the process at once.

#include "host/services/headlessjob.h"

namespace q7z::app
{

class InterruptGuard
{
public:
  /// job is cancelled by signals as long as the guard lives.
  explicit InterruptGuard(HeadlessJob& job);
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

  /// The signal that came, 0 for none.
  static int GetSignal();
  static bool IsInterrupted() { return GetSignal() != 0; }
};

}  // namespace q7z::app
