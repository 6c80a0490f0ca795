#pragma once

// The sizes that the benchmarks run with, as the edge of a generated grid in vertices.

#include <benchmark/benchmark.h>

namespace q7z::bench
{

/// A size with which every benchmark is run as a test; it must be the first of each benchmark's sizes.
constexpr int kTinySide = 8;

/// A tiny grid, one that fits into the caches of a core, and one that does not: 8², 100² and 1000² vertices.
inline void GridSides(benchmark::internal::Benchmark* benchmark)
{
  benchmark->ArgName("side")->Arg(kTinySide)->Arg(100)->Arg(1000);
}

}  // namespace q7z::bench
