#pragma once

// How the material export spreads its work.

#include "plugin/module/hostservices.h"

namespace q7z
{

/// Runs body(first, end) over [0, count) in pieces of at most grain, by the jobs of the host or, where it offers none, here. body
/// returns Result<void>.
template <typename Body>
Result<void> RunJobs(Int count, Int grain, Body&& body) noexcept
{
  HostJobs* const jobs = count > grain ? FindService<HostJobs>() : nullptr;
  return jobs ? ParallelFor(*jobs, count, grain, body) : body(Int(0), count);
}

}  // namespace q7z
