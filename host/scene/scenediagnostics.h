#pragma once

// Counters that tests read: how many nodes are alive, and which mistakes were made with them. Counting goes on over the whole
// process; a test compares before and after.

#include <atomic>

#include "framework/types.h"

namespace q7z
{

struct SceneDiagnostics
{
  std::atomic<Int> liveNodes{0};      ///< named nodes: documents, objects, tags, materials, layers, takes, overrides, shaders
  std::atomic<Int> liveTracks{0};     ///< tracks, inserted or not
  std::atomic<Int> insertedTwice{0};  ///< inserted while it stood elsewhere already
  std::atomic<Int> freedWhileInserted{0};  ///< freed without being taken out first
  std::atomic<Int> refusedCycles{0};       ///< an object put under itself or its own offspring; nothing was done
};

SceneDiagnostics& GetSceneDiagnostics() noexcept;

inline void CountMistake(std::atomic<Int>& counter) noexcept
{
  counter.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace q7z
